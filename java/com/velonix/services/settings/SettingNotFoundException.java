package com.velonix.services.settings;

/**
 * Thrown if there is no such node, key or value. The message begins with the dotted path.
 */
public class SettingNotFoundException extends SettingException {
    private static final long serialVersionUID = 1;

    /**
     * Makes the exception.
     *
     * @param message the failed operation and the reason
     */
    public SettingNotFoundException(String message) {
        super(NativeCall.reasonOr(message));
    }
}
