package story;

import com.velonix.services.settings.ValidationContext;
import com.velonix.services.settings.ValueValidator;
import java.util.Optional;

/** Accepts even numbers. The settings make it, so its package is exported to their module. */
public final class EvenNumber implements ValueValidator {
    /** Takes the validator's argument, which it does not need. */
    public EvenNumber(String unused) {}

    @Override
    public Optional<String> problem(ValidationContext context) {
        int number = (Integer) context.value();
        return number % 2 == 0 ? Optional.empty() : Optional.of(number + " is odd");
    }
}
