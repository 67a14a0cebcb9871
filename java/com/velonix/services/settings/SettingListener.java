package com.velonix.services.settings;

import java.util.List;

/**
 * Hears of changes to the entry that it is registered on and, for a node, to everything below it.
 * Registered with {@link Listenable#addListener}.
 *
 * <ul>
 *   <li><b>Thread.</b> Calls come on the thread that made the change, a native one too, before the
 *       call that made it returns. Threads that Java did not make are attached as daemons for the
 *       call.
 *   <li><b>Other processes.</b> What they have changed is read here within a moment, a second at
 *       most, and before a change by this process is stored. Then a thread of the settings service
 *       calls, one call after the other, in the order of the changes. A call that takes its time
 *       delays the calls after it and nothing else: reading and changing go on. Meanwhile several
 *       changes of a key become one call, and an entry that was added and removed again none. So a
 *       call tells that something has changed, and what is read in it is the state of that moment,
 *       which may be a later one. A key that is added together with its value has the value when
 *       its addition is heard.
 *   <li><b>Order.</b> The change is visible before anybody hears of it. One thread's changes are
 *       heard in the order in which they were made, those of a transaction in the order in which
 *       they were recorded, one event for each key. Changes that different threads make at once may
 *       be heard in any order, also several at a time; what counts is what is read now.
 *   <li><b>Re-entry.</b> No lock is held during a call and everything is allowed in it: reading,
 *       changing, adding and removing settings, adding and ending registrations, its own too. A
 *       change that it makes is heard, also by itself, before its own call returns.
 *   <li><b>Exceptions.</b> What leaves a call is dropped, errors too, and stops nobody else.
 *   <li><b>Duplicates.</b> A listener that is registered twice is called twice, and each
 *       registration ends by itself. Setting the value that the level has already is no change.
 *   <li><b>End.</b> Once {@link Registration#close()} has returned no new call begins; one that
 *       another thread has begun may still be running.
 * </ul>
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
