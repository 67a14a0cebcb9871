package com.velonix.services.settings;

import java.util.List;

/**
 * Receives the events of the entry that it is registered on and, for a node, of all entries below
 * it. Registered with {@link Listenable#addListener}.
 *
 * <ul>
 *   <li><b>Thread.</b> The thread that makes the change, Java's or native, calls the listener
 * before the changing call returns. A native thread is attached as a daemon for the call.
 *   <li><b>External changes.</b> This process reads the changes of other processes within a second
 *       at most, and before it stores a change of its own. A thread of the settings service then
 *       calls the listeners, one after the other, in the order of the changes. A slow listener
 *       delays the calls after its own and nothing else. Several changes of a key that wait become
 *       one call, and an entry that was added and removed again none. So a call reports that there
 *       was a change, and the listener reads the current state, which may be a later one. A key
 * that was added together with a value has the value when its addition is reported.
 *   <li><b>Order.</b> The change is visible before any listener is called. One thread's changes are
 *       reported in their order, those of a transaction in the order of recording, one event for
 *       each key. Concurrent changes of several threads may be reported in any order, also several
 *       at a time, so a listener should read the current value.
 *   <li><b>Re-entry.</b> No lock is held during a call, and a listener may do everything: read,
 *       change, add and remove settings, add and close registrations, its own too. A change that it
 *       makes is reported to the listeners, itself among them, before its own call returns.
 *   <li><b>Exceptions.</b> An exception or error that leaves a call is reported ({@link
 *       SettingProblems}); the other listeners are called.
 *   <li><b>Duplicates.</b> A listener that is registered twice is called twice, and each
 *       registration ends separately. Setting the value that the level already has is no change.
 *   <li><b>End.</b> Once {@link Registration#close()} has returned, no new call begins; one that
 *       another thread has begun may still be running.
 * </ul>
 */
public interface SettingListener {
    /**
     * Called after the value of a key has changed at some level.
     *
     * @param event has the key
     */
    default void settingChanged(SettingChangeEvent event) {}

    /**
     * Called after a key, or a node with all entries below it, has been added.
     *
     * @param event has the key or the node
     */
    default void settingAdded(SettingChangeEvent event) {}

    /**
     * Called after a key, or a node with all entries below it, has been removed.
     *
     * @param event has the key or the node
     */
    default void settingRemoved(SettingChangeEvent event) {}

    /**
     * Makes the event that the other methods receive. Override it to use an event class of your
     * own, or return null to drop the event.
     *
     * @param source the {@link SettingPath} or {@link Setting} that the listener is registered on
     * @param path the names of the nodes that lead from the root to the entry's parent
     * @param name the entry's name
     * @param unused reserved, always null
     * @param isNode true if the entry is a node
     * @return the event
     */
    default SettingChangeEvent createEvent(
            Object source, String[] path, String name, String unused, boolean isNode) {
        return new SettingChangeEvent(source, List.of(path), name, isNode);
    }
}
