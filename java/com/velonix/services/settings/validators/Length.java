package com.velonix.services.settings.validators;

import com.velonix.services.settings.ValidationContext;
import com.velonix.services.settings.ValueValidator;
import java.math.BigDecimal;
import java.util.Optional;

/**
 * Accepts texts with a number of characters, and arrays with a number of elements, between two
 * bounds, such as {@code 1..40}.
 */
public final class Length implements ValueValidator {
    private final Bounds bounds;

    /**
     * Makes the validator.
     *
     * @param argument the inclusive bounds, {@code min..max}; either may be left out
     * @throws IllegalArgumentException if the argument has another form, or a bound more than 1,100
     *         digits
     */
    public Length(String argument) {
        bounds = Bounds.parse(argument);
    }

    @Override
    public Optional<String> problem(ValidationContext candidate) {
        int length;
        if (candidate.value() instanceof String text) {
            length = text.codePointCount(0, text.length());
        } else if (candidate.value() instanceof Object[] elements) {
            length = elements.length;
        } else {
            return Optional.of(candidate.value() + " is neither a text nor an array");
        }
        return bounds.contain(BigDecimal.valueOf(length))
                ? Optional.empty()
                : Optional.of("the length " + length + " is outside " + bounds);
    }
}
