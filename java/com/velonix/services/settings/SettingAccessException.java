package com.velonix.services.settings;

/**
 * Thrown if the level is read-only, or a read-only file defines the entry. The message is the
 * dotted path of the entry.
 */
public class SettingAccessException extends SettingException {
    private static final long serialVersionUID = 1;

    /**
     * Makes the exception.
     *
     * @param message the failed operation and the reason
     */
    public SettingAccessException(String message) {
        super(message);
    }
}
