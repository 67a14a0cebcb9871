package com.velonix.services.settings;

import java.util.Arrays;

/**
 * The settings of one tree that were asked for lately, so that one that is asked for by its path
 * again has kept its value. A table of pairs: what was asked for last stands first in its pair, and
 * pushes out what is second. Threads use it without any order: what one of them misses is only made
 * again.
 */
final class SettingCache {
    /** A power of two; also the most settings, and values, that a tree keeps of its own accord. */
    private static final int SIZE = 1024;

    private final Setting<?>[] table = new Setting<?>[ SIZE ];

    /** The setting; the type has been checked. */
    @SuppressWarnings("unchecked")
    <T> Setting<T> of(SettingPath parent, String name, Class<T> type) {
        int first = 2 * placeOf(parent.nameArray(), name);
        for (int place = first; place < first + 2; ++place) {
            Setting<?> there = table[place];
            if (there != null && there.isAt(parent, name) && there.type() == type)
                return (Setting<T>) there;
        }
        Setting<T> made = new Setting<>(parent, name, type);
        table[first + 1] = table[first];
        table[first] = made;
        return made;
    }

    private static int placeOf(String[] path, String name) {
        int mixed = (31 * Arrays.hashCode(path) + name.hashCode()) * 0x9E3779B9;
        return (mixed >>> 16) % (SIZE / 2);
    }
}
