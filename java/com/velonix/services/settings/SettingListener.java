package com.velonix.services.settings;

import java.util.List;

/**
 * Hears of changes to the entry that it is registered on and, for a node, to everything below it.
 *
 * <p>Calls come on the thread that made the change, after the change has become visible; changes
 * that other processes made come on a thread of the settings service. Changes that different
 * threads make at once may be heard in any order, also several at a time. Everything is allowed in
 * a call: reading and changing settings, adding and ending registrations. An exception that leaves
 * a call is dropped and stops nobody else. A listener that is registered twice is called twice.
 */
public interface SettingListener {
    /**
     * The value of a key has changed at some level.
     *
     * @param event tells which key
     */
    default void settingChanged(SettingChangeEvent event) {}

    /**
     * A key, or a node with all that is below it, has been added.
     *
     * @param event tells which entry
     */
    default void settingAdded(SettingChangeEvent event) {}

    /**
     * A key, or a node with all that was below it, has been removed.
     *
     * @param event tells which entry
     */
    default void settingRemoved(SettingChangeEvent event) {}

    /**
     * Makes the event that the other methods receive. Overriding it allows an event class of one's
     * own; returning null drops the event.
     *
     * @param source the {@link SettingPath} or {@link Setting} that the listener is registered on
     * @param path the names of the nodes that lead from the root to the entry's parent
     * @param name the entry's name
     * @param unused reserved, always null
     * @param isNode whether the entry is a node
     * @return the event
     */
    default SettingChangeEvent createEvent(
            Object source, String[] path, String name, String unused, boolean isNode) {
        return new SettingChangeEvent(source, List.of(path), name, isNode);
    }
}
