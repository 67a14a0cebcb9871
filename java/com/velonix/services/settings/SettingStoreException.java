package com.velonix.services.settings;

/**
 * Thrown if the store of a level failed: its disk is full, its directory is gone, another process
 * holds its lock. The message has the store and the system's reason. Nothing has been changed.
 */
public class SettingStoreException extends SettingException {
    private static final long serialVersionUID = 1;

    /**
     * Makes the exception.
     *
     * @param message the failed operation, the store and the reason
     */
    public SettingStoreException(String message) {
        super(message);
    }
}
