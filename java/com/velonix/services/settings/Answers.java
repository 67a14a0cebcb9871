package com.velonix.services.settings;

import com.velonix.util.types.UnsignedByte;
import com.velonix.util.types.UnsignedInteger;
import com.velonix.util.types.UnsignedLong;
import com.velonix.util.types.UnsignedShort;

/**
 * What native code hands to Java: values, lists of names, events, each in one call from the native
 * side. Called by native code only (values/java_from_native.cpp, nativesettings/).
 */
final class Answers {
    private Answers() {}

    /** A value that is no text, from its kind and its bits (values/java_from_native.cpp). */
    static Object box(int kind, long bits) {
        return switch (kind) {
            case ValueKinds.BOOLEAN -> bits != 0;
            case ValueKinds.BYTE -> (byte) bits;
            case ValueKinds.UNSIGNED_BYTE -> new UnsignedByte((byte) bits);
            case ValueKinds.SHORT -> (short) bits;
            case ValueKinds.UNSIGNED_SHORT -> new UnsignedShort((short) bits);
            case ValueKinds.INTEGER -> (int) bits;
            case ValueKinds.UNSIGNED_INTEGER -> new UnsignedInteger((int) bits);
            case ValueKinds.LONG -> bits;
            case ValueKinds.UNSIGNED_LONG -> new UnsignedLong(bits);
            case ValueKinds.FLOAT -> Float.intBitsToFloat((int) bits);
            case ValueKinds.DOUBLE -> Double.longBitsToDouble(bits);
            default -> throw new IllegalArgumentException("kind " + kind);
        };
    }

    /** An array of such values, of the class that belongs to the kind of its elements. */
    static Object[] boxAll(int kind, long[] bits) {
        int length = bits.length;
        return switch (kind) {
            // A loop for each class: a common one would decide for every element again.
            case ValueKinds.BOOLEAN -> {
                Boolean[] all = new Boolean[length];
                for (int i = 0; i < length; ++i) all[i] = bits[i] != 0;
                yield all;
            }
            case ValueKinds.BYTE -> {
                Byte[] all = new Byte[length];
                for (int i = 0; i < length; ++i) all[i] = (byte) bits[i];
                yield all;
            }
            case ValueKinds.UNSIGNED_BYTE -> {
                UnsignedByte[] all = new UnsignedByte[length];
                for (int i = 0; i < length; ++i) all[i] = new UnsignedByte((byte) bits[i]);
                yield all;
            }
            case ValueKinds.SHORT -> {
                Short[] all = new Short[length];
                for (int i = 0; i < length; ++i) all[i] = (short) bits[i];
                yield all;
            }
            case ValueKinds.UNSIGNED_SHORT -> {
                UnsignedShort[] all = new UnsignedShort[length];
                for (int i = 0; i < length; ++i) all[i] = new UnsignedShort((short) bits[i]);
                yield all;
            }
            case ValueKinds.INTEGER -> {
                Integer[] all = new Integer[length];
                for (int i = 0; i < length; ++i) all[i] = (int) bits[i];
                yield all;
            }
            case ValueKinds.UNSIGNED_INTEGER -> {
                UnsignedInteger[] all = new UnsignedInteger[length];
                for (int i = 0; i < length; ++i) all[i] = new UnsignedInteger((int) bits[i]);
                yield all;
            }
            case ValueKinds.LONG -> {
                Long[] all = new Long[length];
                for (int i = 0; i < length; ++i) all[i] = bits[i];
                yield all;
            }
            case ValueKinds.UNSIGNED_LONG -> {
                UnsignedLong[] all = new UnsignedLong[length];
                for (int i = 0; i < length; ++i) all[i] = new UnsignedLong(bits[i]);
                yield all;
            }
            case ValueKinds.FLOAT -> {
                Float[] all = new Float[length];
                for (int i = 0; i < length; ++i) all[i] = Float.intBitsToFloat((int) bits[i]);
                yield all;
            }
            case ValueKinds.DOUBLE -> {
                Double[] all = new Double[length];
                for (int i = 0; i < length; ++i) all[i] = Double.longBitsToDouble(bits[i]);
                yield all;
            }
            default -> throw new IllegalArgumentException("kind " + kind);
        };
    }

    /** {@link #box} in a SettingInfo. */
    static SettingInfo info(int kind, long bits) {
        return new SettingInfo(box(kind, bits));
    }

    /** A value that is there already in a SettingInfo. */
    static SettingInfo infoOf(Object value) {
        return new SettingInfo(value);
    }

    /** {@link #boxAll} in a SettingInfo. */
    static SettingInfo infoOfAll(int kind, long[] bits) {
        return new SettingInfo((Object) boxAll(kind, bits));
    }

    /** Names out of a text in which they are joined with dots. */
    static String[] names(String joined, int count) {
        String[] names = new String[count];
        int begin = 0;
        for (int i = 0; i < count; ++i) {
            int end = joined.indexOf('.', begin);
            if (end < 0)
                end = joined.length();
            names[i] = joined.substring(begin, end);
            begin = end + 1;
        }
        return names;
    }

    /**
     * Describes an event and has a listener hear of it. What the listener throws leaves this
     * method.
     *
     * @param place the entry's: names joined with dots, its own the last
     * @param above how many of them are above it
     * @return the description, for listeners of the same event that follow
     */
    static DeliveredEvent deliver(SettingListener listener, Object source, int kind, String place,
            int above, boolean isNode) {
        String name = place.substring(place.lastIndexOf('.') + 1);
        DeliveredEvent event = new DeliveredEvent(kind, names(place, above), name, isNode);
        event.deliver(listener, source);
        return event;
    }

    /** The same for a listener that follows. */
    static void deliverAgain(SettingListener listener, Object source, DeliveredEvent event) {
        event.deliver(listener, source);
    }
}
