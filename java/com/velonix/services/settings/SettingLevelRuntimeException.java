package com.velonix.services.settings;

/** Thrown if the settings service returns a level that {@link SettingLevel} does not have. */
public class SettingLevelRuntimeException extends RuntimeException {
    private static final long serialVersionUID = 1;

    /**
     * Makes the exception.
     *
     * @param message the failed operation and the reason
     */
    public SettingLevelRuntimeException(String message) {
        super(message);
    }
}
