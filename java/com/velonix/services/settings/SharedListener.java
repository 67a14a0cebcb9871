package com.velonix.services.settings;

import java.util.Arrays;

/**
 * One native subscription for all Java listeners of an entry, and the loop that calls them. Native
 * code calls {@link #deliver}.
 *
 * <p>The lock protects the list of registrations; a delivery uses the list that was current when it
 * began. No listener is called under the lock.
 */
final class SharedListener {
    private static final int CHANGED = 0, ADDED = 1;
    private static final Entry[] NONE = {};

    private final SharedTree tree;
    private final String[] path;
    private final String key;
    private long subscription; // 0 before it has begun and once it has ended; guarded by this
    private volatile Entry[] entries = NONE;

    /**
     * @param tree the tree of the entry, which forgets this object once it has no registrations
     * @param path the path of the node
     * @param key a child of the node, or null for the node itself
     */
    SharedListener(SharedTree tree, String[] path, String key) {
        this.tree = tree;
        this.path = path;
        this.key = key;
    }

    /**
     * Registers a listener; subscribes to the entry first unless that is done.
     *
     * @return null if there is no such entry
     */
    synchronized Registration add(SettingListener listener, Object source) {
        if (subscription != 0 && !NativeLane.isListening(subscription))
            end();
        if (subscription == 0)
            subscription = NativeLane.listen(tree.address, path, key, this);
        if (subscription == 0)
            return null;
        Entry added = new Entry(this, listener, source);
        Entry[] now = Arrays.copyOf(entries, entries.length + 1);
        now[now.length - 1] = added;
        entries = now;
        return added;
    }

    /** Ends all registrations if the entry is no longer in its tree. */
    synchronized void endUnlessListening() {
        if (subscription != 0 && !NativeLane.isListening(subscription))
            end();
    }

    /** Calls the listeners for one event. Native code calls this method. */
    private void deliver(
            int event, String[] eventPath, String eventName, boolean isNode, boolean gone) {
        String[] parents = eventPath == null ? path : eventPath;
        String name = eventName == null ? key : eventName;
        Entry[] receivers = entries;
        // The removal of the entry is the last event that its listeners receive.
        if (gone)
            end();
        for (Entry entry : receivers) {
            try {
                entry.deliver(event, parents, name, isNode);
            } catch (Throwable thrown) {
                SettingProblems.reportListener(entry.source, thrown);
            }
        }
    }

    private synchronized void remove(Entry ended) {
        Entry[] before = entries;
        for (int i = 0; i < before.length; ++i) {
            if (before[i] == ended) {
                Entry[] now = new Entry[before.length - 1];
                System.arraycopy(before, 0, now, 0, i);
                System.arraycopy(before, i + 1, now, i, now.length - i);
                entries = now;
                if (now.length == 0)
                    end();
                return;
            }
        }
    }

    private synchronized void end() {
        long ended = subscription;
        subscription = 0;
        entries = NONE;
        tree.forget(this, path, key);
        if (ended != 0)
            NativeLane.unlisten(ended);
    }

    /** One registration. */
    private static final class Entry implements Registration {
        private final SharedListener shared;
        private final Object source;
        private volatile SettingListener listener;

        Entry(SharedListener shared, SettingListener listener, Object source) {
            this.shared = shared;
            this.listener = listener;
            this.source = source;
        }

        @Override
        public void close() {
            listener = null;
            shared.remove(this);
        }

        void deliver(int event, String[] parents, String name, boolean isNode) {
            SettingListener receiver = listener;
            if (receiver == null)
                return;
            // A copy of the path for each listener, because a listener may change it.
            SettingChangeEvent made =
                    receiver.createEvent(source, parents.clone(), name, null, isNode);
            if (made == null || listener == null)
                return;
            if (event == CHANGED)
                receiver.settingChanged(made);
            else if (event == ADDED)
                receiver.settingAdded(made);
            else
                receiver.settingRemoved(made);
        }
    }
}
