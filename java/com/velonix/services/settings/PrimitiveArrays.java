package com.velonix.services.settings;

import com.velonix.util.types.UnsignedByte;
import com.velonix.util.types.UnsignedInteger;
import com.velonix.util.types.UnsignedLong;
import com.velonix.util.types.UnsignedShort;

/**
 * Arrays of primitives, and of the classes that stand for them in settings. The unsigned classes
 * travel as the primitives of their size. A loop for each class: a common one would decide anew for
 * every element.
 */
final class PrimitiveArrays {
    private PrimitiveArrays() {}

    /** A primitive array as an array of the class. */
    static Object boxed(Object array, Class<?> type) {
        if (array instanceof double[] all) {
            Double[] boxed = new Double[all.length];
            for (int i = 0; i < all.length; ++i) boxed[i] = all[i];
            return boxed;
        }
        if (array instanceof float[] all) {
            Float[] boxed = new Float[all.length];
            for (int i = 0; i < all.length; ++i) boxed[i] = all[i];
            return boxed;
        }
        if (array instanceof boolean[] all) {
            Boolean[] boxed = new Boolean[all.length];
            for (int i = 0; i < all.length; ++i) boxed[i] = all[i];
            return boxed;
        }
        if (type == UnsignedByte[].class)
            return unsigned((byte[]) array);
        if (type == UnsignedShort[].class)
            return unsigned((short[]) array);
        if (type == UnsignedInteger[].class)
            return unsigned((int[]) array);
        if (type == UnsignedLong[].class)
            return unsigned((long[]) array);
        if (array instanceof byte[] all) {
            Byte[] boxed = new Byte[all.length];
            for (int i = 0; i < all.length; ++i) boxed[i] = all[i];
            return boxed;
        }
        if (array instanceof short[] all) {
            Short[] boxed = new Short[all.length];
            for (int i = 0; i < all.length; ++i) boxed[i] = all[i];
            return boxed;
        }
        if (array instanceof int[] all) {
            Integer[] boxed = new Integer[all.length];
            for (int i = 0; i < all.length; ++i) boxed[i] = all[i];
            return boxed;
        }
        long[] all = (long[]) array;
        Long[] boxed = new Long[all.length];
        for (int i = 0; i < all.length; ++i) boxed[i] = all[i];
        return boxed;
    }

    /** An array of texts or primitives as it is, a boxed one as primitives; null with a null. */
    static Object unboxed(Object array) {
        if (!(array instanceof Object[] elements))
            return array;
        for (Object element : elements) {
            if (element == null)
                return null;
        }
        int length = elements.length;
        if (array instanceof Double[] all) {
            double[] plain = new double[length];
            for (int i = 0; i < length; ++i) plain[i] = all[i];
            return plain;
        }
        if (array instanceof Float[] all) {
            float[] plain = new float[length];
            for (int i = 0; i < length; ++i) plain[i] = all[i];
            return plain;
        }
        if (array instanceof Boolean[] all) {
            boolean[] plain = new boolean[length];
            for (int i = 0; i < length; ++i) plain[i] = all[i];
            return plain;
        }
        return array instanceof Number[] all ? unboxed(all) : array;
    }

    private static Object unboxed(Number[] all) {
        int length = all.length;
        if (all instanceof Byte[] || all instanceof UnsignedByte[]) {
            byte[] plain = new byte[length];
            for (int i = 0; i < length; ++i) plain[i] = (byte) all[i].longValue();
            return plain;
        }
        if (all instanceof Short[] || all instanceof UnsignedShort[]) {
            short[] plain = new short[length];
            for (int i = 0; i < length; ++i) plain[i] = (short) all[i].longValue();
            return plain;
        }
        if (all instanceof Integer[] || all instanceof UnsignedInteger[]) {
            int[] plain = new int[length];
            for (int i = 0; i < length; ++i) plain[i] = (int) all[i].longValue();
            return plain;
        }
        long[] plain = new long[length];
        for (int i = 0; i < length; ++i) plain[i] = all[i].longValue();
        return plain;
    }

    private static UnsignedByte[] unsigned(byte[] all) {
        UnsignedByte[] boxed = new UnsignedByte[all.length];
        for (int i = 0; i < all.length; ++i) boxed[i] = new UnsignedByte(all[i]);
        return boxed;
    }

    private static UnsignedShort[] unsigned(short[] all) {
        UnsignedShort[] boxed = new UnsignedShort[all.length];
        for (int i = 0; i < all.length; ++i) boxed[i] = new UnsignedShort(all[i]);
        return boxed;
    }

    private static UnsignedInteger[] unsigned(int[] all) {
        UnsignedInteger[] boxed = new UnsignedInteger[all.length];
        for (int i = 0; i < all.length; ++i) boxed[i] = new UnsignedInteger(all[i]);
        return boxed;
    }

    private static UnsignedLong[] unsigned(long[] all) {
        UnsignedLong[] boxed = new UnsignedLong[all.length];
        for (int i = 0; i < all.length; ++i) boxed[i] = new UnsignedLong(all[i]);
        return boxed;
    }
}
