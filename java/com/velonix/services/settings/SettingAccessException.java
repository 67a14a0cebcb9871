package com.velonix.services.settings;

/**
 * Thrown if the entry cannot be changed at the level: the level is read-only, a read-only file
 * defines the entry, a lock of a lower level counts, or the user lacks the permission. The message
 * names the entry and the level and gives the reason.
 */
public class SettingAccessException extends SettingException {
    private static final long serialVersionUID = 1;

    /**
     * Makes the exception.
     *
     * @param message the failed operation and the reason
     */
    public SettingAccessException(String message) {
        super(NativeCall.reasonOr(message));
    }
}
