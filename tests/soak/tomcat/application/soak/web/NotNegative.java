package soak.web;

import com.velonix.services.settings.ValidationContext;
import com.velonix.services.settings.ValueValidator;
import java.util.Optional;

/** A validator that refuses negative numbers. Each application has its own class of this name. */
public final class NotNegative implements ValueValidator {
    /** Makes the validator, which needs no argument. */
    public NotNegative(String ignored) {}

    @Override
    public Optional<String> problem(ValidationContext context) {
        return (Long) context.value() < 0 ? Optional.of("negative") : Optional.empty();
    }
}
