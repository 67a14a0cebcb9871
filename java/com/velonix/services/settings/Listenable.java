package com.velonix.services.settings;

import java.util.function.Consumer;

/**
 * An entry that takes listeners: a node, through its {@link SettingPath}, for its own events and
 * those of all entries below it; or a key, through its {@link Setting}.
 *
 * <p>{@link SettingListener} defines the threads and the order of the calls, and what a call may
 * do. Each call of a method here makes a registration of its own: a listener that is registered
 * twice is called twice.
 */
public sealed interface Listenable permits SettingPath, Setting {
    /**
     * Registers a listener for all kinds of event. {@link #onChanged}, {@link #onAdded} and {@link
     * #onRemoved} are for one kind each.
     *
     * @param listener the listener, called from now on
     * @return the registration; closing it ends it
     * @throws SettingNotFoundException if there is no such node, or no such key
     * @throws SettingException if the settings service fails otherwise
     * @throws IllegalStateException if the tree has been closed
     */
    Registration addListener(SettingListener listener) throws SettingException;

    /**
     * Registers an action for changed values.
     *
     * @param action called when the value of the key, or of a key below the node, has been set,
     *     unset or committed at any level
     * @return the registration; closing it ends it
     * @throws SettingNotFoundException if there is no such node, or no such key
     * @throws SettingException if the settings service fails otherwise
     * @throws IllegalStateException if the tree has been closed
     */
    default Registration onChanged(Consumer<? super SettingChangeEvent> action)
            throws SettingException {
        return addListener(SingleKindListener.changed(action));
    }

    /**
     * Registers an action for new entries.
     *
     * @param action called when an entry has been added below the node; once for a node with all
     *     entries below it. Never called for a key
     * @return the registration; closing it ends it
     * @throws SettingNotFoundException if there is no such node, or no such key
     * @throws SettingException if the settings service fails otherwise
     * @throws IllegalStateException if the tree has been closed
     */
    default Registration onAdded(Consumer<? super SettingChangeEvent> action)
            throws SettingException {
        return addListener(SingleKindListener.added(action));
    }

    /**
     * Registers an action for removed entries.
     *
     * @param action called when the key or node, an entry below it or a node above it has been
     *     removed; once for a node with all entries below it
     * @return the registration; closing it, or removing the key or node itself, ends it
     * @throws SettingNotFoundException if there is no such node, or no such key
     * @throws SettingException if the settings service fails otherwise
     * @throws IllegalStateException if the tree has been closed
     */
    default Registration onRemoved(Consumer<? super SettingChangeEvent> action)
            throws SettingException {
        return addListener(SingleKindListener.removed(action));
    }
}
