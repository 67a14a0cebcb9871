package com.velonix.services.settings;

/**
 * Thrown if a value is refused: by a validator, or because the key has another type. The message
 * gives the reason.
 */
public class SettingValidationException extends SettingException {
    private static final long serialVersionUID = 1;

    /** Whether the store of the level failed; the contract's natives have one class for both. */
    private final boolean isOfStore;

    /**
     * Makes the exception.
     *
     * @param message the failed operation and the reason
     */
    public SettingValidationException(String message) {
        super(NativeCall.reasonOr(message));
        isOfStore = NativeLibrary.isLoaded() && NativeLane.refusalIsOfStore();
    }

    /** Returns the exception for the caller of the API: this one, or that of a store. */
    SettingException forCaller() {
        if (!isOfStore)
            return this;
        SettingStoreException failed = new SettingStoreException(getMessage());
        failed.setStackTrace(getStackTrace());
        return failed;
    }
}
