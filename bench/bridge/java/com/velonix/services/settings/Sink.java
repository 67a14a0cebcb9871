package com.velonix.services.settings;

/**
 * Takes the results of a loop, so that the compiler cannot remove the reads. Each run of a loop has
 * a new one: threads share none, and a store into an old object would cost more.
 */
final class Sink {
    Object last;

    /** Padding that keeps the objects of two threads in different cache lines. */
    private long a, b, c, d, e, f, g, h;
}
