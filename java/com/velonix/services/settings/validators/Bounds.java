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

    static Bounds parse(String text) {
        int separator = text.indexOf(SEPARATOR);
        if (separator < 0)
            throw unreadable(text);
        try {
            Bounds bounds = new Bounds(bound(text.substring(0, separator)),
                    bound(text.substring(separator + SEPARATOR.length())));
            if (bounds.min != null && bounds.max != null && bounds.min.compareTo(bounds.max) > 0) {
                throw new IllegalArgumentException("\"" + text + "\" allows nothing");
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

    private static BigDecimal bound(String text) {
        return text.isBlank() ? null : new BigDecimal(text.strip());
    }

    private static IllegalArgumentException unreadable(String text) {
        return new IllegalArgumentException("\"" + text + "\" is not of the form min..max");
    }
}
