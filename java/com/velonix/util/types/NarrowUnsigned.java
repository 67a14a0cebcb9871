package com.velonix.util.types;

/** The base of the unsigned numbers that fit into a {@code long}. */
abstract class NarrowUnsigned<T extends NarrowUnsigned<T>> extends Number implements Comparable<T> {
    private static final long serialVersionUID = 1;

    NarrowUnsigned() {}

    /** Returns the value. Throws IllegalArgumentException if it is outside 0 to max. */
    static long checked(long value, long max) {
        if (value < 0 || value > max) {
            throw new IllegalArgumentException(value + " is outside 0.." + max);
        }
        return value;
    }

    /**
     * Returns the value of a decimal text. Throws NumberFormatException if it is outside 0 to max.
     */
    static long parsed(String text, long max) {
        long value = Long.parseLong(text);
        if (value < 0 || value > max) {
            throw new NumberFormatException(text + " is outside 0.." + max);
        }
        return value;
    }

    /** Returns the unsigned number. */
    @Override public abstract long longValue();

    /** Returns the low 32 bits, which are negative for numbers above 2147483647. */
    @Override
    public int intValue() {
        return (int) longValue();
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
    public int compareTo(T other) {
        return Long.compare(longValue(), other.longValue());
    }

    @Override
    public boolean equals(Object other) {
        return other != null && other.getClass() == getClass()
                && ((NarrowUnsigned<?>) other).longValue() == longValue();
    }

    @Override
    public int hashCode() {
        return Long.hashCode(longValue());
    }

    /** Returns the number in decimal. */
    @Override
    public String toString() {
        return Long.toString(longValue());
    }
}
