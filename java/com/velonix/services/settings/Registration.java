package com.velonix.services.settings;

/**
 * A listener's registration; {@link #close()} ends it. It stays in force after the path that it was
 * made through has been closed, and keeps that tree open; it need not be kept to stay in force. It
 * ends by itself, and lets go of the listener, when the entry it was made on is removed, alone or
 * with a node further up.
 */
public interface Registration extends AutoCloseable {
    /**
     * Ends the registration: when this returns, no new call of the listener begins and nothing of
     * it stays referenced. Closing again does nothing. May be called from any thread, from the
     * listener too.
     */
    @Override void close();
}
