package com.velonix.services.settings;

import java.util.Arrays;
import java.util.List;
import java.util.Objects;
import java.util.StringJoiner;

/** Checks and texts of the names that make a path. */
final class Names {
    private Names() {}

    /** The path with further names, none of which may be null, at its end. */
    static String[] joined(String[] path, String[] further) {
        Objects.requireNonNull(further, "names");
        String[] joined = Arrays.copyOf(path, path.length + further.length);
        for (int i = 0; i < further.length; ++i) {
            String name = further[i];
            if (name == null)
                throw new NullPointerException("names[" + i + "]");
            joined[path.length + i] = name;
        }
        return joined;
    }

    /** A name that a new entry may have. */
    static String checkNew(String name) {
        if (!Setting.isValidName(name)) {
            throw new IllegalArgumentException("\"" + name
                    + "\" is no name for a setting: a letter, then letters, digits and"
                    + " underscores are expected, at most 63 in all");
        }
        return name;
    }

    /** The path as messages write it; a null name stands for none. */
    static String dotted(List<String> path, String name) {
        StringJoiner joiner = new StringJoiner(".");
        path.forEach(joiner::add);
        if (name != null)
            joiner.add(name);
        return joiner.toString();
    }
}
