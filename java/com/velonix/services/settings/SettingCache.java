package com.velonix.services.settings;

import java.util.Arrays;

/**
 * A cache of the {@link Setting} objects of one tree, by path, name and class, so that a setting
 * that is asked for by its path again still has its cached value. A table of pairs: a new setting
 * becomes the first of its pair and the former first the second. Threads use it without
 * synchronisation; a setting that a thread does not see is made again.
 */
final class SettingCache {
    /** The number of settings that are cached at most; a power of two. */
    private static final int SIZE = 1024;

    private final Setting<?>[] table = new Setting<?>[ SIZE ];

    /** Returns the setting, from the cache or new. The caller has checked the type. */
    @SuppressWarnings("unchecked")
    <T> Setting<T> of(SettingPath parent, String name, Class<T> type) {
        int first = 2 * pairOf(parent.nameArray(), name);
        for (int index = first; index < first + 2; ++index) {
            Setting<?> cached = table[index];
            if (cached != null && cached.hasPath(parent, name) && cached.type() == type)
                return (Setting<T>) cached;
        }
        Setting<T> made = new Setting<>(parent, name, type);
        table[first + 1] = table[first];
        table[first] = made;
        return made;
    }

    private static int pairOf(String[] path, String name) {
        int mixed = (31 * Arrays.hashCode(path) + name.hashCode()) * 0x9E3779B9;
        return (mixed >>> 16) % (SIZE / 2);
    }
}
