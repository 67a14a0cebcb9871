package com.velonix.services.settings;

import com.velonix.util.types.UnsignedByte;
import com.velonix.util.types.UnsignedInteger;
import com.velonix.util.types.UnsignedLong;
import com.velonix.util.types.UnsignedShort;
import java.util.Arrays;

/**
 * A key that native code has looked up, so that calls carry neither a path nor a SettingInfo. Owned
 * by the {@link SharedTree}, shared by all settings of the key, and used only within calls of that
 * tree. Each method reports that it did nothing in every unusual case; the caller then uses the
 * natives of {@link Setting}.
 */
final class BoundKey {
    final long address;

    BoundKey(long address) {
        this.address = address;
    }

    /**
     * Reads a value.
     *
     * @param kind a number of {@link ValueKinds}, or 0
     * @param level a level's number in {@link NativeLane}
     * @param type the class of the result: that of the kind, or the primitive array for it
     * @return the value; null if nothing was read
     */
    Object get(int kind, int level, Class<?> type) {
        if (kind == 0)
            return null;
        if (kind == ValueKinds.STRING)
            return NativeLane.getText(address, level);
        if (ValueKinds.isArray(kind)) {
            Object array = NativeLane.getArray(address, kind, level);
            return array == null || type.isInstance(array) ? array
                                                           : PrimitiveArrays.boxed(array, kind);
        }
        long bits = NativeLane.getNumber(address, kind, level);
        return bits == NativeLane.NOT_DONE ? null : number(kind, bits);
    }

    /**
     * Sets a value or, if the transaction context is not 0, records it.
     *
     * @param kind the kind of the value's class, or 0
     * @return false if nothing was set or recorded
     */
    boolean set(long context, int kind, int level, Object value) {
        if (kind == 0)
            return false;
        if (value instanceof String text)
            return NativeLane.setText(context, address, level, text);
        if (!ValueKinds.isArray(kind))
            return NativeLane.setNumber(context, address, kind, level, bits(value));
        Object array = value;
        if (value instanceof Object[] elements) {
            if (Arrays.asList(elements).contains(null))
                return false;
            if (!(value instanceof String[]))
                array = PrimitiveArrays.unboxed(elements, kind);
        }
        return NativeLane.setArray(context, address, kind, level, array);
    }

    /** Removes the value from a level; returns false if nothing was removed. */
    boolean unset(int level) {
        return NativeLane.unset(address, level);
    }

    private static Object number(int kind, long bits) {
        return switch (kind) {
            case ValueKinds.BOOLEAN -> bits != 0;
            case ValueKinds.BYTE -> (byte) bits;
            case ValueKinds.UNSIGNED_BYTE -> new UnsignedByte((byte) bits);
            case ValueKinds.SHORT -> (short) bits;
            case ValueKinds.UNSIGNED_SHORT -> new UnsignedShort((short) bits);
            case ValueKinds.INTEGER -> (int) bits;
            case ValueKinds.UNSIGNED_INTEGER -> new UnsignedInteger((int) bits);
            case ValueKinds.LONG -> bits;
            case ValueKinds.UNSIGNED_LONG -> new UnsignedLong(bits);
            case ValueKinds.FLOAT -> Float.intBitsToFloat((int) bits);
            case ValueKinds.DOUBLE -> Double.longBitsToDouble(bits);
            default -> throw new IllegalArgumentException("kind " + kind);
        };
    }

    private static long bits(Object value) {
        if (value instanceof Boolean flag)
            return flag ? 1 : 0;
        if (value instanceof Double number)
            return Double.doubleToRawLongBits(number);
        if (value instanceof Float number)
            return Float.floatToRawIntBits(number);
        return ((Number) value).longValue();
    }
}
