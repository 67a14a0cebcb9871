package com.velonix.services.settings;

import java.lang.reflect.Array;

/**
 * An effective value, with the count of changes at which it was read. Immutable, so threads may
 * pass it to each other without synchronisation.
 */
final class CachedValue<T> {
    private final long count;
    private final T value;
    private final boolean isArray;
    private final boolean isMissing;

    /** Makes the entry of a key that does not exist. */
    static <T> CachedValue<T> missing(long count) {
        return new CachedValue<>(count, null, true);
    }

    /**
     * Makes the entry of a key that exists.
     *
     * @param count the count of the key's changes, taken before the value was read
     * @param value the value, or null if no level has one
     */
    CachedValue(long count, T value) {
        this(count, value, false);
    }

    private CachedValue(long count, T value, boolean isMissing) {
        this.count = count;
        this.value = value;
        this.isArray = value != null && value.getClass().isArray();
        this.isMissing = isMissing;
    }

    boolean isOfCount(long current) {
        return count == current;
    }

    /** Tells whether there was no key. */
    boolean isMissing() {
        return isMissing;
    }

    /** Returns the value; of an array a copy, because the caller may change it. */
    T value() {
        return isArray ? copyOfArray() : value;
    }

    @SuppressWarnings("unchecked")
    private T copyOfArray() {
        int length = Array.getLength(value);
        T copy = (T) Array.newInstance(value.getClass().getComponentType(), length);
        System.arraycopy(value, 0, copy, 0, length);
        return copy;
    }
}
