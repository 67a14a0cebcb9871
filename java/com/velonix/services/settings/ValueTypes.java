package com.velonix.services.settings;

import java.lang.invoke.MethodType;
import java.util.Objects;
import java.util.Set;

/**
 * The Java classes that the values of settings may have: twelve element classes and arrays of them.
 * A primitive array stands for the array of its boxed class and is copied from and to it.
 */
final class ValueTypes {
    private static final Set<Class<?>> ELEMENTS = Set.of(ValueKinds.elements());

    private ValueTypes() {}

    /**
     * Returns the class to ask for: the boxed class in place of a primitive one.
     *
     * @throws SettingUnsupportedTypeRuntimeException if no setting has values of the class
     */
    static <T> Class<T> checkAsked(Class<T> type, SettingPath parent, String name) {
        if (ELEMENTS.contains(Objects.requireNonNull(type, "type")))
            return type;
        @SuppressWarnings("unchecked")
        Class<T> asked = (Class<T>) MethodType.methodType(type).wrap().returnType();
        if (isStored(stored(asked)) || canHoldStored(asked))
            return asked;
        throw new SettingUnsupportedTypeRuntimeException(parent.dotted(name)
                + ": no setting has values of the class \"" + type.getTypeName()
                + "\". Use String, Boolean, a number, or an array of these.");
    }

    /** Returns the kind in which values of the class are stored; 0 if there are several. */
    static int kindOf(Class<?> type) {
        return ValueKinds.of(stored(type));
    }

    /**
     * Returns the value as it is stored.
     *
     * @throws SettingUnsupportedTypeRuntimeException if no setting has values of its class
     * @throws NullPointerException if the value, or an element of it, is null
     */
    static Object toStored(Object value, SettingPath parent, String name) {
        if (value == null)
            throw new NullPointerException("value of " + parent.dotted(name));
        Class<?> type = value.getClass();
        int kind = kindOf(type);
        if (kind == 0)
            throw unsupported(type, parent.dotted(name));
        if (!type.isArray())
            return value;
        if (type.getComponentType().isPrimitive())
            return PrimitiveArrays.boxed(value, kind);
        Object[] elements = (Object[]) value;
        for (int i = 0; i < elements.length; ++i) {
            if (elements[i] == null) {
                throw new NullPointerException(
                        "element " + i + " of the value of " + parent.dotted(name));
            }
        }
        return value;
    }

    /**
     * Returns the value if a setting can have it.
     *
     * @throws SettingUnsupportedTypeRuntimeException if not
     */
    static Object checkStored(Object value, String dotted) {
        if (kindOf(value.getClass()) == 0)
            throw unsupported(value.getClass(), dotted);
        return value;
    }

    /** Tells whether stored values of a class can be returned as values of the class asked for. */
    static boolean fits(Class<?> storedType, Class<?> asked) {
        return asked.isAssignableFrom(storedType) || stored(asked) == storedType;
    }

    /** Returns a stored value as one of the class asked for; the caller has checked the fit. */
    static <T> T fromStored(Object value, Class<T> asked) {
        return asked.cast(asked.isInstance(value)
                        ? value
                        : PrimitiveArrays.unboxed((Object[]) value, kindOf(asked)));
    }

    private static SettingUnsupportedTypeRuntimeException unsupported(
            Class<?> type, String dotted) {
        return new SettingUnsupportedTypeRuntimeException(dotted + ": a value of the class \""
                + type.getTypeName()
                + "\" cannot be stored. Use String, Boolean, a number, or an array of these.");
    }

    /** Tells whether values of the class are of one kind. */
    static boolean isStorable(Class<?> type) {
        return kindOf(type) != 0;
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

    /** Returns the class in which values are stored: that of boxed arrays for primitive ones. */
    static Class<?> stored(Class<?> type) {
        if (!type.isArray())
            return type;
        return MethodType.methodType(type.getComponentType()).wrap().returnType().arrayType();
    }
}
