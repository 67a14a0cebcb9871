package com.velonix.services.settings;

import java.util.Objects;
import java.util.function.Supplier;

/**
 * The levels at which a setting may have a value, highest first: the value in effect is that of the
 * first level that has one.
 */
public enum SettingLevel {
    /** For this process, kept in memory. */
    SESSION(Helper.name(Helper::nativeGetSessionLevel)),
    /** The user's own; the level that is written when none is named. */
    USER(Helper.name(Helper::nativeGetUserLevel)),
    /** What an administrator gives to a group of users; read-only. */
    WORKGROUP(Helper.name(Helper::nativeGetWorkgroupLevel)),
    /** What the product was delivered with; read-only. */
    FACTORY(Helper.name(Helper::nativeGetFactoryLevel));

    private static final SettingLevel[] LEVELS = values();
    private static final SettingLevel DEFAULT = ofName(Helper.nativeGetDefaultLevel());

    private final String levelName;

    SettingLevel(String levelName) {
        this.levelName = levelName;
    }

    /**
     * The level that is written when none is named.
     *
     * @return the default level
     */
    public static SettingLevel defaultLevel() {
        return DEFAULT;
    }

    /**
     * Whether a value at this level hides one at the other level.
     *
     * @param other the level to compare with
     * @return true when this level comes strictly first
     */
    public boolean overrides(SettingLevel other) {
        return Helper.nativeCompareLevels(
                       levelName, Objects.requireNonNull(other, "other").levelName)
                > 0;
    }

    /**
     * The level's name in settings files and in the settings service.
     *
     * @return the name, such as "user"
     */
    public String levelName() {
        return levelName;
    }

    static SettingLevel ofName(String name) {
        for (SettingLevel level : LEVELS) {
            if (level.levelName.equals(name))
                return level;
        }
        throw new SettingLevelRuntimeException("the level \"" + name + "\" is not known");
    }

    static String nameOf(SettingLevel level) {
        return Objects.requireNonNull(level, "level").levelName;
    }

    /** The native half of the levels. */
    static final class Helper {
        private Helper() {}

        private static String name(Supplier<String> query) {
            NativeLibrary.load();
            return query.get();
        }

        private static native String nativeGetSessionLevel();

        private static native String nativeGetUserLevel();

        private static native String nativeGetFactoryLevel();

        private static native String nativeGetWorkgroupLevel();

        private static native String nativeGetDefaultLevel();

        private static native int nativeCompareLevels(String first, String second);
    }
}
