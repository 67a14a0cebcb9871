package com.velonix.services.settings;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertInstanceOf;
import static org.junit.jupiter.api.Assertions.assertSame;

import com.velonix.util.types.UnsignedByte;
import com.velonix.util.types.UnsignedInteger;
import com.velonix.util.types.UnsignedLong;
import com.velonix.util.types.UnsignedShort;
import java.lang.reflect.Array;
import java.util.List;
import java.util.stream.Stream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.MethodSource;

class ValueRoundTripTest {
    /** Returns the edge cases of each of the twelve element types. */
    static Stream<List<?>> elements() {
        return Stream.of(
                List.of("", "plain", "\0", "a\0b", "\u00e9\u4e2d", "\ud83d\ude00", "\ud83d",
                        "\ude00\ud83d", "x".repeat(1 << 20), "\ud83d\ude00\u00e9".repeat(1 << 18)),
                List.of(true, false), List.of(Byte.MIN_VALUE, (byte) -1, (byte) 0, Byte.MAX_VALUE),
                List.of(UnsignedByte.MIN_VALUE, UnsignedByte.valueOf(128), UnsignedByte.MAX_VALUE),
                List.of(Short.MIN_VALUE, (short) -1, (short) 0, Short.MAX_VALUE),
                List.of(UnsignedShort.MIN_VALUE, UnsignedShort.valueOf(32768),
                        UnsignedShort.MAX_VALUE),
                List.of(Integer.MIN_VALUE, -1, 0, Integer.MAX_VALUE),
                List.of(UnsignedInteger.MIN_VALUE, UnsignedInteger.valueOf(1L << 31),
                        UnsignedInteger.MAX_VALUE),
                List.of(Long.MIN_VALUE, -1L, 0L, Long.MAX_VALUE),
                List.of(UnsignedLong.MIN_VALUE, new UnsignedLong(Long.MIN_VALUE),
                        UnsignedLong.MAX_VALUE),
                List.of(0f, -0f, Float.NaN, Float.POSITIVE_INFINITY, Float.NEGATIVE_INFINITY,
                        Float.MIN_VALUE, Float.MIN_NORMAL, Float.MAX_VALUE, 0.1f),
                List.of(0d, -0d, Double.NaN, Double.POSITIVE_INFINITY, Double.NEGATIVE_INFINITY,
                        Double.MIN_VALUE, Double.MIN_NORMAL, Double.MAX_VALUE, 0.1));
    }

    @ParameterizedTest
    @MethodSource("elements")
    void everyValueComesBackAsItWasSet(List<?> values) throws Exception {
        try (SettingPath root = SettingPath.standalone()) {
            Class<?> type = values.get(0).getClass();
            Setting<Object> key = root.addKey("key", values.get(values.size() - 1));
            for (Object value : values) {
                key.set(value, SettingLevel.SESSION);
                assertEquals(value, assertInstanceOf(type, key.get()));
            }
            assertEquals(values.get(values.size() - 1), key.get(SettingLevel.USER));
            assertSame(type, key.declaredType().orElseThrow());
        }
    }

    @ParameterizedTest
    @MethodSource("elements")
    void everyArrayComesBackAsItWasSet(List<?> values) throws Exception {
        Class<?> type = values.get(0).getClass();
        try (SettingPath root = SettingPath.standalone()) {
            Setting<Object[]> key = root.addKey("key", array(type, values, values.size()));
            assertArrayEquals(values.toArray(), key.get());
            // The long texts are only in the array above.
            List<?> small = values.subList(0, Math.min(values.size(), 8));
            for (int length : new int[] {0, 1, 33, 100_000}) {
                Object[] expected = array(type, small, length);
                key.set(expected);
                Object[] got = key.get();
                assertSame(type.arrayType(), got.getClass());
                assertArrayEquals(expected, got);
            }
        }
    }

    private static Object[] array(Class<?> type, List<?> values, int length) {
        Object[] array = (Object[]) Array.newInstance(type, length);
        for (int i = 0; i < length; ++i) {
            array[i] = values.get(i % values.size());
        }
        return array;
    }

    @Test
    void keysAtEveryDepthKeepTheirValues() throws Exception {
        try (SettingPath root = SettingPath.standalone()) {
            SettingPath node = root;
            for (int depth = 1; depth <= 100; ++depth) {
                node = node.addNode("n".repeat(63));
                Setting<Object> key = node.addKey("key", depth);
                for (Object value : List.of(-depth, depth)) {
                    key.set(value);
                    assertEquals(value, key.get());
                }
                Setting<String> text = node.addKey("text", "");
                for (int length = 4096; length > 0; length /= 4) {
                    text.set("t".repeat(length));
                    assertEquals(length, text.get().length());
                }
            }
        }
    }

    @Test
    void primitiveArraysAreStoredAsArraysOfTheBoxedClass() throws Exception {
        try (SettingPath root = SettingPath.standalone()) {
            List<Object> arrays = List.of(new boolean[] {true, false}, new byte[] {-128, 127},
                    new short[] {-1}, new int[] {}, new long[] {Long.MIN_VALUE},
                    new float[] {-0f, Float.NaN}, new double[] {1e300, 5e-324});
            for (int i = 0; i < arrays.size(); ++i) {
                Object array = arrays.get(i);
                Setting<Object> key = root.addKey("key" + i, array);
                assertSame(array.getClass(), key.get().getClass());
                assertArrayEquals(new Object[] {array}, new Object[] {key.get()});
            }
            assertArrayEquals(new Byte[] {-128, 127}, root.setting("key1", Byte[].class).get());
        }
    }
}
