package com.velonix.services.settings;

import java.util.List;
import java.util.Objects;
import java.util.Optional;

/** The two strings that name a Java validator to the settings service; both null for none. */
record ValidatorName(String className, String argument) {
    static final ValidatorName NONE = new ValidatorName(null, null);

    /**
     * Makes the validator, so that a mistake shows at once and not at the first set.
     *
     * @throws IllegalArgumentException if the validator cannot be made with the argument
     */
    static ValidatorName of(Class<? extends ValueValidator> type, String argument) {
        Objects.requireNonNull(type, "validator");
        Objects.requireNonNull(argument, "argument");
        try {
            SettingValidator.instance(type, argument);
        } catch (ReflectiveOperationException | RuntimeException | LinkageError refused) {
            // A class that cannot be initialised has no message.
            String reason =
                    refused.getMessage() == null ? refused.toString() : refused.getMessage();
            throw new IllegalArgumentException(
                    type.getName() + " with \"" + argument + "\": " + reason, refused);
        }
        return new ValidatorName(type.getName(), argument);
    }

    /** Validates a value; returns the reason why it is refused, or empty if it is valid. */
    Optional<String> problem(List<String> path, String name, Object value) {
        if (className == null)
            return Optional.empty();
        try {
            return Optional.ofNullable(SettingValidator.validate(
                    className, argument, 0, path.toArray(String[] ::new), name, value));
        } catch (ReflectiveOperationException | RuntimeException failed) {
            return Optional.of("The validator " + className + " failed: " + failed);
        }
    }
}
