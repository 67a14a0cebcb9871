package com.velonix.services.settings;

/** A native call that came back without an answer and without a failure. */
final class Unanswered {
    private Unanswered() {}

    static IllegalStateException failure(String what) {
        return new IllegalStateException("no answer from the settings service for " + what
                + ": the Java machine is shutting down, or an unknown failure was dropped");
    }
}
