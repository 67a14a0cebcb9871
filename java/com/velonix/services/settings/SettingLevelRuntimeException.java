package com.velonix.services.settings;

/**
 * The settings service answered with a level that {@link SettingLevel} does not know.
 */
public class SettingLevelRuntimeException extends RuntimeException {
    private static final long serialVersionUID = 1;

    /**
     * Makes the failure.
     *
     * @param message what failed, and why
     */
    public SettingLevelRuntimeException(String message) {
        super(message);
    }
}
