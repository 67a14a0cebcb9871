package com.velonix.util.types;

/** An unsigned integer of 16 bits, 0 to 65535. Immutable. */
public final class UnsignedShort extends Number implements Comparable<UnsignedShort> {
    private static final long serialVersionUID = 1;

    /** The smallest value, 0. */
    public static final UnsignedShort MIN_VALUE = new UnsignedShort((short) 0);

    /** The largest value, 65535. */
    public static final UnsignedShort MAX_VALUE = new UnsignedShort((short) -1);

    /** The bits of the number. */
    private final short bits;

    /**
     * Takes the bits of a signed number of the same width as an unsigned number.
     *
     * @param bits the bits; -1 gives {@link #MAX_VALUE}
     */
    public UnsignedShort(short bits) {
        this.bits = bits;
    }

    /**
     * The unsigned number of that value.
     *
     * @param value 0 to 65535
     * @return the number
     * @throws IllegalArgumentException if the value is out of range
     */
    public static UnsignedShort valueOf(int value) {
        if (value < 0 || value > 65535) {
            throw new IllegalArgumentException(value + " is outside 0..65535");
        }
        return new UnsignedShort((short) value);
    }

    /**
     * Reads a decimal number.
     *
     * @param text digits, with an optional plus sign
     * @return the number
     * @throws NumberFormatException if the text is no number from 0 to 65535
     */
    public static UnsignedShort parse(String text) {
        long value = Long.parseLong(text);
        if (value < 0 || value > 65535) {
            throw new NumberFormatException(text + " is outside 0..65535");
        }
        return new UnsignedShort((short) value);
    }

    @Override
    public int intValue() {
        return Short.toUnsignedInt(bits);
    }

    /** The unsigned number. */
    @Override
    public long longValue() {
        return Short.toUnsignedLong(bits);
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
    public int compareTo(UnsignedShort other) {
        return Short.compareUnsigned(bits, other.bits);
    }

    @Override
    public boolean equals(Object other) {
        return other instanceof UnsignedShort && ((UnsignedShort) other).bits == bits;
    }

    @Override
    public int hashCode() {
        return Short.hashCode(bits);
    }

    /** The number in decimal. */
    @Override
    public String toString() {
        return Long.toString(longValue());
    }
}
