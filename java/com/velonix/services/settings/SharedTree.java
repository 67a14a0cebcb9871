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
 * open, with the tree's bound keys and listeners.
 *
 * <p>Calls that are under way are counted. Once the last {@link TreeHandle} has been closed no new
 * call begins, and the thread of the last call releases the native handle when it leaves; so
 * closing never waits. A thread counts in the slot that its number selects; slots lie in different
 * cache lines, so that threads do not slow each other.
 */
final class SharedTree {
    private static final int SLOTS = 16;
    private static final int SLOT_WIDTH = 16; // 128 bytes: two cache lines, fetched as a pair

    /** The open trees by the identities of their roots. Guarded by the class. */
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
     * Adopts a handle, or releases it if its tree is already open.
     *
     * @return the tree, which the caller closes
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

    /**
     * Begins a call, which the same thread ends by {@link #leave()}; false if the tree is closed.
     */
    boolean enter() {
        underWay.getAndIncrement(slotOfThread());
        // Counted before the check: a thread that closes the tree afterwards sees this call.
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
     * Binds the key at a path, or returns it if it is bound. The caller must be within a call.
     *
     * @return null if keys of this tree cannot be bound
     */
    BoundKey bind(String[] path, String name) {
        return boundKeys.computeIfAbsent(namesOf(path, name), names -> {
            long key = NativeLane.bind(address, path, name);
            return key == 0 ? null : new BoundKey(key);
        });
    }

    /**
     * Registers a listener on the node at the path or, if a key is named, on that child of it. The
     * caller must be within a call.
     *
     * @return null if there is no such entry
     */
    Registration listen(String[] path, String key, SettingListener listener, Object source) {
        SharedListener shared = listeners.computeIfAbsent(
                namesOf(path, key), names -> new SharedListener(this, path, key));
        Registration registration = shared.add(listener, source);
        if (registration == null)
            forget(shared, path, key);
        return registration;
    }

    /** Forgets the listener, so that the next registration on its entry makes a new one. */
    void forget(SharedListener shared, String[] path, String key) {
        listeners.remove(namesOf(path, key), shared);
    }

    /**
     * Returns the names as a key of the maps; "" stands for no key, since no entry has that name.
     */
    private static List<String> namesOf(String[] path, String key) {
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
            // A tree that ended with its handle publishes no more events.
            for (SharedListener listener : listeners.values()) listener.endUnlessListening();
        }
    }
}
