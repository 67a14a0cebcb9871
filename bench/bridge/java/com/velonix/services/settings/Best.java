package com.velonix.services.settings;

import java.nio.ByteBuffer;

/**
 * The best floor: the same work in the fastest way that was seen to be possible. Few crossings,
 * each doing much: one call into Java hands all arguments over in a buffer of the thread, another
 * builds the whole answer. ASCII names and ints, texts and doubles only, so it is a floor and no
 * bridge.
 */
final class Best {
    private static final int INT = 7, TEXT = 1, DOUBLES = 24;

    private Best() {}

    static native void prepare();

    static native SettingInfo get(long tree, String[] path, String key, String level);

    static native void set(long tree, String[] path, String key, SettingInfo value, String level);

    static native String[] children(long tree, String[] path);

    // The following are called by the natives above.

    /** Writes the number of names, then each name and the level with its length before it. */
    static int arguments(ByteBuffer out, String[] path, String key, String level) {
        int at = 0;
        out.put(at++, (byte) (key == null ? path.length : path.length + 1));
        for (String name : path) at = write(out, at, name);
        if (key != null)
            at = write(out, at, key);
        return level == null ? write(out, at, "") : write(out, at, level);
    }

    /** The same with the value: its kind after the level, then an int; a long value is returned. */
    static Object setArguments(
            ByteBuffer out, String[] path, String key, SettingInfo info, String level) {
        int at = arguments(out, path, key, level);
        Object value = info.getValue();
        if (value instanceof Integer number) {
            out.put(at, (byte) INT);
            out.putInt(at + 1, number);
            return null;
        }
        if (value instanceof Double[] items) {
            out.put(at, (byte) DOUBLES);
            double[] unboxed = new double[items.length];
            for (int i = 0; i < items.length; ++i) unboxed[i] = items[i];
            return unboxed;
        }
        out.put(at, (byte) TEXT);
        return value;
    }

    static SettingInfo infoOf(int value) {
        return new SettingInfo((Object) value);
    }

    static SettingInfo infoOf(String value) {
        return new SettingInfo(value);
    }

    static SettingInfo infoOf(double[] values) {
        Double[] boxed = new Double[values.length];
        for (int i = 0; i < values.length; ++i) boxed[i] = values[i];
        return new SettingInfo(boxed);
    }

    static void deliver(SettingListener listener, Object source, String[] path, String name) {
        SettingChangeEvent event = listener.createEvent(source, path.clone(), name, null, false);
        if (event != null)
            listener.settingChanged(event);
    }

    /** Names that end with a newline each. */
    static String[] split(String joined, int count) {
        String[] names = new String[count];
        int begin = 0;
        for (int i = 0; i < count; ++i) {
            int end = joined.indexOf('\n', begin);
            names[i] = joined.substring(begin, end);
            begin = end + 1;
        }
        return names;
    }

    private static int write(ByteBuffer out, int at, String text) {
        int length = text.length();
        out.put(at++, (byte) length);
        for (int i = 0; i < length; ++i) out.put(at + i, (byte) text.charAt(i));
        return at + length;
    }
}
