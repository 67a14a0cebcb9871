package com.velonix.services.settings;

import com.velonix.util.types.UnsignedByte;
import com.velonix.util.types.UnsignedInteger;
import com.velonix.util.types.UnsignedLong;
import com.velonix.util.types.UnsignedShort;

/**
 * The numbers of the kinds of value, as native code has them (values/value_kinds.h): 1 to 12 for
 * the element classes, 13 to 24 for arrays of them in the same order.
 */
final class ValueKinds {
    static final int STRING = 1, BOOLEAN = 2, BYTE = 3, UNSIGNED_BYTE = 4, SHORT = 5,
                     UNSIGNED_SHORT = 6, INTEGER = 7, UNSIGNED_INTEGER = 8, LONG = 9,
                     UNSIGNED_LONG = 10, FLOAT = 11, DOUBLE = 12;

    /** By kind. */
    private static final Class<?>[] ELEMENTS = {null, String.class, Boolean.class, Byte.class,
            UnsignedByte.class, Short.class, UnsignedShort.class, Integer.class,
            UnsignedInteger.class, Long.class, UnsignedLong.class, Float.class, Double.class};

    private ValueKinds() {}

    /** The kind of the values of a class; 0 when it is none of theirs. */
    static int of(Class<?> type) {
        return type.isArray() ? arrayOf(ofElement(type.getComponentType())) : ofElement(type);
    }

    static boolean isArray(int kind) {
        return kind >= ELEMENTS.length;
    }

    private static int arrayOf(int element) {
        return element == 0 ? 0 : element + ELEMENTS.length - 1;
    }

    private static int ofElement(Class<?> type) {
        // All of these classes are final, so there are no subclasses to look for.
        for (int kind = 1; kind < ELEMENTS.length; ++kind) {
            if (ELEMENTS[kind] == type)
                return kind;
        }
        return 0;
    }
}
