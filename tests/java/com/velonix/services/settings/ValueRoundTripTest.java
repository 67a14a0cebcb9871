package com.velonix.services.settings;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertInstanceOf;
import static org.junit.jupiter.api.Assertions.assertSame;
import static org.junit.jupiter.api.Assertions.assertThrows;

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
                assertEquals(value, key.parse(key.format(value).get(0)));
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
                String[] texts = key.format(expected).toArray(String[] ::new);
                assertArrayEquals(expected, key.parse(texts));
            }
        }
    }

    @Test
    void textsThatStandForNoValueAreRefused() throws Exception {
        try (SettingPath root = SettingPath.standalone()) {
            Setting<Byte> small = root.addKey("small", (byte) 1);
            for (String text : List.of("", "x", "1.5", "128", "0x1", "1 2", "\ud83d", "\0")) {
                assertThrows(SettingValidationException.class, () -> small.parse(text), text);
            }
            assertEquals((byte) -5, small.parse(" -5 "));
            String message =
                    assertThrows(SettingValidationException.class, () -> small.parse("1", "2"))
                            .getMessage();
            assertEquals("small: a value of the class Byte is one text, not 2", message);
            assertThrows(SettingValidationException.class, small::parse);
            Setting<int[]> numbers = root.addKey("numbers", new int[] {1});
            assertArrayEquals(new int[] {4, 5}, numbers.parse("4", "5"));
            assertEquals(List.of("7"), numbers.format(new int[] {7}));
            assertThrows(SettingValidationException.class, () -> numbers.parse("4", "true"));
            // As the class of the key, where the class asked for stands for several.
            assertEquals((byte) 9, root.setting("small", Object.class).parse("9"));
            assertThrows(SettingNotFoundException.class,
                    () -> root.setting("none", Object.class).parse("9"));
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
