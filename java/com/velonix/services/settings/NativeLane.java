package com.velonix.services.settings;

import java.nio.ByteBuffer;

/**
 * Natives of this API's own, beside those of {@link Setting}, {@link SettingPath}, {@link
 * SettingLevel}, {@link SettingTransaction} and {@link SettingTestEnvironment}, which are the
 * contract between Java and the library. These here take plain arguments, and answer that nothing
 * was done whenever anything is out of the ordinary; the caller then uses a native of the contract,
 * which raises what there is to raise. {@code nativesettings/lane.h} is the other side.
 */
final class NativeLane {
    /** In place of a level: the value in effect. */
    static final int IN_EFFECT = -1;

    /** In place of a number. When it is the number itself, another way gives it. */
    static final long NOT_DONE = 0x7FF45E7712650DEBL;

    private NativeLane() {}

    /**
     * The memory of the service's change counters, which stays valid for ever.
     *
     * @return null when the settings service has no such counters
     */
    static native ByteBuffer changeCounters();

    /**
     * Whether the last native call of this thread did nothing because the Java machine is going
     * down.
     */
    static native boolean wasRefused();

    /**
     * Binds the key at a place below a root, whether it exists or not.
     *
     * @return the bound key, which {@link #release} ends; 0 when the service has no such thing
     */
    static native long bind(long root, String[] path, String key);

    /** Ends a bound key. No call on it may be under way. */
    static native void release(long key);

    /** The number by which the methods below know a level. */
    static native int levelOf(String level);

    /**
     * The bits of a number or a truth value.
     *
     * @param kind of {@link ValueKinds}
     * @return {@link #NOT_DONE} when there is no such key, or it has no value of the kind there
     */
    static native long getNumber(long key, int kind, int level);

    /** A text; null when there is no such key, or it has no text there. */
    static native String getText(long key, int level);

    /**
     * An array of texts, or of the primitive type that has the size of the kind's elements; null
     * when there is no such key, or it has no value of the kind there.
     */
    static native Object getArray(long key, int kind, int level);

    /**
     * Sets a number or a truth value or, with a transaction context that is not 0, records it.
     *
     * @return false when that was not done
     */
    static native boolean setNumber(long context, long key, int kind, int level, long bits);

    /** The same for a text. */
    static native boolean setText(long context, long key, int level, String text);

    /** The same for an array as {@link #getArray} gives it. */
    static native boolean setArray(long context, long key, int kind, int level, Object array);

    /**
     * Subscribes to the entry at a place below a root.
     *
     * @param key a child of the node at the path, or null for that node
     * @param listener hears of all events, as {@code nativesettings/lane_listeners.h} says
     * @return the subscription, which {@link #unlisten} ends; 0 when that was not done
     */
    static native long listen(long root, String[] path, String key, SharedListener listener);

    /** Ends a subscription. */
    static native void unlisten(long subscription);

    /** Whether the entry of a subscription still stands below its root. */
    static native boolean isListening(long subscription);

    /**
     * Removes the value from a level.
     *
     * @return false when that was not done
     */
    static native boolean unset(long key, int level);
}
