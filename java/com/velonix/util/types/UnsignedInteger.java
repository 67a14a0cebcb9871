package com.velonix.util.types;

/** An unsigned integer of 32 bits, 0 to 4294967295. Immutable. */
public final class UnsignedInteger extends NarrowUnsigned<UnsignedInteger> {
    private static final long serialVersionUID = 1;
    private static final long MAX = 4294967295L;

    /** The smallest value, 0. */
    public static final UnsignedInteger MIN_VALUE = new UnsignedInteger(0);

    /** The largest value, 4294967295. */
    public static final UnsignedInteger MAX_VALUE = new UnsignedInteger(-1);

    /** The bits of the number. */
    private final int bits;

    /**
     * Makes an unsigned number from the bits of a signed one of the same width.
     *
     * @param bits the bits; -1 gives {@link #MAX_VALUE}
     */
    public UnsignedInteger(int bits) {
        this.bits = bits;
    }

    /**
     * Returns the unsigned number with a value.
     *
     * @param value 0 to 4294967295
     * @return the number
     * @throws IllegalArgumentException if the value is out of range
     */
    public static UnsignedInteger valueOf(long value) {
        return new UnsignedInteger((int) checked(value, MAX));
    }

    /**
     * Parses a decimal number.
     *
     * @param text digits, with an optional plus sign
     * @return the number
     * @throws NumberFormatException if the text is no number from 0 to 4294967295
     */
    public static UnsignedInteger parse(String text) {
        return new UnsignedInteger((int) parsed(text, MAX));
    }

    /** Returns the unsigned number. */
    @Override
    public long longValue() {
        return Integer.toUnsignedLong(bits);
    }
}
