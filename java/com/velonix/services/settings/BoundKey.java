package com.velonix.services.settings;

import com.velonix.util.types.UnsignedByte;
import com.velonix.util.types.UnsignedInteger;
import com.velonix.util.types.UnsignedLong;
import com.velonix.util.types.UnsignedShort;

/**
 * A key that native code has looked up, so that values pass as they are: no path, no SettingInfo.
 * Owned by the {@link SharedTree}, shared by all settings of the key, and used within its calls
 * only. What is out of the ordinary is not done, and left to the natives of {@link Setting}.
 */
final class BoundKey {
    final long address;

    BoundKey(long address) {
        this.address = address;
    }

    /**
     * Reads a value.
     *
     * @param kind of {@link ValueKinds}; 0 for none of them
     * @param level of {@link NativeLane}
     * @param type the class of the value: that of the kind, or a primitive array in its place
     * @return null when that was not done
     */
    Object get(int kind, int level, Class<?> type) {
        if (kind == 0)
            return null;
        if (kind == ValueKinds.STRING)
            return NativeLane.getText(address, level);
        if (ValueKinds.isArray(kind)) {
            Object array = NativeLane.getArray(address, kind, level);
            return array == null || type.isInstance(array) ? array
                                                           : PrimitiveArrays.boxed(array, type);
        }
        long bits = NativeLane.getNumber(address, kind, level);
        return bits == NativeLane.NOT_DONE ? null : number(kind, bits);
    }

    /**
     * Sets a value or, with a transaction context that is not 0, records it.
     *
     * @param kind that of the value's class, or 0
     * @return false when that was not done
     */
    boolean set(long context, int kind, int level, Object value) {
        if (kind == 0)
            return false;
        if (value instanceof String text)
            return NativeLane.setText(context, address, level, text);
        if (!ValueKinds.isArray(kind))
            return NativeLane.setNumber(context, address, kind, level, bits(value));
        Object array = PrimitiveArrays.unboxed(value);
        return array != null && NativeLane.setArray(context, address, kind, level, array);
    }

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
