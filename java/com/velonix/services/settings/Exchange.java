package com.velonix.services.settings;

import java.nio.ByteBuffer;
import java.nio.ByteOrder;

/**
 * What Java hands to native code: arguments and values, written into memory that both see, so that
 * one call from the native side brings all of them. Called by native code only (values/exchange.h,
 * which reads what is written here).
 *
 * <p>Each thread has a buffer of its own, whose first eight bytes hold its address once native code
 * has noted it there; the next eight count for {@link #asked}. A text is its length in bytes and
 * then those bytes, in modified UTF-8.
 */
final class Exchange {
    private static final int ASKED = Long.BYTES;
    private static final int START = 2 * Long.BYTES;
    private static final int USUAL_SIZE = 4096;

    /**
     * In place of a kind: the value's class is none of the kinds; there is no value; the value has
     * to be asked for by {@link #value}.
     */
    private static final int OTHER_CLASS = 0, NULL_VALUE = -1, ASK_FOR_IT = -2;

    /** In place of an address: the value could not be read. */
    private static final long FAILED = -1;

    private static final Buffers BUFFERS = new Buffers();

    /**
     * What threads refer to are the values, which are of no class of ours: a thread would keep it
     * from being unloaded.
     */
    private static final class Buffers extends ThreadLocal<ByteBuffer> {
        @Override
        protected ByteBuffer initialValue() {
            return newBuffer(USUAL_SIZE);
        }
    }

    private Exchange() {}

    /** The calling thread's buffer, for native code to note its address. */
    static ByteBuffer buffer() {
        return BUFFERS.get();
    }

    /**
     * How often native code has asked this thread for the arguments of a call. A native method of
     * which it depends whether the machine is going down decides that first; when it then does
     * anything, it asks, and when it refuses it does nothing else either. So a call during which
     * this number has grown was let in, whenever the machine began to go down, and one during
     * which it has stayed the same was refused. Calls that listeners make meanwhile add to it only
     * in one that was let in.
     */
    static long asked() {
        return BUFFERS.get().getLong(ASKED);
    }

    /**
     * Writes the names of a path (none for null), a key's name and a level's (empty for null).
     *
     * @return the buffer's address, or 0 when it is not known yet
     */
    static long arguments(String[] path, String key, String level) {
        ByteBuffer out = bufferFor(path, key, level);
        writeArguments(out, path, key, level);
        return out.getLong(0);
    }

    /**
     * The same, and after the arguments the value of a SettingInfo. It has to be asked for when the
     * SettingInfo is of a class of somebody else's, whose getValue() may do anything, and when it
     * could not be written.
     */
    static long change(String[] path, String key, String level, SettingInfo info) {
        ByteBuffer out = bufferFor(path, key, level);
        int end = writeArguments(out, path, key, level);
        try {
            if (info != null && info.getClass() == SettingInfo.class) {
                Object value = info.getValue();
                return write(out, end, value, value != null ? value.getClass() : info.getType());
            }
        } catch (Throwable failed) {
            // Fails again when it is asked for, and is told then.
        }
        // What failed may have left the thread another buffer.
        return head(withRoom(BUFFERS.get(), end, end + 2 * Integer.BYTES), end, ASK_FOR_IT, 0);
    }

    private static ByteBuffer bufferFor(String[] path, String key, String level) {
        int names = path == null ? 0 : path.length;
        long needed = START + Integer.BYTES + mostBytes(key) + mostBytes(level);
        for (int i = 0; i < names; ++i) needed += mostBytes(path[i]);
        ByteBuffer out = withRoom(BUFFERS.get(), START, needed);
        out.putLong(ASKED, out.getLong(ASKED) + 1);
        return out;
    }

    /** Gives the place behind what was written. */
    private static int writeArguments(ByteBuffer out, String[] path, String key, String level) {
        int names = path == null ? 0 : path.length;
        out.putInt(START, names);
        int at = START + Integer.BYTES;
        for (int i = 0; i < names; ++i) at = write(out, at, path[i]);
        at = write(out, at, key);
        return write(out, at, level);
    }

    /**
     * Writes the value of a SettingInfo, as {@link #write(Object, Class)} does. What its getValue()
     * throws leaves this method; no other failure does.
     */
    static long value(SettingInfo info) {
        Object value = info.getValue();
        try {
            return write(value, value != null ? value.getClass() : info.getType());
        } catch (Throwable failed) {
            return FAILED;
        }
    }

    /**
     * Writes a value: its kind, the number of its elements, the elements.
     *
     * @param value of any class, or null
     * @param type the class that the value has or, for null, would have
     * @return the buffer's address, or 0 when it is not known yet
     */
    static long write(Object value, Class<?> type) {
        return write(BUFFERS.get(), START, value, type);
    }

    private static long write(ByteBuffer out, int from, Object value, Class<?> type) {
        int kind = type == null ? OTHER_CLASS : ValueKinds.of(type);
        if (kind != OTHER_CLASS && value == null)
            kind = NULL_VALUE;
        if (kind <= 0)
            return head(withRoom(out, from, from + 2 * Integer.BYTES), from, kind, 0);
        return value instanceof Object[] elements ? writeAll(out, from, kind, elements)
                : value instanceof String text    ? writeTexts(out, from, kind, text)
                                                  : writeNumber(out, from, kind, value);
    }

    private static long writeAll(ByteBuffer given, int from, int kind, Object[] elements) {
        for (Object element : elements) {
            if (element == null)
                return head(withRoom(given, from, from + 2 * Integer.BYTES), from, NULL_VALUE, 0);
        }
        if (elements instanceof String[] texts)
            return writeTexts(given, from, kind, texts);
        int at = from + 2 * Integer.BYTES;
        ByteBuffer out = withRoom(given, from, at + (long) elements.length * Long.BYTES);
        if (elements instanceof Double[] doubles) {
            for (int i = 0; i < doubles.length; ++i) out.putDouble(at + i * Long.BYTES, doubles[i]);
        } else {
            for (int i = 0; i < elements.length; ++i)
                out.putLong(at + i * Long.BYTES, bits(elements[i]));
        }
        return head(out, from, kind, elements.length);
    }

    private static long writeNumber(ByteBuffer given, int from, int kind, Object value) {
        int at = from + 2 * Integer.BYTES;
        ByteBuffer out = withRoom(given, from, at + Long.BYTES);
        out.putLong(at, bits(value));
        return head(out, from, kind, 1);
    }

    private static long writeTexts(ByteBuffer given, int from, int kind, String... texts) {
        int at = from + 2 * Integer.BYTES;
        long needed = at;
        for (String text : texts) needed += mostBytes(text);
        ByteBuffer out = withRoom(given, from, needed);
        for (String text : texts) at = write(out, at, text);
        return head(out, from, kind, texts.length);
    }

    private static long head(ByteBuffer out, int from, int kind, int elements) {
        out.putInt(from, kind);
        out.putInt(from + Integer.BYTES, elements);
        return out.getLong(0);
    }

    /**
     * A whole number sign-extended, an unsigned one zero-extended, the bits of a float or double.
     */
    private static long bits(Object value) {
        if (value instanceof Boolean flag)
            return flag ? 1 : 0;
        if (value instanceof Double number)
            return Double.doubleToRawLongBits(number);
        if (value instanceof Float number)
            return Float.floatToRawIntBits(number);
        return ((Number) value).longValue();
    }

    /**
     * The thread's buffer, or another one in its place, with room for so many bytes; what stands
     * before `from` is kept, but for the address.
     */
    private static ByteBuffer withRoom(ByteBuffer buffer, int from, long needed) {
        if (needed > buffer.capacity() || buffer.capacity() > USUAL_SIZE && needed <= USUAL_SIZE) {
            // A buffer for something large is not kept for longer than it is needed.
            ByteBuffer other = newBuffer(Math.max(Math.toIntExact(needed), USUAL_SIZE));
            other.put(ASKED, buffer, ASKED, from - ASKED);
            BUFFERS.set(other);
            return other;
        }
        return buffer;
    }

    private static ByteBuffer newBuffer(int size) {
        return ByteBuffer.allocateDirect(size).order(ByteOrder.nativeOrder());
    }

    private static long mostBytes(String text) {
        return Integer.BYTES + (text == null ? 0 : 3L * text.length());
    }

    private static int write(ByteBuffer out, int at, String text) {
        int begin = at + Integer.BYTES;
        int end = begin;
        int length = text == null ? 0 : text.length();
        for (int i = 0; i < length; ++i) {
            char unit = text.charAt(i);
            if (unit != 0 && unit < 0x80) {
                out.put(end++, (byte) unit);
            } else if (unit < 0x800) {
                out.put(end++, (byte) (0xC0 | unit >> 6));
                out.put(end++, (byte) (0x80 | unit & 0x3F));
            } else {
                out.put(end++, (byte) (0xE0 | unit >> 12));
                out.put(end++, (byte) (0x80 | unit >> 6 & 0x3F));
                out.put(end++, (byte) (0x80 | unit & 0x3F));
            }
        }
        out.putInt(at, end - begin);
        return end;
    }
}
