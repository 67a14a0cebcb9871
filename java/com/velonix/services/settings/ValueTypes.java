package com.velonix.services.settings;

import com.velonix.util.types.UnsignedByte;
import com.velonix.util.types.UnsignedInteger;
import com.velonix.util.types.UnsignedLong;
import com.velonix.util.types.UnsignedShort;
import java.lang.invoke.MethodType;
import java.lang.reflect.Array;
import java.util.Arrays;
import java.util.Objects;
import java.util.Set;

/**
 * The Java classes that a setting's value may have: twelve element classes and arrays of them.
 * Primitive arrays are accepted in their place and copied from and to arrays of the boxed class.
 */
final class ValueTypes {
    private static final Set<Class<?>> ELEMENTS = Set.of(String.class, Boolean.class, Byte.class,
            UnsignedByte.class, Short.class, UnsignedShort.class, Integer.class,
            UnsignedInteger.class, Long.class, UnsignedLong.class, Float.class, Double.class);

    private ValueTypes() {}

    /** The class to ask for: a primitive class becomes its boxed class. */
    static <T> Class<T> checkAsked(Class<T> type, SettingPath parent, String name) {
        if (ELEMENTS.contains(Objects.requireNonNull(type, "type")))
            return type;
        @SuppressWarnings("unchecked")
        Class<T> asked = (Class<T>) MethodType.methodType(type).wrap().returnType();
        if (isStored(stored(asked)) || canHoldStored(asked))
            return asked;
        throw new SettingUnsupportedTypeRuntimeException(
                parent.dotted(name) + ": no setting has values of " + type.getTypeName());
    }

    /** The kind in which values of the class are stored; 0 when it stands for several. */
    static int kindOf(Class<?> type) {
        return ValueKinds.of(stored(type));
    }

    /** The value as it is stored, once it is found to be of a class that a setting can hold. */
    static Object toStored(Object value, SettingPath parent, String name) {
        if (value == null)
            throw new NullPointerException("value of " + parent.dotted(name));
        Class<?> type = value.getClass();
        if (!isStored(stored(type))) {
            throw new SettingUnsupportedTypeRuntimeException(parent.dotted(name) + ": a value of "
                    + type.getTypeName() + " cannot be stored");
        }
        if (!type.isArray())
            return value;
        if (type.getComponentType().isPrimitive())
            return copy(value, stored(type));
        Object[] elements = (Object[]) value;
        for (int i = 0; i < elements.length; ++i) {
            if (elements[i] == null) {
                throw new NullPointerException(
                        "element " + i + " of the value of " + parent.dotted(name));
            }
        }
        return value;
    }

    /** Whether stored values of that class can be handed out as values of the class asked for. */
    static boolean fits(Class<?> storedType, Class<?> asked) {
        return asked.isAssignableFrom(storedType) || stored(asked) == storedType;
    }

    /** A stored value as a value of the class asked for, which it fits. */
    static <T> T fromStored(Object value, Class<T> asked) {
        return asked.cast(asked.isInstance(value) ? value : copy(value, asked));
    }

    private static boolean isStored(Class<?> type) {
        return ELEMENTS.contains(type.isArray() ? type.getComponentType() : type);
    }

    private static boolean canHoldStored(Class<?> asked) {
        for (Class<?> element : ELEMENTS) {
            if (asked.isAssignableFrom(element) || asked.isAssignableFrom(element.arrayType())) {
                return true;
            }
        }
        return false;
    }

    /**
     * The class in which values of that class are stored: a primitive array's boxed array class.
     */
    private static Class<?> stored(Class<?> type) {
        if (!type.isArray())
            return type;
        return MethodType.methodType(type.getComponentType()).wrap().returnType().arrayType();
    }

    private static Object copy(Object array, Class<?> arrayType) {
        // The arrays of numbers that are usual, without reflection.
        if (array instanceof Double[] boxed)
            return Arrays.stream(boxed).mapToDouble(Double::doubleValue).toArray();
        if (array instanceof double[] numbers)
            return Arrays.stream(numbers).boxed().toArray(Double[] ::new);
        int length = Array.getLength(array);
        Object copy = Array.newInstance(arrayType.getComponentType(), length);
        for (int i = 0; i < length; ++i) {
            Array.set(copy, i, Array.get(array, i));
        }
        return copy;
    }
}
