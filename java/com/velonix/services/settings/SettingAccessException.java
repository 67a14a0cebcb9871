package com.velonix.services.settings;

/**
 * The level is read-only, or a read-only file defines the entry. The message is its dotted path.
 */
public class SettingAccessException extends SettingException {
    private static final long serialVersionUID = 1;

    /**
     * Makes the failure.
     *
     * @param message what failed, and why
     */
    public SettingAccessException(String message) {
        super(message);
    }
}
