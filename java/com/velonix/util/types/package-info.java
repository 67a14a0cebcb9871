/**
 * Unsigned integers of 8, 16, 32 and 64 bits, as settings hold them.
 *
 * <p>Each type is an immutable {@link Number} made from the bits of the signed primitive of the
 * same width ({@code new UnsignedByte((byte) -56)} is 200) or from a number whose range is checked
 * ({@code UnsignedByte.valueOf(200)}). They compare, parse and print as unsigned numbers, and
 * threads may share them.
 */
package com.velonix.util.types;
