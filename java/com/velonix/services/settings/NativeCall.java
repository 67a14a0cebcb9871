package com.velonix.services.settings;

/** A native call on a tree. The tree stays open until the call is closed. */
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
        ServiceProblems.reportNew();
    }

    /**
     * Checks that the native method that has just returned was not refused. The caller must do so
     * before it uses the result.
     *
     * @param subject the setting or path of the call, for the message
     * @throws IllegalStateException if the method did nothing, because the program that embeds the
     *     JVM has stopped it for the settings
     */
    static void check(Object subject) {
        if (NativeLane.wasRefused()) {
            throw new IllegalStateException("The settings service did nothing for " + subject
                    + ": the native program is ending the JVM");
        }
    }

    /**
     * Returns the message for an exception: the service's reason if a native method is making the
     * exception, else the given message.
     */
    static String reasonOr(String message) {
        String reason = NativeLibrary.isLoaded() ? NativeLane.refusalReason() : null;
        return reason == null ? message : reason;
    }

    /** Returns the exception for a call that returned no result. */
    static IllegalStateException unanswered(Object subject) {
        return new IllegalStateException("The settings service returned nothing for " + subject
                + ": the native program is ending the JVM, or the service failed in an unknown"
                + " way");
    }
}
