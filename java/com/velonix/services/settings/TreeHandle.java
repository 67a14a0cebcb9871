package com.velonix.services.settings;

import java.lang.ref.Cleaner;

/**
 * One opening of a settings tree. Paths and settings share it.
 *
 * <p>Every native call is enclosed in {@link #enter()} and {@link #exit()}, by a {@link
 * NativeCall}. Closing forbids new calls at once; it waits for nobody and may happen anywhere,
 * inside a listener too. A tree that was forgotten is closed by a cleaner.
 */
final class TreeHandle {
    /** Closes what was forgotten. */
    static final Cleaner CLEANER = Cleaner.create();

    private final Opening opening;
    private final Cleaner.Cleanable closing;
    private final String description;
    private final boolean ofProcess;

    /** Null until it is needed, and again once the tree has been closed. */
    private SettingCache recent;

    /**
     * Takes over a handle.
     *
     * @param address the native handle, not 0
     * @param ofProcess whether this is the tree that transactions work on
     * @param description names the tree in messages
     */
    TreeHandle(long address, boolean ofProcess, String description) {
        this.opening = new Opening(SharedTree.open(address));
        this.closing = CLEANER.register(this, opening);
        this.ofProcess = ofProcess;
        this.description = description;
    }

    /** The native handle, valid until the same thread calls {@link #exit()}. */
    long enter() {
        if (!opening.closed && opening.tree.enter())
            return opening.tree.address;
        throw new IllegalStateException(description + " has been closed");
    }

    void exit() {
        opening.tree.leave();
    }

    /** Forbids new calls; closing again does nothing. */
    void close() {
        closing.clean();
        recent = null;
    }

    /** A setting of this tree; the type has been checked. */
    <T> Setting<T> setting(SettingPath parent, String name, Class<T> type) {
        SettingCache table = recent;
        if (table == null) {
            if (opening.closed)
                return new Setting<>(parent, name, type);
            recent = table = new SettingCache();
        }
        return table.of(parent, name, type);
    }

    /** Whether calls are still let in. */
    boolean isOpen() {
        return !opening.closed;
    }

    /** The tree itself, to be used within a call. */
    SharedTree shared() {
        return opening.tree;
    }

    boolean isOfProcess() {
        return ofProcess;
    }

    /** Whether both refer to the same tree; a closed handle equals none but itself. */
    boolean sameTree(TreeHandle other) {
        return this == other
                || opening.tree == other.opening.tree && !opening.closed && !other.opening.closed;
    }

    int treeHash() {
        return Long.hashCode(opening.tree.target);
    }

    @Override
    public String toString() {
        return description;
    }

    /** What closing needs, also once the handle has been forgotten. */
    private static final class Opening implements Runnable {
        final SharedTree tree;
        volatile boolean closed;

        Opening(SharedTree tree) {
            this.tree = tree;
        }

        /** Closes; called once. */
        @Override
        public void run() {
            closed = true;
            tree.close();
        }
    }
}
