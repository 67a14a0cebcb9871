package com.velonix.services.settings;

import java.util.List;
import java.util.Objects;
import java.util.StringJoiner;

/** Checks and texts of the names that make a path. */
final class Names {
    private Names() {}

    /** The names themselves, copied, once none of them is found to be null. */
    static String[] copyOf(String[] names) {
        String[] copy = Objects.requireNonNull(names, "names").clone();
        for (int i = 0; i < copy.length; ++i) {
            if (copy[i] == null)
                throw new NullPointerException("names[" + i + "]");
        }
        return copy;
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
