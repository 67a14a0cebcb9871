package com.velonix.services.settings;

import java.nio.file.Path;
import java.util.Objects;

/**
 * Points the settings of this process at directories of one's own. It changes the environment of
 * the process, so it is for one thread, before the first settings are read.
 */
public final class SettingTestEnvironment {
    private SettingTestEnvironment() {}

    /**
     * Sets the directories that are used when the settings are first read.
     *
     * @param factoryDir holds the files of the factory level
     * @param userDir holds the user level
     * @return the factory directory as the environment now has it
     */
    public static String setDirectories(Path factoryDir, Path userDir) {
        String factory = Objects.requireNonNull(factoryDir, "factoryDir").toFile().getPath();
        String user = Objects.requireNonNull(userDir, "userDir").toFile().getPath();
        NativeLibrary.load();
        return nativeSetEnv(factory, user);
    }

    /** Goes back to the default directories. */
    public static void clear() {
        NativeLibrary.load();
        nativeUnsetEnv();
    }

    private static native String nativeSetEnv(String factoryDir, String userDir);

    private static native void nativeUnsetEnv();
}
