package com.velonix.services.settings;

/**
 * There is no such node, key or value. The message begins with the dotted path that was asked for.
 */
public class SettingNotFoundException extends SettingException {
    private static final long serialVersionUID = 1;

    /**
     * Makes the failure.
     *
     * @param message what failed, and why
     */
    public SettingNotFoundException(String message) {
        super(message);
    }
}
