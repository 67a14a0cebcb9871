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
     * Takes the bits of a signed number of the same width as an unsigned number.
     *
     * @param bits the bits; -1 gives {@link #MAX_VALUE}
     */
    public UnsignedLong(long bits) {
        this.bits = bits;
    }

    /**
     * The unsigned number of that value.
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
     * The unsigned number of that value.
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
     * Reads a decimal number.
     *
     * @param text digits, with an optional plus sign
     * @return the number
     * @throws NumberFormatException if the text is no number from 0 to 18446744073709551615
     */
    public static UnsignedLong parse(String text) {
        return new UnsignedLong(Long.parseUnsignedLong(text));
    }

    /** The low 32 bits. */
    @Override
    public int intValue() {
        return (int) bits;
    }

    /** The 64 bits; a negative number stands for one above 9223372036854775807. */
    @Override
    public long longValue() {
        return bits;
    }

    /**
     * The unsigned number, whatever its size.
     *
     * @return 0 to 18446744073709551615
     */
    public BigInteger bigIntegerValue() {
        BigInteger value = BigInteger.valueOf(bits);
        return bits < 0 ? value.add(BigInteger.ONE.shiftLeft(Long.SIZE)) : value;
    }

    /** The nearest float. */
    @Override
    public float floatValue() {
        // Half the number, with the lost bit kept as a sticky bit, rounds as the number itself.
        return bits < 0 ? 2f * (bits >>> 1 | bits & 1) : bits;
    }

    /** The nearest double. */
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

    /** The number in decimal. */
    @Override
    public String toString() {
        return Long.toUnsignedString(bits);
    }
}
