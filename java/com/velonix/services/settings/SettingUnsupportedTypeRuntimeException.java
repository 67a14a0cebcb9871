package com.velonix.services.settings;

/**
 * Thrown if no setting has values of a Java class, or the key has values of another class.
 */
public class SettingUnsupportedTypeRuntimeException extends RuntimeException {
    private static final long serialVersionUID = 1;

    /**
     * Makes the exception.
     *
     * @param message the failed operation and the reason
     */
    public SettingUnsupportedTypeRuntimeException(String message) {
        super(message);
    }
}
