package com.velonix.services.settings;

/**
 * A value was refused: by a validator, because its type is not that of the key, or because it could
 * not be stored. The message gives the reason.
 */
public class SettingValidationException extends SettingException {
    private static final long serialVersionUID = 1;

    /**
     * Makes the failure.
     *
     * @param message what failed, and why
     */
    public SettingValidationException(String message) {
        super(message);
    }
}
