package com.velonix.services.settings.validators;

import com.velonix.services.settings.ValidationContext;
import com.velonix.services.settings.ValueValidator;
import java.util.Optional;

/** Validates a single value, or each element of an array separately. */
abstract class ElementValidator implements ValueValidator {
    @Override
    public final Optional<String> problem(ValidationContext candidate) {
        if (!(candidate.value() instanceof Object[] elements)) {
            return elementProblem(candidate.value());
        }
        for (int i = 0; i < elements.length; ++i) {
            Optional<String> problem = elementProblem(elements[i]);
            if (problem.isPresent())
                return Optional.of("element " + i + ": " + problem.get());
        }
        return Optional.empty();
    }

    abstract Optional<String> elementProblem(Object element);
}
