package com.velonix.services.settings;

import com.velonix.util.types.UnsignedByte;
import com.velonix.util.types.UnsignedInteger;
import com.velonix.util.types.UnsignedLong;
import com.velonix.util.types.UnsignedShort;
import java.util.function.BiConsumer;
import java.util.function.Function;
import java.util.function.IntFunction;

/**
 * Conversions between arrays of primitives and arrays of the element classes of settings. The
 * unsigned classes become the signed primitives of their size.
 */
final class PrimitiveArrays {
    private record Conversion<P, B>(Function<P, B> newBoxed, IntFunction<P> newPrimitives,
            BiConsumer<P, B> box, BiConsumer<B, P> unbox) {}

    /**
     * By kind of element, from {@link ValueKinds#BOOLEAN} on; p are the primitives, b the boxed
     * elements. Each row has loops of its own: in a common loop each element would cost a call.
     */
    // clang-format off
    private static final Conversion<?, ?>[] CONVERSIONS = {
        new Conversion<boolean[], Boolean[]>(p -> new Boolean[p.length], boolean[]::new,
            (p, b) -> { for (int i = 0; i < b.length; ++i) b[i] = p[i]; },
            (b, p) -> { for (int i = 0; i < p.length; ++i) p[i] = b[i]; }),
        new Conversion<byte[], Byte[]>(p -> new Byte[p.length], byte[]::new,
            (p, b) -> { for (int i = 0; i < b.length; ++i) b[i] = p[i]; },
            (b, p) -> { for (int i = 0; i < p.length; ++i) p[i] = b[i]; }),
        new Conversion<byte[], UnsignedByte[]>(p -> new UnsignedByte[p.length], byte[]::new,
            (p, b) -> { for (int i = 0; i < b.length; ++i) b[i] = new UnsignedByte(p[i]); },
            (b, p) -> { for (int i = 0; i < p.length; ++i) p[i] = b[i].byteValue(); }),
        new Conversion<short[], Short[]>(p -> new Short[p.length], short[]::new,
            (p, b) -> { for (int i = 0; i < b.length; ++i) b[i] = p[i]; },
            (b, p) -> { for (int i = 0; i < p.length; ++i) p[i] = b[i]; }),
        new Conversion<short[], UnsignedShort[]>(p -> new UnsignedShort[p.length], short[]::new,
            (p, b) -> { for (int i = 0; i < b.length; ++i) b[i] = new UnsignedShort(p[i]); },
            (b, p) -> { for (int i = 0; i < p.length; ++i) p[i] = b[i].shortValue(); }),
        new Conversion<int[], Integer[]>(p -> new Integer[p.length], int[]::new,
            (p, b) -> { for (int i = 0; i < b.length; ++i) b[i] = p[i]; },
            (b, p) -> { for (int i = 0; i < p.length; ++i) p[i] = b[i]; }),
        new Conversion<int[], UnsignedInteger[]>(p -> new UnsignedInteger[p.length], int[]::new,
            (p, b) -> { for (int i = 0; i < b.length; ++i) b[i] = new UnsignedInteger(p[i]); },
            (b, p) -> { for (int i = 0; i < p.length; ++i) p[i] = b[i].intValue(); }),
        new Conversion<long[], Long[]>(p -> new Long[p.length], long[]::new,
            (p, b) -> { for (int i = 0; i < b.length; ++i) b[i] = p[i]; },
            (b, p) -> { for (int i = 0; i < p.length; ++i) p[i] = b[i]; }),
        new Conversion<long[], UnsignedLong[]>(p -> new UnsignedLong[p.length], long[]::new,
            (p, b) -> { for (int i = 0; i < b.length; ++i) b[i] = new UnsignedLong(p[i]); },
            (b, p) -> { for (int i = 0; i < p.length; ++i) p[i] = b[i].longValue(); }),
        new Conversion<float[], Float[]>(p -> new Float[p.length], float[]::new,
            (p, b) -> { for (int i = 0; i < b.length; ++i) b[i] = p[i]; },
            (b, p) -> { for (int i = 0; i < p.length; ++i) p[i] = b[i]; }),
        new Conversion<double[], Double[]>(p -> new Double[p.length], double[]::new,
            (p, b) -> { for (int i = 0; i < b.length; ++i) b[i] = p[i]; },
            (b, p) -> { for (int i = 0; i < p.length; ++i) p[i] = b[i]; }),
    };
    // clang-format on

    private PrimitiveArrays() {}

    /**
     * Returns a new array with the boxed elements of an array of primitives.
     *
     * @param kind the kind of the result, an array of anything but texts
     */
    static Object boxed(Object primitives, int kind) {
        return boxed(conversion(kind), primitives);
    }

    /**
     * Returns a new array of primitives with the elements of a boxed array.
     *
     * @param kind the kind of the argument, an array of anything but texts
     * @throws NullPointerException if an element is null
     */
    static Object unboxed(Object[] boxed, int kind) {
        return unboxed(conversion(kind), boxed);
    }

    @SuppressWarnings("unchecked")
    private static <P, B> B boxed(Conversion<P, B> conversion, Object array) {
        P primitives = (P) array;
        B boxed = conversion.newBoxed.apply(primitives);
        conversion.box.accept(primitives, boxed);
        return boxed;
    }

    @SuppressWarnings("unchecked")
    private static <P, B> P unboxed(Conversion<P, B> conversion, Object[] boxed) {
        P primitives = conversion.newPrimitives.apply(boxed.length);
        conversion.unbox.accept((B) boxed, primitives);
        return primitives;
    }

    private static Conversion<?, ?> conversion(int kind) {
        return CONVERSIONS[ValueKinds.elementOf(kind) - ValueKinds.BOOLEAN];
    }
}
