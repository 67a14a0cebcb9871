package com.velonix.services.settings;

/**
 * Thrown if a value is refused: by a validator, because the key has another type, or because the
 * value cannot be stored. The message gives the reason.
 */
public class SettingValidationException extends SettingException {
    private static final long serialVersionUID = 1;

    /**
     * Makes the exception.
     *
     * @param message the failed operation and the reason
     */
    public SettingValidationException(String message) {
        super(NativeCall.reasonOr(message));
    }
}
