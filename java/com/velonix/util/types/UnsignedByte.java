package com.velonix.util.types;

/** An unsigned integer of 8 bits, 0 to 255. Immutable. */
public final class UnsignedByte extends NarrowUnsigned<UnsignedByte> {
    private static final long serialVersionUID = 1;
    private static final long MAX = 255;

    /** The smallest value, 0. */
    public static final UnsignedByte MIN_VALUE = new UnsignedByte((byte) 0);

    /** The largest value, 255. */
    public static final UnsignedByte MAX_VALUE = new UnsignedByte((byte) -1);

    /** The bits of the number. */
    private final byte bits;

    /**
     * Makes an unsigned number from the bits of a signed one of the same width.
     *
     * @param bits the bits; -1 gives {@link #MAX_VALUE}
     */
    public UnsignedByte(byte bits) {
        this.bits = bits;
    }

    /**
     * Returns the unsigned number with a value.
     *
     * @param value 0 to 255
     * @return the number
     * @throws IllegalArgumentException if the value is out of range
     */
    public static UnsignedByte valueOf(int value) {
        return new UnsignedByte((byte) checked(value, MAX));
    }

    /**
     * Parses a decimal number.
     *
     * @param text digits, with an optional plus sign
     * @return the number
     * @throws NumberFormatException if the text is no number from 0 to 255
     */
    public static UnsignedByte parse(String text) {
        return new UnsignedByte((byte) parsed(text, MAX));
    }

    /** Returns the unsigned number. */
    @Override
    public long longValue() {
        return Byte.toUnsignedLong(bits);
    }
}
