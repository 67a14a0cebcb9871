package com.velonix.services.settings;

/** One native call on a tree, which stays open meanwhile. */
final class NativeCall implements AutoCloseable {
    /** The tree's native handle, valid until the call is closed. */
    final long address;

    private final TreeHandle tree;
    private final long askedBefore;

    /** @throws IllegalStateException if the tree has been closed */
    NativeCall(TreeHandle tree) {
        this.tree = tree;
        askedBefore = Exchange.asked();
        address = tree.enter();
    }

    /**
     * To be called when the native method has returned, before what it says is believed.
     *
     * @param what the call was for
     * @throws IllegalStateException if the method has done nothing
     */
    void check(Object what) {
        Unanswered.check(askedBefore, what);
    }

    @Override
    public void close() {
        tree.exit();
    }
}
