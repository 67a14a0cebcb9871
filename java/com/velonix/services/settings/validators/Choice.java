package com.velonix.services.settings.validators;

import java.util.List;
import java.util.Optional;

/** Accepts values whose text is one of several choices, such as {@code left|right|centre}. */
public final class Choice extends ElementValidator {
    private final List<String> choices;

    /**
     * Makes the validator.
     *
     * @param argument the accepted texts, separated by vertical bars
     */
    public Choice(String argument) {
        choices = List.of(argument.split("\\|", -1));
    }

    @Override
    Optional<String> elementProblem(Object element) {
        return choices.contains(element.toString())
                ? Optional.empty()
                : Optional.of("\"" + element + "\" is none of " + String.join(", ", choices));
    }
}
