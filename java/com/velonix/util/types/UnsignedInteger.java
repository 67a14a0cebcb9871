package com.velonix.util.types;

/** An unsigned integer of 32 bits, 0 to 4294967295. Immutable. */
public final class UnsignedInteger extends Number implements Comparable<UnsignedInteger> {
    private static final long serialVersionUID = 1;

    /** The smallest value, 0. */
    public static final UnsignedInteger MIN_VALUE = new UnsignedInteger(0);

    /** The largest value, 4294967295. */
    public static final UnsignedInteger MAX_VALUE = new UnsignedInteger(-1);

    /** The bits of the number. */
    private final int bits;

    /**
     * Takes the bits of a signed number of the same width as an unsigned number.
     *
     * @param bits the bits; -1 gives {@link #MAX_VALUE}
     */
    public UnsignedInteger(int bits) {
        this.bits = bits;
    }

    /**
     * The unsigned number of that value.
     *
     * @param value 0 to 4294967295
     * @return the number
     * @throws IllegalArgumentException if the value is out of range
     */
    public static UnsignedInteger valueOf(long value) {
        if (value < 0 || value > 0xFFFFFFFFL) {
            throw new IllegalArgumentException(value + " is outside 0..4294967295");
        }
        return new UnsignedInteger((int) value);
    }

    /**
     * Reads a decimal number.
     *
     * @param text digits, with an optional plus sign
     * @return the number
     * @throws NumberFormatException if the text is no number from 0 to 4294967295
     */
    public static UnsignedInteger parse(String text) {
        long value = Long.parseLong(text);
        if (value < 0 || value > 0xFFFFFFFFL) {
            throw new NumberFormatException(text + " is outside 0..4294967295");
        }
        return new UnsignedInteger((int) value);
    }

    /** The low 32 bits, negative for numbers above 2147483647. */
    @Override
    public int intValue() {
        return bits;
    }

    /** The unsigned number. */
    @Override
    public long longValue() {
        return Integer.toUnsignedLong(bits);
    }

    @Override
    public float floatValue() {
        return longValue();
    }

    @Override
    public double doubleValue() {
        return longValue();
    }

    @Override
    public int compareTo(UnsignedInteger other) {
        return Integer.compareUnsigned(bits, other.bits);
    }

    @Override
    public boolean equals(Object other) {
        return other instanceof UnsignedInteger && ((UnsignedInteger) other).bits == bits;
    }

    @Override
    public int hashCode() {
        return Integer.hashCode(bits);
    }

    /** The number in decimal. */
    @Override
    public String toString() {
        return Long.toString(longValue());
    }
}
