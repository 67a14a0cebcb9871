package com.velonix.services.settings;

/**
 * The name is taken by another entry. The message is the dotted path.
 */
public class SettingNameDuplicationException extends SettingException {
    private static final long serialVersionUID = 1;

    /**
     * Makes the failure.
     *
     * @param message what failed, and why
     */
    public SettingNameDuplicationException(String message) {
        super(message);
    }
}
