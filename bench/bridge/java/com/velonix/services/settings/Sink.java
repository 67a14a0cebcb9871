package com.velonix.services.settings;

/**
 * Takes what a loop reads, so that no reading is found to be of no use. Each run of a loop has one
 * of its own: threads share none, and storing into an object that is old would cost more.
 */
final class Sink {
    Object last;

    /** With these the objects of two threads are in different cache lines wherever they are. */
    private long a, b, c, d, e, f, g, h;
}
