package com.velonix.services.settings;

/**
 * The base of the checked failures of the settings API. The message names the setting, or says why
 * the change was refused.
 */
public class SettingException extends Exception {
    private static final long serialVersionUID = 1;

    /**
     * Makes the failure.
     *
     * @param message what failed, and why
     */
    public SettingException(String message) {
        super(message);
    }
}
