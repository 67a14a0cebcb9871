package com.velonix.services.settings;

import com.velonix.services.settings.validators.Choice;
import java.lang.reflect.Array;
import java.util.Arrays;
import java.util.List;
import java.util.Objects;

/**
 * How the values of a {@link SettingKey} are stored: a setting has no enum and no list.
 *
 * @param <T> the class of the key's values
 * @param <S> the class of the stored values
 */
interface StoredForm<T, S> {
    Class<S> storedClass();

    S toStored(T value);

    /** Throws IllegalArgumentException, with the reason, if the stored value stands for none. */
    T fromStored(S stored);

    /** The validator of a new key that is given none. */
    default ValidatorName validator() {
        return ValidatorName.NONE;
    }

    /** Returns the form of values that are stored as they are, or of an enum's constants. */
    @SuppressWarnings({"unchecked", "rawtypes"})
    static <T> StoredForm<T, ?> of(T example) {
        if (Objects.requireNonNull(example, "default") instanceof Enum<?> constant)
            return (StoredForm<T, ?>) new OfEnum(constant.getDeclaringClass());
        return new Itself<>((Class<T>) example.getClass());
    }

    /** Values of one of the classes of {@link ValueTypes}. */
    record Itself<T>(Class<T> storedClass) implements StoredForm<T, T> {
        @Override
        public T toStored(T value) {
            return value;
        }

        @Override
        public T fromStored(T stored) {
            return stored;
        }
    }

    /** Constants of an enum, stored as their names. */
    record OfEnum<E extends Enum<E>>(Class<E> type) implements StoredForm<E, String> {
        @Override
        public Class<String> storedClass() {
            return String.class;
        }

        @Override
        public String toStored(E value) {
            return value.name();
        }

        @Override
        public E fromStored(String stored) {
            for (E constant : type.getEnumConstants()) {
                if (constant.name().equals(stored))
                    return constant;
            }
            throw new IllegalArgumentException("\"" + stored + "\" is none of " + names(", "));
        }

        @Override
        public ValidatorName validator() {
            return new ValidatorName(Choice.class.getName(), names("|"));
        }

        private String names(String separator) {
            return String.join(
                    separator, Arrays.stream(type.getEnumConstants()).map(Enum::name).toList());
        }
    }

    /** Lists, stored as arrays. */
    record OfList<E>(Class<E> element, Class<E[]> storedClass) implements StoredForm<List<E>, E[]> {
        @SuppressWarnings("unchecked")
        static <E> OfList<E> of(Class<E> element) {
            return new OfList<>(
                    Objects.requireNonNull(element, "element"), (Class<E[]>) element.arrayType());
        }

        @Override
        public E[] toStored(List<E> value) {
            return value.toArray(storedClass.cast(Array.newInstance(element, 0)));
        }

        @Override
        public List<E> fromStored(E[] stored) {
            return List.of(stored);
        }
    }
}
