package com.velonix.services.settings;

import java.nio.file.Path;
import java.util.Objects;

/**
 * Keeps the settings of this process in memory, or sets their directories, for tests; before the
 * process reads its first settings. {@code nativesettings-testing.jar} does the former for tests
 * with JUnit.
 */
public final class SettingTestEnvironment {
    private SettingTestEnvironment() {}

    /**
     * Keeps the settings of the process and of its sessions in memory from now on: they begin
     * empty, no file and no database is read or written, and values of all four levels can be
     * changed. Calling it again does nothing. Any thread.
     *
     * @throws IllegalStateException if settings of the process have been read already, or another
     *     settings service is used that cannot do so
     */
    public static void keepInMemory() {
        NativeLibrary.load();
        String reason = NativeLane.keepInMemory();
        NativeCall.check("the settings of the process");
        if (reason != null) {
            throw new IllegalStateException("The settings of the process cannot be kept in memory: "
                    + reason + ". Do so before the first use of SettingPath.processRoot().");
        }
    }

    /**
     * Sets the directories from which the settings of the process will be read. It changes the
     * environment of the process, so no other thread may read or change that meanwhile.
     *
     * @param factoryDir the directory with the files of the factory level
     * @param userDir the directory with the user level
     * @return the factory directory as the environment now has it
     */
    public static String setDirectories(Path factoryDir, Path userDir) {
        String factory = Objects.requireNonNull(factoryDir, "factoryDir").toFile().getPath();
        String user = Objects.requireNonNull(userDir, "userDir").toFile().getPath();
        NativeLibrary.load();
        ServiceProperties.takeBackDirectories();
        return nativeSetEnv(factory, user);
    }

    /** Restores the default directories, or those that system properties name. */
    public static void clear() {
        NativeLibrary.load();
        nativeUnsetEnv();
        ServiceProperties.pass();
    }

    private static native String nativeSetEnv(String factoryDir, String userDir);

    private static native void nativeUnsetEnv();
}
