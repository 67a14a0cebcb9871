package com.velonix.services.settings;

import java.nio.file.Path;
import java.util.Objects;

/**
 * Sets the directories of the settings of this process, for tests. It changes the environment of
 * the process, so only one thread may use it, before the process reads its first settings.
 */
public final class SettingTestEnvironment {
    private SettingTestEnvironment() {}

    /**
     * Sets the directories from which the settings of the process will be read.
     *
     * @param factoryDir the directory with the files of the factory level
     * @param userDir the directory with the user level
     * @return the factory directory as the environment now has it
     */
    public static String setDirectories(Path factoryDir, Path userDir) {
        String factory = Objects.requireNonNull(factoryDir, "factoryDir").toFile().getPath();
        String user = Objects.requireNonNull(userDir, "userDir").toFile().getPath();
        NativeLibrary.load();
        return nativeSetEnv(factory, user);
    }

    /** Restores the default directories. */
    public static void clear() {
        NativeLibrary.load();
        nativeUnsetEnv();
    }

    private static native String nativeSetEnv(String factoryDir, String userDir);

    private static native void nativeUnsetEnv();
}
