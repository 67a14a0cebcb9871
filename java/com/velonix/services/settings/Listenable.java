package com.velonix.services.settings;

import java.util.function.Consumer;

/**
 * What can be listened to: a node, through its {@link SettingPath}, for everything that happens to
 * it and below it; or a key, through its {@link Setting}.
 *
 * <p>{@link SettingListener} says on which threads listeners and actions are called, in which
 * order, and what they may do. Each call of a method here makes a registration of its own: what is
 * registered twice is called twice.
 */
public sealed interface Listenable permits SettingPath, Setting {
    /**
     * Registers a listener, which hears of all kinds of event. For one kind there are {@link
     * #onChanged}, {@link #onAdded} and {@link #onRemoved}.
     *
     * @param listener is called from now on
     * @return ends the registration
     * @throws SettingNotFoundException if there is no such node, or no such key
     * @throws SettingException if the settings service fails otherwise
     * @throws IllegalStateException if the tree has been closed, or the Java machine is shutting
     *     down
     */
    Registration addListener(SettingListener listener) throws SettingException;

    /**
     * Registers an action for changed values.
     *
     * @param action is called when the value of the key, or of a key below the node, has changed at
     *     any level: set, unset or committed
     * @return ends the registration
     * @throws SettingNotFoundException if there is no such node, or no such key
     * @throws SettingException if the settings service fails otherwise
     * @throws IllegalStateException if the tree has been closed, or the Java machine is shutting
     *     down
     */
    default Registration onChanged(Consumer<? super SettingChangeEvent> action)
            throws SettingException {
        return addListener(SingleKindListener.changed(action));
    }

    /**
     * Registers an action for new entries.
     *
     * @param action is called when an entry has been added below the node; once for a node with all
     *     that is below it. Nothing is ever added below a key
     * @return ends the registration
     * @throws SettingNotFoundException if there is no such node, or no such key
     * @throws SettingException if the settings service fails otherwise
     * @throws IllegalStateException if the tree has been closed, or the Java machine is shutting
     *     down
     */
    default Registration onAdded(Consumer<? super SettingChangeEvent> action)
            throws SettingException {
        return addListener(SingleKindListener.added(action));
    }

    /**
     * Registers an action for removed entries.
     *
     * @param action is called when the key or node, something below it or a node above it has been
     *     removed; once for a node with all that was below it
     * @return ends the registration, as the removal of the key or node itself does
     * @throws SettingNotFoundException if there is no such node, or no such key
     * @throws SettingException if the settings service fails otherwise
     * @throws IllegalStateException if the tree has been closed, or the Java machine is shutting
     *     down
     */
    default Registration onRemoved(Consumer<? super SettingChangeEvent> action)
            throws SettingException {
        return addListener(SingleKindListener.removed(action));
    }
}
