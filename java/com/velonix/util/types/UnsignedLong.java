package com.velonix.util.types;

import java.math.BigInteger;

/** An unsigned integer of 64 bits, 0 to 18446744073709551615. Immutable. */
public final class UnsignedLong extends Number implements Comparable<UnsignedLong> {
    private static final long serialVersionUID = 1;

    /** The smallest value, 0. */
    public static final UnsignedLong MIN_VALUE = new UnsignedLong(0);

    /** The largest value, 18446744073709551615. */
    public static final UnsignedLong MAX_VALUE = new UnsignedLong(-1);

    /** The bits of the number. */
    private final long bits;

    /**
     * Makes an unsigned number from the bits of a signed one of the same width.
     *
     * @param bits the bits; -1 gives {@link #MAX_VALUE}
     */
    public UnsignedLong(long bits) {
        this.bits = bits;
    }

    /**
     * Returns the unsigned number with a value.
     *
     * @param value 0 to 9223372036854775807
     * @return the number
     * @throws IllegalArgumentException if the value is negative
     */
    public static UnsignedLong valueOf(long value) {
        if (value < 0)
            throw new IllegalArgumentException(value + " is negative");
        return new UnsignedLong(value);
    }

    /**
     * Returns the unsigned number with a value.
     *
     * @param value 0 to 18446744073709551615
     * @return the number
     * @throws IllegalArgumentException if the value is out of range
     */
    public static UnsignedLong valueOf(BigInteger value) {
        if (value.signum() < 0 || value.bitLength() > Long.SIZE) {
            throw new IllegalArgumentException(value + " is outside 0.." + MAX_VALUE);
        }
        return new UnsignedLong(value.longValue());
    }

    /**
     * Parses a decimal number.
     *
     * @param text digits, with an optional plus sign
     * @return the number
     * @throws NumberFormatException if the text is no number from 0 to 18446744073709551615
     */
    public static UnsignedLong parse(String text) {
        return new UnsignedLong(Long.parseUnsignedLong(text));
    }

    /** Returns the low 32 bits. */
    @Override
    public int intValue() {
        return (int) bits;
    }

    /** Returns the 64 bits, which are negative for numbers above 9223372036854775807. */
    @Override
    public long longValue() {
        return bits;
    }

    /**
     * Returns the unsigned number.
     *
     * @return 0 to 18446744073709551615
     */
    public BigInteger bigIntegerValue() {
        BigInteger value = BigInteger.valueOf(bits);
        return bits < 0 ? value.add(BigInteger.ONE.shiftLeft(Long.SIZE)) : value;
    }

    /** Returns the nearest float. */
    @Override
    public float floatValue() {
        // Half the number, with the lost bit as a sticky bit, rounds like the number itself.
        return bits < 0 ? 2f * (bits >>> 1 | bits & 1) : bits;
    }

    /** Returns the nearest double. */
    @Override
    public double doubleValue() {
        return bits < 0 ? 2d * (bits >>> 1 | bits & 1) : bits;
    }

    @Override
    public int compareTo(UnsignedLong other) {
        return Long.compareUnsigned(bits, other.bits);
    }

    @Override
    public boolean equals(Object other) {
        return other instanceof UnsignedLong && ((UnsignedLong) other).bits == bits;
    }

    @Override
    public int hashCode() {
        return Long.hashCode(bits);
    }

    /** Returns the number in decimal. */
    @Override
    public String toString() {
        return Long.toUnsignedString(bits);
    }
}
