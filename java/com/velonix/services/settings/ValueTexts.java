package com.velonix.services.settings;

import java.lang.reflect.Array;
import java.util.List;
import java.util.stream.IntStream;
import java.util.stream.Stream;

/** Values as texts, in the form of settings files: one text for each element of an array. */
final class ValueTexts {
    private ValueTexts() {}

    /** Returns the texts of a value as it is stored. */
    static List<String> of(Object stored) {
        Stream<Object> elements = stored.getClass().isArray()
                ? IntStream.range(0, Array.getLength(stored)).mapToObj(i -> Array.get(stored, i))
                : Stream.of(stored);
        return elements.map(ValueTexts::ofElement).toList();
    }

    /**
     * Returns the value, as it is stored, that the texts stand for.
     *
     * @param type the class of stored values
     * @param dotted the path of the key, for the message
     * @throws SettingValidationException if they stand for none
     */
    static Object parse(Class<?> type, String[] texts, String dotted)
            throws SettingValidationException {
        if (!type.isArray()) {
            if (texts.length != 1) {
                throw new SettingValidationException(dotted + ": a value of the class "
                        + type.getSimpleName() + " is one text, not " + texts.length);
            }
            return element(type, texts[0], dotted);
        }
        Object array = Array.newInstance(type.getComponentType(), texts.length);
        for (int i = 0; i < texts.length; ++i)
            Array.set(array, i, element(type.getComponentType(), texts[i], dotted));
        return array;
    }

    private static String ofElement(Object element) {
        return element instanceof String text ? text : NativeLane.textOf(element);
    }

    private static Object element(Class<?> type, String text, String dotted)
            throws SettingValidationException {
        Object value = type == String.class ? text : NativeLane.valueOf(ValueKinds.of(type), text);
        if (value != null)
            return value;
        throw new SettingValidationException(dotted + ": \"" + text + "\" is not a value of the"
                + " class " + type.getSimpleName()
                + ". Numbers are decimal digits, truth values true or false.");
    }
}
