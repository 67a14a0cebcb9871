package com.velonix.services.settings;

import java.lang.ref.Cleaner;
import java.util.concurrent.atomic.AtomicBoolean;
import java.util.concurrent.atomic.AtomicLongArray;

/**
 * Owns one native handle on the root of a settings tree. Paths, settings and registrations share
 * it.
 *
 * <p>Every native call is enclosed in {@link #enter()} and {@link #exit()}, by a {@link
 * NativeCall}. Closing forbids new calls at once, and the handle is released when the last call
 * that is under way has left, by that call's own thread; so closing waits for nobody and may happen
 * anywhere, inside a listener too. A handle that was forgotten is closed by a cleaner.
 */
final class TreeHandle {
    private static final Cleaner CLEANER = Cleaner.create();

    private final Calls calls;
    private final Cleaner.Cleanable closing;
    private final String description;
    private final long target;
    private final boolean ofProcess;

    /** Null until it is needed, and again once the tree has been closed. */
    private RecentSettings recent;

    /**
     * Takes over a handle.
     *
     * @param address the native handle, not 0
     * @param target identifies the tree's root as long as the handle is open
     * @param ofProcess whether this is the tree that transactions work on
     * @param description names the tree in messages
     */
    TreeHandle(long address, long target, boolean ofProcess, String description) {
        this.calls = new Calls(address);
        this.closing = CLEANER.register(this, calls);
        this.target = target;
        this.ofProcess = ofProcess;
        this.description = description;
    }

    /** The native handle, valid until the same thread calls {@link #exit()}. */
    long enter() {
        return enter(Calls.slotOfThread());
    }

    void exit() {
        calls.leave(Calls.slotOfThread());
    }

    /** Like {@link #enter()}, but for {@link #letGo()} by any thread. */
    long hold() {
        return enter(Calls.HELD_SLOT);
    }

    void letGo() {
        calls.leave(Calls.HELD_SLOT);
    }

    /** Forbids new calls; closing again does nothing. */
    void close() {
        closing.clean();
        recent = null;
    }

    /** A setting of this tree; the type has been checked. */
    <T> Setting<T> setting(SettingPath parent, String name, Class<T> type) {
        RecentSettings table = recent;
        if (table == null) {
            if (calls.closed)
                return new Setting<>(parent, name, type);
            recent = table = new RecentSettings();
        }
        return table.of(parent, name, type);
    }

    /** Whether calls are still let in. */
    boolean isOpen() {
        return !calls.closed;
    }

    long target() {
        return target;
    }

    boolean isOfProcess() {
        return ofProcess;
    }

    /** Whether both refer to the same tree; a closed handle equals none but itself. */
    boolean sameTree(TreeHandle other) {
        return this == other || target == other.target && !calls.closed && !other.calls.closed;
    }

    int treeHash() {
        return Long.hashCode(target);
    }

    @Override
    public String toString() {
        return description;
    }

    private long enter(int slot) {
        if (calls.enter(slot))
            return calls.address;
        throw new IllegalStateException(description + " has been closed");
    }

    /**
     * Counts the calls that are under way. Each thread counts in a slot of its own as far as there
     * are slots, and slots lie in different cache lines, so that threads do not slow each other.
     */
    private static final class Calls implements Runnable {
        private static final int SLOTS = 16;
        private static final int SLOT_WIDTH = 16; // 128 bytes: two cache lines, fetched as a pair
        private static final int HELD_SLOT = 0;

        final long address;
        volatile boolean closed;
        private final AtomicLongArray underWay = new AtomicLongArray((SLOTS + 1) * SLOT_WIDTH);
        private final AtomicBoolean released = new AtomicBoolean();

        Calls(long address) {
            this.address = address;
        }

        static int slotOfThread() {
            return (1 + (int) (Thread.currentThread().getId() & SLOTS - 1)) * SLOT_WIDTH;
        }

        boolean enter(int slot) {
            underWay.getAndIncrement(slot);
            // Counted first and looked second: whoever closes afterwards sees this call.
            if (!closed)
                return true;
            leave(slot);
            return false;
        }

        void leave(int slot) {
            underWay.getAndDecrement(slot);
            if (closed)
                releaseIfIdle();
        }

        /** Closes. */
        @Override
        public void run() {
            closed = true;
            releaseIfIdle();
        }

        private void releaseIfIdle() {
            for (int slot = 0; slot < underWay.length(); slot += SLOT_WIDTH) {
                if (underWay.get(slot) != 0)
                    return;
            }
            if (released.compareAndSet(false, true))
                SettingPath.release(address);
        }
    }
}
