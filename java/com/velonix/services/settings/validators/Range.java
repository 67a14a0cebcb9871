package com.velonix.services.settings.validators;

import java.math.BigDecimal;
import java.util.Optional;

/** Accepts numbers between two bounds, such as {@code 1..72}, {@code 0.5..2} or {@code 0..}. */
public final class Range extends ElementValidator {
    private final Bounds bounds;

    /**
     * Makes the validator.
     *
     * @param argument the inclusive bounds, {@code min..max}; either may be left out
     * @throws IllegalArgumentException if the argument has another form, or a bound more than 1,100
     *         digits
     */
    public Range(String argument) {
        bounds = Bounds.parse(argument);
    }

    @Override
    Optional<String> elementProblem(Object element) {
        if (!(element instanceof Number))
            return Optional.of(element + " is not a number");
        return accepts((Number) element) ? Optional.empty()
                                         : Optional.of(element + " is outside " + bounds);
    }

    private boolean accepts(Number number) {
        double approximate = number.doubleValue();
        if (Double.isNaN(approximate))
            return false;
        if (Double.isInfinite(approximate)) {
            return (approximate > 0 ? bounds.max() : bounds.min()) == null;
        }
        // The decimal text is exact for every kind of number, also for those above the long range.
        return bounds.contain(new BigDecimal(number.toString()));
    }
}
