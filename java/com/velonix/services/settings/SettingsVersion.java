package com.velonix.services.settings;

import java.io.IOException;
import java.io.InputStream;
import java.nio.charset.StandardCharsets;

/**
 * The version of the settings API and of its native libraries. {@code java -jar nativesettings.jar}
 * prints it, and shows in this way whether the libraries can be loaded on a machine.
 */
public final class SettingsVersion {
    private SettingsVersion() {}

    /** {@return the version of the Java API, such as {@code 1.2.0}} */
    public static String version() {
        return LibraryFiles.VERSION;
    }

    /**
     * Returns the commit of the source that the jar was built from.
     *
     * @return 40 hexadecimal digits, followed by {@code -dirty} if the source had further changes;
     *     {@code unknown} if the jar was built outside of a repository
     */
    public static String commit() {
        try (InputStream commit = SettingsVersion.class.getResourceAsStream("commit")) {
            return commit == null
                    ? "unknown"
                    : new String(commit.readAllBytes(), StandardCharsets.US_ASCII).strip();
        } catch (IOException unreadable) {
            return "unknown";
        }
    }

    /**
     * Returns the version of the native libraries, which may differ from {@link #version()} in the
     * last number if they do not come from the jar. Loads them if they are not loaded.
     *
     * @return the version
     * @throws UnsatisfiedLinkError if the libraries cannot be loaded
     */
    public static String librariesVersion() {
        NativeLibrary.load();
        return NativeLane.librariesVersion();
    }

    /**
     * Prints the versions, or why the libraries cannot be loaded.
     *
     * @param arguments none
     */
    public static void main(String[] arguments) {
        System.out.println("nativesettings " + version() + ", commit " + commit());
        try {
            System.out.println("native libraries " + librariesVersion());
        } catch (UnsatisfiedLinkError failed) {
            System.err.println(failed.getMessage());
            System.exit(1);
        }
    }
}
