package com.velonix.services.settings;

import java.util.Objects;

/**
 * The levels at which a setting may have a value, highest first: the value in effect is that of the
 * first level that has one.
 */
public enum SettingLevel {
    /** For this process, kept in memory. */
    SESSION,
    /** The user's own; the level that is written when none is named. */
    USER,
    /**
     * What an administrator gives to a group of users. Read-only in the settings of the process and
     * of sessions; a tree that lives in memory can be changed at every level.
     */
    WORKGROUP,
    /** What the product was delivered with. Read-only where {@link #WORKGROUP} is. */
    FACTORY;

    private static final SettingLevel[] LEVELS = values();

    /**
     * Both asked for when they are needed: loading the libraries initialises this class, so it must
     * not wait for them itself. Two threads that ask are told the same.
     */
    private static SettingLevel byDefault;
    private String levelName;
    private int number = -1;

    /**
     * The level that is written when none is named.
     *
     * @return the default level
     */
    public static SettingLevel defaultLevel() {
        SettingLevel known = byDefault;
        if (known == null)
            byDefault = known = ofName(Helper.nameOfDefault());
        return known;
    }

    /**
     * Whether a value at this level hides one at the other level.
     *
     * @param other the level to compare with
     * @return true when this level comes strictly first
     */
    public boolean overrides(SettingLevel other) {
        return Helper.nativeCompareLevels(
                       levelName(), nameOf(Objects.requireNonNull(other, "other")))
                > 0;
    }

    /**
     * The level's name in settings files and in the settings service.
     *
     * @return the name, such as "user"
     */
    public String levelName() {
        String known = levelName;
        if (known == null)
            levelName = known = Helper.nameOf(this);
        return known;
    }

    /** The number by which {@link NativeLane} knows the level. */
    static int numberOf(SettingLevel level) {
        int known = Objects.requireNonNull(level, "level").number;
        if (known < 0)
            level.number = known = NativeLane.levelOf(level.levelName());
        return known;
    }

    static SettingLevel ofName(String name) {
        for (SettingLevel level : LEVELS) {
            if (level.levelName().equals(name))
                return level;
        }
        throw new SettingLevelRuntimeException("the level \"" + name + "\" is not known");
    }

    static String nameOf(SettingLevel level) {
        return Objects.requireNonNull(level, "level").levelName();
    }

    /** The native half of the levels. */
    static final class Helper {
        private Helper() {}

        private static String nameOf(SettingLevel level) {
            NativeLibrary.load();
            if (level == SESSION)
                return nativeGetSessionLevel();
            if (level == USER)
                return nativeGetUserLevel();
            return level == WORKGROUP ? nativeGetWorkgroupLevel() : nativeGetFactoryLevel();
        }

        private static String nameOfDefault() {
            NativeLibrary.load();
            return nativeGetDefaultLevel();
        }

        private static native String nativeGetSessionLevel();

        private static native String nativeGetUserLevel();

        private static native String nativeGetFactoryLevel();

        private static native String nativeGetWorkgroupLevel();

        private static native String nativeGetDefaultLevel();

        private static native int nativeCompareLevels(String first, String second);
    }
}
