package com.velonix.services.settings;

/**
 * A listener's registration; {@link #close()} ends it. It stays in force after the root that it was
 * made through has been closed, as long as the tree exists, also if no reference to the
 * registration is kept. It ends by itself when its entry is removed, alone or with a node above it,
 * and when a tree in memory is closed for the last time; a registration that is still referenced
 * then references its listener.
 */
public interface Registration extends AutoCloseable {
    /**
     * Ends the registration: once this has returned, no new call of the listener begins and the
     * listener is no longer referenced. Closing again does nothing. May be called from any thread
     * and from the listener.
     */
    @Override void close();
}
