package com.velonix.services.settings;

import java.lang.ref.Cleaner;

/**
 * One opening of a settings tree. Paths and settings share it.
 *
 * <p>A {@link NativeCall} encloses every native call in {@link #enter()} and {@link
 * SharedTree#leave()}. Closing forbids new calls at once; it never waits and is allowed everywhere,
 * also in a listener. A cleaner closes a handle that is no longer referenced.
 */
final class TreeHandle {
    /** Releases native memory whose owner is no longer referenced. */
    static final Cleaner CLEANER = Cleaner.create();

    private final Opening opening;
    private final Cleaner.Cleanable closing;
    private final String description;
    private final boolean ofProcess;

    /** Null before the first use, and once the tree has been closed. */
    private SettingCache cache;

    /**
     * Adopts a handle.
     *
     * @param address the native handle, not 0
     * @param ofProcess true for the tree that transactions change
     * @param description the tree's name in messages
     */
    TreeHandle(long address, boolean ofProcess, String description) {
        this.opening = new Opening(SharedTree.open(address));
        this.closing = CLEANER.register(this, opening);
        this.ofProcess = ofProcess;
        this.description = description;
    }

    /**
     * Begins a call, which the same thread ends by {@link SharedTree#leave()}; returns the native
     * handle.
     */
    long enter() {
        if (!opening.closed && opening.tree.enter())
            return opening.tree.address;
        throw new IllegalStateException(description + " has been closed");
    }

    /** Forbids new calls; closing again does nothing. */
    void close() {
        closing.clean();
        cache = null;
    }

    /** Returns a setting of this tree. The caller has checked the type. */
    <T> Setting<T> setting(SettingPath parent, String name, Class<T> type) {
        SettingCache settings = cache;
        if (settings == null) {
            if (opening.closed)
                return new Setting<>(parent, name, type);
            cache = settings = new SettingCache();
        }
        return settings.of(parent, name, type);
    }

    /** Tells whether new calls are allowed. */
    boolean isOpen() {
        return !opening.closed;
    }

    /** Returns the tree, which may be used only within a call. */
    SharedTree shared() {
        return opening.tree;
    }

    boolean isOfProcess() {
        return ofProcess;
    }

    /** Tells whether both refer to the same tree; a closed handle equals only itself. */
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

    /** The state that the cleaner needs once the handle is no longer referenced. */
    private static final class Opening implements Runnable {
        final SharedTree tree;
        volatile boolean closed;

        Opening(SharedTree tree) {
            this.tree = tree;
        }

        @Override
        public void run() {
            closed = true;
            tree.close();
        }
    }
}
