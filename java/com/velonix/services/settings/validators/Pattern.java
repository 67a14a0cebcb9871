package com.velonix.services.settings.validators;

import java.util.Optional;

/** Accepts texts that match a regular expression as a whole. */
public final class Pattern extends ElementValidator {
    private final java.util.regex.Pattern expression;

    /**
     * Makes the validator.
     *
     * @param argument the expression, as {@link java.util.regex.Pattern} reads it
     * @throws java.util.regex.PatternSyntaxException if it is not an expression
     */
    public Pattern(String argument) {
        expression = java.util.regex.Pattern.compile(argument);
    }

    @Override
    Optional<String> elementProblem(Object element) {
        if (!(element instanceof String))
            return Optional.of(element + " is not a text");
        return expression.matcher((String) element).matches()
                ? Optional.empty()
                : Optional.of("\"" + element + "\" does not match " + expression);
    }
}
