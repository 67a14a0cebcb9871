package com.velonix.services.settings;

import java.util.Arrays;
import java.util.HashMap;
import java.util.List;
import java.util.Map;
import java.util.concurrent.ConcurrentHashMap;
import java.util.concurrent.atomic.AtomicBoolean;
import java.util.concurrent.atomic.AtomicLongArray;

/**
 * One native handle on the root of a tree, shared by all {@link TreeHandle}s that have the tree
 * open, with the keys that have been bound below it and the places that are listened to.
 *
 * <p>Calls that are under way are counted. Once the last one who had the tree open has closed it no
 * new call begins, and the native handle is released when the last call has left, by that call's
 * own thread; so closing waits for nobody. Each thread counts in a slot of its own as far as there
 * are slots, and slots lie in different cache lines, so that threads do not slow each other.
 */
final class SharedTree {
    private static final int SLOTS = 16;
    private static final int SLOT_WIDTH = 16; // 128 bytes: two cache lines, fetched as a pair

    /** The trees that are open, by what identifies their roots. Guarded by the class. */
    private static final Map<Long, SharedTree> OPEN = new HashMap<>();

    final long address;
    final long target;
    private final AtomicLongArray underWay = new AtomicLongArray(SLOTS * SLOT_WIDTH);
    private final AtomicBoolean released = new AtomicBoolean();
    private final Map<List<String>, BoundKey> boundKeys = new ConcurrentHashMap<>();
    private final Map<List<String>, SharedListener> listeners = new ConcurrentHashMap<>();
    private volatile boolean closed;
    private int openings; // guarded by the class

    private SharedTree(long address, long target) {
        this.address = address;
        this.target = target;
    }

    /**
     * Takes over a handle, or releases it when its tree is open already.
     *
     * @return the tree, for {@link #close()}
     */
    static SharedTree open(long address) {
        SharedTree tree;
        synchronized (SharedTree.class) {
            tree = OPEN.computeIfAbsent(
                    SettingPath.target(address), target -> new SharedTree(address, target));
            ++tree.openings;
        }
        if (tree.address != address)
            SettingPath.release(address);
        return tree;
    }

    /** Undoes one {@link #open}. */
    void close() {
        synchronized (SharedTree.class) {
            if (--openings > 0)
                return;
            OPEN.remove(target);
            closed = true;
        }
        releaseIfIdle();
    }

    /** Begins a call, which {@link #leave()} by the same thread ends; false when it is too late. */
    boolean enter() {
        underWay.getAndIncrement(slotOfThread());
        // Counted first and looked second: whoever closes afterwards sees this call.
        if (!closed)
            return true;
        leave();
        return false;
    }

    void leave() {
        underWay.getAndDecrement(slotOfThread());
        if (closed)
            releaseIfIdle();
    }

    /**
     * The key at a place, bound. The caller is within a call.
     *
     * @return null when keys of this tree cannot be bound
     */
    BoundKey bound(String[] path, String name) {
        return boundKeys.computeIfAbsent(place(path, name), place -> {
            long key = NativeLane.bind(address, path, name);
            return key == 0 ? null : new BoundKey(key);
        });
    }

    /**
     * Registers a listener on the node at the path or, with a key's name, on that child of it. The
     * caller is within a call.
     *
     * @return null when there is no such place
     */
    Registration listen(String[] path, String key, SettingListener listener, Object source) {
        SharedListener shared = listeners.computeIfAbsent(
                place(path, key), place -> new SharedListener(this, path, key));
        Registration registration = shared.add(listener, source);
        if (registration == null)
            forget(shared, path, key);
        return registration;
    }

    /** Makes the next registration at the place start anew. */
    void forget(SharedListener shared, String[] path, String key) {
        listeners.remove(place(path, key), shared);
    }

    /** A place as a key of a map; no entry is called "". */
    private static List<String> place(String[] path, String key) {
        String[] names = Arrays.copyOf(path, path.length + 1);
        names[path.length] = key == null ? "" : key;
        return Arrays.asList(names);
    }

    private static int slotOfThread() {
        return (int) (Thread.currentThread().getId() & SLOTS - 1) * SLOT_WIDTH;
    }

    private void releaseIfIdle() {
        for (int slot = 0; slot < underWay.length(); slot += SLOT_WIDTH) {
            if (underWay.get(slot) != 0)
                return;
        }
        if (released.compareAndSet(false, true)) {
            for (BoundKey key : boundKeys.values()) NativeLane.release(key.address);
            SettingPath.release(address);
            // Of a tree that has died with its handle nothing will be heard.
            for (SharedListener listener : listeners.values()) listener.endUnlessListening();
        }
    }
}
