package com.velonix.services.settings;

import java.nio.ByteBuffer;

/** Converts arrays of numbers to bytes and back, for ways without arrays. */
final class Doubles {
    private Doubles() {}

    static byte[] toBytes(Double[] items) {
        ByteBuffer bytes = ByteBuffer.allocate(items.length * Double.BYTES);
        for (double item : items) bytes.putDouble(item);
        return bytes.array();
    }

    static double[] fromBytes(byte[] bytes) {
        double[] items = new double[bytes.length / Double.BYTES];
        ByteBuffer.wrap(bytes).asDoubleBuffer().get(items);
        return items;
    }
}
