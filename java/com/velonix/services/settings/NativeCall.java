package com.velonix.services.settings;

/** One native call on a tree, which stays open meanwhile. */
final class NativeCall implements AutoCloseable {
    /** The tree's native handle, valid until the call is closed. */
    final long address;

    final SharedTree tree;

    /** @throws IllegalStateException if the tree has been closed */
    NativeCall(TreeHandle handle) {
        address = handle.enter();
        tree = handle.shared();
    }

    @Override
    public void close() {
        tree.leave();
    }

    /**
     * Checks that the native method that has just returned was let in. To be called before its
     * result is believed.
     *
     * @param what the subject of the call
     * @throws IllegalStateException if the method did nothing
     */
    static void check(Object what) {
        if (NativeLane.wasRefused()) {
            throw new IllegalStateException("the settings service did nothing for " + what
                    + ": the Java machine is shutting down");
        }
    }

    /** The failure of a call that came back without an answer. */
    static IllegalStateException unanswered(Object what) {
        return new IllegalStateException("no answer from the settings service for " + what
                + ": the Java machine is shutting down, or an unknown failure was dropped");
    }
}
