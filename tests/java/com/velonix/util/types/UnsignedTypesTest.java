package com.velonix.util.types;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNotEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.math.BigInteger;
import java.util.function.Function;
import java.util.stream.Stream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.Arguments;
import org.junit.jupiter.params.provider.MethodSource;

class UnsignedTypesTest {
    static Stream<Arguments> types() {
        return Stream.of(type(8, UnsignedByte::parse, bits -> new UnsignedByte((byte) (long) bits)),
                type(16, UnsignedShort::parse, bits -> new UnsignedShort((short) (long) bits)),
                type(32, UnsignedInteger::parse, bits -> new UnsignedInteger((int) (long) bits)),
                type(64, UnsignedLong::parse, UnsignedLong::new));
    }

    private static Arguments type(
            int bits, Function<String, Number> parse, Function<Long, Number> ofBits) {
        return Arguments.of(bits, parse, ofBits);
    }

    @ParameterizedTest
    @MethodSource("types")
    void theWholeRangeIsParsedAndPrintedAndNoMore(
            int bits, Function<String, Number> parse, Function<Long, Number> ofBits) {
        BigInteger limit = BigInteger.ONE.shiftLeft(bits);
        BigInteger max = limit.subtract(BigInteger.ONE);
        BigInteger middle = limit.shiftRight(1);
        for (BigInteger number : new BigInteger[] {BigInteger.ZERO, middle, max}) {
            Number parsed = parse.apply(number.toString());
            assertEquals(number.toString(), parsed.toString());
            assertEquals(ofBits.apply(number.longValue()), parsed);
            assertEquals(number.longValue(), parsed.longValue());
            assertEquals(number.intValue(), parsed.intValue());
            assertEquals(number.doubleValue(), parsed.doubleValue());
            assertEquals(number.floatValue(), parsed.floatValue());
        }
        for (String wrong : new String[] {"-1", limit.toString(), "", "1.0", "0x1"}) {
            assertThrows(NumberFormatException.class, () -> parse.apply(wrong), wrong);
        }
    }

    @ParameterizedTest
    @MethodSource("types")
    @SuppressWarnings("unchecked")
    void numbersCompareAsUnsigned(
            int bits, Function<String, Number> parse, Function<Long, Number> ofBits) {
        Comparable<Object> one = (Comparable<Object>) ofBits.apply(1L);
        Object largest = ofBits.apply(-1L);
        assertTrue(one.compareTo(largest) < 0);
        assertTrue(((Comparable<Object>) largest).compareTo(one) > 0);
        assertEquals(0, one.compareTo(ofBits.apply(1L)));
        assertEquals(ofBits.apply(1L).hashCode(), one.hashCode());
        assertNotEquals(one, largest);
        assertNotEquals(one, 1L);
    }

    @Test
    void valueOfChecksTheRange() {
        assertEquals(UnsignedByte.MAX_VALUE, UnsignedByte.valueOf(255));
        assertThrows(IllegalArgumentException.class, () -> UnsignedByte.valueOf(256));
        assertEquals(UnsignedShort.MAX_VALUE, UnsignedShort.valueOf(65535));
        assertThrows(IllegalArgumentException.class, () -> UnsignedShort.valueOf(-1));
        assertEquals(UnsignedInteger.MAX_VALUE, UnsignedInteger.valueOf(4294967295L));
        assertThrows(IllegalArgumentException.class, () -> UnsignedInteger.valueOf(4294967296L));
        BigInteger max = BigInteger.ONE.shiftLeft(64).subtract(BigInteger.ONE);
        assertEquals(UnsignedLong.MAX_VALUE, UnsignedLong.valueOf(max));
        assertEquals(max, UnsignedLong.MAX_VALUE.bigIntegerValue());
        assertEquals(new UnsignedLong(Long.MAX_VALUE), UnsignedLong.valueOf(Long.MAX_VALUE));
        assertEquals(BigInteger.TEN, UnsignedLong.valueOf(10).bigIntegerValue());
        assertThrows(IllegalArgumentException.class, () -> UnsignedLong.valueOf(-1));
        for (BigInteger outside :
                new BigInteger[] {max.add(BigInteger.ONE), BigInteger.TEN.negate()})
            assertThrows(IllegalArgumentException.class, () -> UnsignedLong.valueOf(outside));
    }
}
