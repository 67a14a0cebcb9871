package com.velonix.services.settings;

/**
 * A value or a Java class that a setting cannot hold, or another type than the one the key has.
 */
public class SettingUnsupportedTypeRuntimeException extends RuntimeException {
    private static final long serialVersionUID = 1;

    /**
     * Makes the failure.
     *
     * @param message what failed, and why
     */
    public SettingUnsupportedTypeRuntimeException(String message) {
        super(message);
    }
}
