package com.velonix.services.settings;

import java.lang.reflect.Array;

/**
 * A value in effect that was read from the tree, with the count under which it holds. Immutable, so
 * that it may pass between threads without any order.
 */
final class CachedValue<T> {
    private final long count;
    private final T value;
    private final boolean isArray;
    private final boolean isMissing;

    /** Keeps that there is no key. */
    static <T> CachedValue<T> missing(long count) {
        return new CachedValue<>(count, null, true);
    }

    /**
     * Keeps a value.
     *
     * @param count the count at the key's place before the value was read
     * @param value the value, or null when no level has one
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

    boolean holdsUnder(long now) {
        return count == now;
    }

    /** Whether there was no key. */
    boolean isMissing() {
        return isMissing;
    }

    /** The value for a caller, who may write into an array. */
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
