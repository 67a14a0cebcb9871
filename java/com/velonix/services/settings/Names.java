package com.velonix.services.settings;

import java.util.Arrays;
import java.util.List;
import java.util.Objects;
import java.util.StringJoiner;

/** Checks names of entries, and makes paths and texts of them. */
final class Names {
    private Names() {}

    /** Returns the path with further names at its end. Throws NullPointerException for a null. */
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

    /** Returns the name if a new entry may have it; throws IllegalArgumentException otherwise. */
    static String checkNew(String name) {
        if (!Setting.isValidName(name)) {
            throw new IllegalArgumentException("\"" + name
                    + "\" is not a valid name. Use a letter followed by letters, digits and"
                    + " underscores, at most 63 characters in all.");
        }
        return name;
    }

    /** Returns the dotted path for messages; a null name is left out. */
    static String dotted(List<String> path, String name) {
        StringJoiner joiner = new StringJoiner(".");
        path.forEach(joiner::add);
        if (name != null)
            joiner.add(name);
        return joiner.toString();
    }
}
