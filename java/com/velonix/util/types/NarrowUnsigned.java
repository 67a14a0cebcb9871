package com.velonix.util.types;

/** What the unsigned numbers that fit into a {@code long} have in common: all but their width. */
abstract class NarrowUnsigned<T extends NarrowUnsigned<T>> extends Number implements Comparable<T> {
    private static final long serialVersionUID = 1;

    NarrowUnsigned() {}

    /** The value itself, when it is in the range 0 to max. */
    static long checked(long value, long max) {
        if (value < 0 || value > max) {
            throw new IllegalArgumentException(value + " is outside 0.." + max);
        }
        return value;
    }

    /** The value of a decimal text, when it is in the range 0 to max. */
    static long parsed(String text, long max) {
        long value = Long.parseLong(text);
        if (value < 0 || value > max) {
            throw new NumberFormatException(text + " is outside 0.." + max);
        }
        return value;
    }

    /** The unsigned number. */
    @Override public abstract long longValue();

    /** The low 32 bits, negative for numbers above 2147483647. */
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

    /** The number in decimal. */
    @Override
    public String toString() {
        return Long.toString(longValue());
    }
}
