package com.velonix.services.settings;

import java.util.Objects;

/**
 * The levels at which a setting may have a value, highest first. The effective value is that of the
 * first level that has one.
 */
public enum SettingLevel {
    /** Values of this process, in memory. */
    SESSION,
    /** Values of the user; the default level for changes. */
    USER,
    /**
     * Values that an administrator gives to a group of users. Read-only in the settings of the
     * process and of sessions; a tree in memory can be changed at every level.
     */
    WORKGROUP,
    /** Values that the product is delivered with. Read-only where {@link #WORKGROUP} is. */
    FACTORY;

    private static final SettingLevel[] LEVELS = values();

    /**
     * Read from the service at the first use: loading the libraries initialises this class, so its
     * initialiser must not wait for them. Threads that race store the same values.
     */
    private static SettingLevel byDefault;
    private String levelName;
    private int number = -1;

    /**
     * Returns the level that is changed if a call names none.
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
     * Tells whether a value at this level hides one at the other level.
     *
     * @param other the level to compare with
     * @return true if this level comes strictly first
     */
    public boolean overrides(SettingLevel other) {
        return Helper.nativeCompareLevels(
                       levelName(), nameOf(Objects.requireNonNull(other, "other")))
                > 0;
    }

    /**
     * Returns the level's name in settings files and in the settings service.
     *
     * @return the name, such as "user"
     */
    public String levelName() {
        String known = levelName;
        if (known == null)
            levelName = known = Helper.nameOf(this);
        return known;
    }

    /** Returns the level's number in {@link NativeLane}. */
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
        throw new SettingLevelRuntimeException(
                "The settings service returned the unknown level \"" + name + "\"");
    }

    static String nameOf(SettingLevel level) {
        return Objects.requireNonNull(level, "level").levelName();
    }

    /** The native methods of the levels. */
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
