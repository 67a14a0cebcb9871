package com.velonix.util.types;

abstract class Unsigned extends Number {
    private final long bits;

    Unsigned(long bits) {
        this.bits = bits;
    }

    @Override
    public long longValue() {
        return bits;
    }

    @Override
    public int intValue() {
        return (int) bits;
    }

    @Override
    public float floatValue() {
        return bits;
    }

    @Override
    public double doubleValue() {
        return bits;
    }

    @Override
    public boolean equals(Object other) {
        return other != null
                && other.getClass() == getClass()
                && ((Unsigned) other).bits == bits;
    }

    @Override
    public int hashCode() {
        return Long.hashCode(bits);
    }
}

class UnsignedByte extends Unsigned {
    UnsignedByte(byte bits) {
        super(bits);
    }
}

class UnsignedShort extends Unsigned {
    UnsignedShort(short bits) {
        super(bits);
    }
}

class UnsignedInteger extends Unsigned {
    UnsignedInteger(int bits) {
        super(bits);
    }
}

class UnsignedLong extends Unsigned {
    UnsignedLong(long bits) {
        super(bits);
    }
}
