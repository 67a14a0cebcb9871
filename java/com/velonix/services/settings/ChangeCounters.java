package com.velonix.services.settings;

import java.lang.invoke.MethodHandles;
import java.lang.invoke.VarHandle;
import java.nio.ByteBuffer;
import java.nio.ByteOrder;

/**
 * The settings service's counters of changes, in the service's own memory: by them a value that has
 * been read can be kept, and a look at memory tells whether it still holds. {@code
 * service/change_counters.h} says what the service promises.
 */
final class ChangeCounters {
    private static final ByteBuffer MEMORY = NativeLane.changeCounters();
    private static final VarHandle LONGS =
            MethodHandles.byteBufferViewVarHandle(long[].class, ByteOrder.nativeOrder());

    private ChangeCounters() {}

    /** Whether there are counters; without them nothing may be kept. */
    static boolean areThere() {
        return MEMORY != null;
    }

    /** The place of a key's counter, for {@link #of}; a null node is the root. */
    static int place(String node, String key) {
        int mixed = 31 * mark(key) + (node == null ? 0 : mark(node));
        return (mixed * 0x9E3779B9 >>> 20) * Long.BYTES;
    }

    /** The place of the counter of a node's list of children; a null node is the root. */
    static int placeOfList(String node) {
        return place(node, "");
    }

    /**
     * The count at a place. What is read from the tree after it belongs to it or to a later one.
     */
    static long of(int place) {
        return (long) LONGS.getAcquire(MEMORY, place);
    }

    private static int mark(String name) {
        int length = name.length();
        if (length >= 4)
            return word(name, 0, 4) * 37 + word(name, length - 4, length) + 7 * length;
        return word(name, 0, length) * 38 + 7 * length;
    }

    private static int word(String name, int begin, int end) {
        int word = 0;
        // What is no ASCII is the name of nothing, so it need not be told apart.
        for (int i = begin; i < end; ++i) word = word << 8 | name.charAt(i) & 0xFF;
        return word;
    }
}
