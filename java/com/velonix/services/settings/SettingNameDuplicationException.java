package com.velonix.services.settings;

/** Thrown if another entry has the name. The message says which. */
public class SettingNameDuplicationException extends SettingException {
    private static final long serialVersionUID = 1;

    /**
     * Makes the exception.
     *
     * @param message the failed operation and the reason
     */
    public SettingNameDuplicationException(String message) {
        super(NativeCall.reasonOr(message));
    }
}
