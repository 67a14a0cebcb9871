package com.velonix.services.settings;

import java.lang.invoke.MethodHandles;
import java.lang.invoke.VarHandle;
import java.nio.ByteBuffer;
import java.nio.ByteOrder;

/**
 * The change counters of the settings service, read directly in the service's memory. A cached
 * value is current as long as its counter has not moved. {@code service/change_counters.h} has the
 * guarantees of the service.
 */
final class ChangeCounters {
    private static final ByteBuffer MEMORY = NativeLane.changeCounters();
    private static final VarHandle LONGS =
            MethodHandles.byteBufferViewVarHandle(long[].class, ByteOrder.nativeOrder());

    private ChangeCounters() {}

    /** Tells whether the service has counters; without them nothing may be cached. */
    static boolean exist() {
        return MEMORY != null;
    }

    /** Returns the offset of a key's counter, for {@link #count}; a null node is the root. */
    static int offset(String node, String key) {
        int mixed = 31 * hash(key) + (node == null ? 0 : hash(node));
        return (mixed * 0x9E3779B9 >>> 20) * Long.BYTES;
    }

    /** Returns the offset of the counter of a node's list of children; a null node is the root. */
    static int offsetOfList(String node) {
        return offset(node, "");
    }

    /** Returns the count at an offset. Later reads of the tree see at least the changes counted. */
    static long count(int offset) {
        return (long) LONGS.getAcquire(MEMORY, offset);
    }

    private static int hash(String name) {
        int length = name.length();
        if (length >= 4)
            return word(name, 0, 4) * 37 + word(name, length - 4, length) + 7 * length;
        return word(name, 0, length) * 38 + 7 * length;
    }

    private static int word(String name, int begin, int end) {
        int word = 0;
        // No entry has a name with other characters than ASCII, so the rest may collide.
        for (int i = begin; i < end; ++i) word = word << 8 | name.charAt(i) & 0xFF;
        return word;
    }
}
