package com.velonix.services.settings.validators;

import java.math.BigDecimal;

/**
 * Two inclusive bounds, written {@code min..max}; either may be left out.
 *
 * @param min the least number, or null for none
 * @param max the greatest number, or null for none
 */
record Bounds(BigDecimal min, BigDecimal max) {
    private static final String SEPARATOR = "..";
    // More digits than the least and the greatest double have.
    private static final int MAX_DIGITS = 1100;

    static Bounds parse(String text) {
        int separator = text.indexOf(SEPARATOR);
        if (separator < 0)
            throw unreadable(text);
        try {
            Bounds bounds = new Bounds(bound(text.substring(0, separator)),
                    bound(text.substring(separator + SEPARATOR.length())));
            if (bounds.min != null && bounds.max != null && bounds.min.compareTo(bounds.max) > 0) {
                throw new IllegalArgumentException(
                        "The range \"" + text + "\" is empty. Give the lower bound first.");
            }
            return bounds;
        } catch (NumberFormatException noNumber) {
            throw unreadable(text);
        }
    }

    boolean contain(BigDecimal number) {
        return (min == null || number.compareTo(min) >= 0)
                && (max == null || number.compareTo(max) <= 0);
    }

    @Override
    public String toString() {
        return (min == null ? "" : min.toPlainString()) + SEPARATOR
                + (max == null ? "" : max.toPlainString());
    }

    // A few characters can name a number of a billion digits, which would take seconds to compare
    // and gigabytes to print.
    private static BigDecimal bound(String text) {
        if (text.isBlank())
            return null;
        if (text.length() > MAX_DIGITS)
            throw tooLong(text);
        BigDecimal number = new BigDecimal(text.strip());
        if (Math.abs((long) number.scale()) > MAX_DIGITS)
            throw tooLong(text);
        return number;
    }

    private static IllegalArgumentException tooLong(String text) {
        String shown = text.length() > 40 ? text.substring(0, 40) + "..." : text;
        return new IllegalArgumentException("The bound \"" + shown.strip() + "\" has more than "
                + MAX_DIGITS + " digits; use fewer, or leave the bound out");
    }

    private static IllegalArgumentException unreadable(String text) {
        return new IllegalArgumentException(
                "\"" + text + "\" is not of the form min..max, such as 1..72");
    }
}
