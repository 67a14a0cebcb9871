package com.velonix.util.types;

/** An unsigned integer of 16 bits, 0 to 65535. Immutable. */
public final class UnsignedShort extends NarrowUnsigned<UnsignedShort> {
    private static final long serialVersionUID = 1;
    private static final long MAX = 65535;

    /** The smallest value, 0. */
    public static final UnsignedShort MIN_VALUE = new UnsignedShort((short) 0);

    /** The largest value, 65535. */
    public static final UnsignedShort MAX_VALUE = new UnsignedShort((short) -1);

    /** The bits of the number. */
    private final short bits;

    /**
     * Makes an unsigned number from the bits of a signed one of the same width.
     *
     * @param bits the bits; -1 gives {@link #MAX_VALUE}
     */
    public UnsignedShort(short bits) {
        this.bits = bits;
    }

    /**
     * Returns the unsigned number with a value.
     *
     * @param value 0 to 65535
     * @return the number
     * @throws IllegalArgumentException if the value is out of range
     */
    public static UnsignedShort valueOf(int value) {
        return new UnsignedShort((short) checked(value, MAX));
    }

    /**
     * Parses a decimal number.
     *
     * @param text digits, with an optional plus sign
     * @return the number
     * @throws NumberFormatException if the text is no number from 0 to 65535
     */
    public static UnsignedShort parse(String text) {
        return new UnsignedShort((short) parsed(text, MAX));
    }

    /** Returns the unsigned number. */
    @Override
    public long longValue() {
        return Short.toUnsignedLong(bits);
    }
}
