package com.velonix.services.settings;

/**
 * The base of the checked exceptions of the settings API. The message names the setting, or gives
 * the reason why a change was refused.
 */
public class SettingException extends Exception {
    private static final long serialVersionUID = 1;

    /**
     * Makes the exception.
     *
     * @param message the failed operation and the reason
     */
    public SettingException(String message) {
        super(message);
    }
}
