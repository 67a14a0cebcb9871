package com.velonix.services.settings;

import com.velonix.util.types.UnsignedByte;
import com.velonix.util.types.UnsignedInteger;
import com.velonix.util.types.UnsignedLong;
import com.velonix.util.types.UnsignedShort;

/**
 * The kinds of value by the numbers that native code uses (values/value_kinds.h): 1 to 12 for the
 * element classes, 13 to 24 for arrays of them in the same order.
 */
final class ValueKinds {
    static final int STRING = 1, BOOLEAN = 2, BYTE = 3, UNSIGNED_BYTE = 4, SHORT = 5,
                     UNSIGNED_SHORT = 6, INTEGER = 7, UNSIGNED_INTEGER = 8, LONG = 9,
                     UNSIGNED_LONG = 10, FLOAT = 11, DOUBLE = 12;

    /** The element classes; the kind of the first one is 1. */
    private static final Class<?>[] ELEMENTS = {String.class, Boolean.class, Byte.class,
            UnsignedByte.class, Short.class, UnsignedShort.class, Integer.class,
            UnsignedInteger.class, Long.class, UnsignedLong.class, Float.class, Double.class};

    private ValueKinds() {}

    /** Returns the element classes, in the order of their kinds. */
    static Class<?>[] elements() {
        return ELEMENTS.clone();
    }

    /** Returns the kind of the values of a class; 0 if no kind has values of the class. */
    static int of(Class<?> type) {
        return type.isArray() ? arrayOf(ofElement(type.getComponentType())) : ofElement(type);
    }

    static boolean isArray(int kind) {
        return kind > ELEMENTS.length;
    }

    /** Returns the kind of the elements of an array. */
    static int elementOf(int array) {
        return array - ELEMENTS.length;
    }

    private static int arrayOf(int element) {
        return element == 0 ? 0 : element + ELEMENTS.length;
    }

    private static int ofElement(Class<?> type) {
        // All element classes are final, so no subclass has to be looked for.
        for (int i = 0; i < ELEMENTS.length; ++i) {
            if (ELEMENTS[i] == type)
                return i + 1;
        }
        return 0;
    }
}
