package com.velonix.services.settings;

class SettingAccessException extends RuntimeException {
    SettingAccessException(String message) {
        super(message);
    }
}

class SettingNotFoundException extends RuntimeException {
    SettingNotFoundException(String message) {
        super(message);
    }
}

class SettingValidationException extends RuntimeException {
    SettingValidationException(String message) {
        super(message);
    }
}

class SettingNameDuplicationException extends RuntimeException {
    SettingNameDuplicationException(String message) {
        super(message);
    }
}

class SettingUnsupportedTypeRuntimeException extends RuntimeException {
    SettingUnsupportedTypeRuntimeException(String message) {
        super(message);
    }
}

class SettingLevelRuntimeException extends RuntimeException {
    SettingLevelRuntimeException(String message) {
        super(message);
    }
}
