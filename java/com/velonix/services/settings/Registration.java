package com.velonix.services.settings;

/**
 * A listener's registration; {@link #close()} ends it. It stays in force after the path that it was
 * made through has been closed, and keeps that tree open; it need not be kept to stay in force. It
 * ends by itself when the entry it was made on is removed. When a node further up is removed it
 * hears nothing more, and is closed to let go of the listener.
 */
public interface Registration extends AutoCloseable {
    /**
     * Ends the registration: when this returns, no new call of the listener begins and nothing of
     * it stays referenced. Closing again does nothing. May be called from any thread, from the
     * listener too.
     */
    @Override void close();
}
