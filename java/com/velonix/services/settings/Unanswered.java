package com.velonix.services.settings;

/** Native calls that came back without an answer, or without having done anything. */
final class Unanswered {
    private Unanswered() {}

    static IllegalStateException failure(String what) {
        return new IllegalStateException("no answer from the settings service for " + what
                + ": the Java machine is shutting down, or an unknown failure was dropped");
    }

    /**
     * Fails when the native call that has just returned was refused.
     *
     * @param askedBefore what {@link Exchange#asked} said before the call
     * @param what the call was for
     */
    static void check(long askedBefore, Object what) {
        if (Exchange.asked() == askedBefore) {
            throw new IllegalStateException("the settings service did nothing for " + what
                    + ": the Java machine is shutting down");
        }
    }
}
