package com.velonix.services.settings;

import java.io.FileNotFoundException;
import java.io.IOException;
import java.io.InputStream;
import java.net.URL;
import java.net.URLConnection;
import java.nio.file.Path;
import java.util.List;
import java.util.Locale;
import java.util.regex.Matcher;
import java.util.regex.Pattern;

/**
 * Loads the native libraries from the first source that has them: the directory named by the
 * property {@value #DIRECTORY_PROPERTY}, {@code java.library.path}, the jar.
 *
 * <p>The jar also has the libraries that they need and that a JRE does not bring. Those of the
 * system, and those that the process has loaded already, go before: a process must have one copy of
 * each, for SQLite's locks do not work between two. So a library of the jar is used only after the
 * linker has found none.
 */
final class LibrarySearch {
    static final String DIRECTORY_PROPERTY = "com.velonix.services.settings.library.path";

    /** The variable by which a shared workgroup level is configured. */
    private static final String SHARED = "SETTINGS_WORKGROUP";

    private static final String TWO_VERSIONS =
            "\n    There are two versions of nativesettings.jar in this process, in different class"
            + " loaders. Give all of them the same version, and start the process anew.";

    /** How the linker names a library that it has not found, whatever the language. */
    private static final Pattern NOT_FOUND = Pattern.compile(": (lib[^/: ]+\\.so[^/: ]*): ");

    /** How the linker quotes the version of symbols that a library does not have. */
    private static final Pattern NO_VERSION = Pattern.compile("`([A-Z]+)_");

    private LibrarySearch() {}

    /** Returns null if the libraries are loaded, else every attempt with its reason. */
    static String load() {
        String failure = "The settings libraries cannot be loaded:";
        if (LibraryFiles.anotherHostIsMapped())
            return failure + TWO_VERSIONS;
        StringBuilder reasons = new StringBuilder(failure);
        String directory = System.getProperty(DIRECTORY_PROPERTY);
        try {
            boolean loaded = directory != null
                    && attempt("from " + DIRECTORY_PROPERTY + "=" + directory,
                            () -> loadFrom(Path.of(directory).toAbsolutePath()), reasons);
            loaded = loaded
                    || attempt("from java.library.path=" + libraryPath(),
                            LibrarySearch::loadFromLibraryPath, reasons)
                    || attempt("from the jar", LibrarySearch::loadFromJar, reasons);
            return loaded ? null : reasons.toString();
        } catch (IllegalCallerException refused) {
            return failure + " Java refuses native libraries here: " + refused.getMessage() + ". "
                    + howToEnableNativeAccess(LibrarySearch.class.getModule());
        }
    }

    /** Returns null if libraries of a version work with these classes, else the reason why not. */
    static String versionProblem(String version) {
        if (version.startsWith(LibraryFiles.INTERFACE + "."))
            return null;
        return "The settings libraries that have been loaded are of version " + version
                + ", and the Java classes of version " + LibraryFiles.VERSION
                + ". Remove these libraries from java.library.path=" + libraryPath()
                + ", or install the others.";
    }

    private interface Attempt {
        void run() throws IOException;
    }

    /** Throws IllegalCallerException, which every other attempt would throw too. */
    private static boolean attempt(String source, Attempt attempt, StringBuilder reasons) {
        try {
            attempt.run();
            return true;
        } catch (IllegalCallerException refused) {
            throw refused;
        } catch (IOException | RuntimeException | LinkageError failed) {
            String message = String.valueOf(failed.getMessage());
            reasons.append("\n  ").append(source).append(": ").append(message);
            reasons.append(advice(message));
            return false;
        }
    }

    private static void loadFromLibraryPath() {
        if (!LibraryFiles.hostIsMapped())
            System.loadLibrary(LibraryFiles.HOST_NAME);
        System.loadLibrary(LibraryFiles.BRIDGE_NAME);
    }

    private static void loadFrom(Path directory) {
        for (String file : filesToLoad()) {
            System.load(directory.resolve(file).toString());
        }
    }

    private static void loadFromJar() throws IOException {
        String platform = platform();
        if (!platform.equals(LibraryFiles.PLATFORM)) {
            throw new FileNotFoundException("it has libraries for " + LibraryFiles.PLATFORM
                    + ", and this JVM runs on " + platform
                    + ". Build the libraries there, and name their folder by -D"
                    + DIRECTORY_PROPERTY + "=FOLDER.");
        }
        try (LibraryFolder folder = LibraryFolder.make()) {
            for (String file : filesToLoad()) {
                loadFromJar(file, folder);
                if (file.equals(LibraryFiles.HOST) && isShared())
                    loadSharedStore(folder);
            }
        }
    }

    private static boolean isShared() {
        String address = System.getenv(SHARED);
        return address != null && !address.isEmpty();
    }

    /**
     * Loads the library that the host would look for in the folder later, when this is gone. The
     * host reports that it does not find it; the reason goes before that.
     */
    private static void loadSharedStore(LibraryFolder folder) {
        try {
            loadFromJar(LibraryFiles.SHARED_STORE, folder);
        } catch (IOException | UnsatisfiedLinkError failed) {
            String message = String.valueOf(failed.getMessage());
            System.err.println(
                    "The workgroup level cannot be shared: " + message + advice(message));
        }
    }

    private static void loadFromJar(String file, LibraryFolder folder) throws IOException {
        if (!copyFromJar(file, folder, file))
            throw new FileNotFoundException("it has no " + inJar(file));
        loadWithNeeds(file, folder);
    }

    /** Loads a library of the folder, adding what the linker does not find and the jar has. */
    private static void loadWithNeeds(String file, LibraryFolder folder) throws IOException {
        while (true) {
            try {
                System.load(folder.path().resolve(file).toString());
                return;
            } catch (UnsatisfiedLinkError failed) {
                folder.checkLoadable(file);
                Matcher notFound = NOT_FOUND.matcher(String.valueOf(failed.getMessage()));
                if (!notFound.find())
                    throw failed;
                // Beside the library the linker finds it.
                if (!copyFromJar("lib/" + notFound.group(1), folder, notFound.group(1)))
                    throw failed;
            }
        }
    }

    /** Returns false if the jar does not have the entry, or the folder has the file already. */
    private static boolean copyFromJar(String entry, LibraryFolder folder, String file)
            throws IOException {
        URL resource = LibrarySearch.class.getResource(inJar(entry));
        if (resource == null)
            return false;
        URLConnection connection = resource.openConnection();
        // A cached connection would keep the jar open until the JVM ends.
        connection.setUseCaches(false);
        try (InputStream library = connection.getInputStream()) {
            return folder.add(file, library);
        }
    }

    /**
     * Returns the files in loading order. If the bridge brought the host in, the linker would bind
     * symbols of the host to the bridge, which could then never be unmapped.
     */
    private static List<String> filesToLoad() {
        return LibraryFiles.hostIsMapped() ? List.of(LibraryFiles.BRIDGE)
                                           : List.of(LibraryFiles.HOST, LibraryFiles.BRIDGE);
    }

    private static String inJar(String entry) {
        return "/native/" + LibraryFiles.PLATFORM + "/" + entry;
    }

    private static String platform() {
        String system = System.getProperty("os.name").toLowerCase(Locale.ROOT);
        String machine = System.getProperty("os.arch");
        return system + "-" + (machine.equals("amd64") ? "x86_64" : machine);
    }

    private static String libraryPath() {
        return System.getProperty("java.library.path");
    }

    private static String howToEnableNativeAccess(Module module) {
        if (module.isNamed() && module.getLayer() != ModuleLayer.boot()) {
            return "The program that has made the module's layer must call enableNativeAccess of"
                    + " its ModuleLayer.Controller.";
        }
        return "Start Java with --enable-native-access="
                + (module.isNamed() ? module.getName() : "ALL-UNNAMED") + ".";
    }

    private static String advice(String message) {
        Matcher notFound = NOT_FOUND.matcher(message);
        if (notFound.find()) {
            return "\n    Install " + notFound.group(1) + ": the Debian package "
                    + debianPackage(notFound.group(1)) + ".";
        }
        Matcher noVersion = NO_VERSION.matcher(message);
        if (!noVersion.find())
            return "";
        return switch (noVersion.group(1)) {
            case "SETTINGSHOST" -> TWO_VERSIONS;
            case "GLIBC", "GLIBCXX", "CXXABI" -> "\n    This system is too old: it must have the C"
                    + " library and the C++ library of Debian 12 (glibc 2.36, libstdc++ 12), or"
                    + " newer ones.";
            default -> "";
        };
    }

    private static String debianPackage(String library) {
        return switch (library) {
            case "libtbb.so.12" -> "libtbb12";
            case "libexpat.so.1" -> "libexpat1";
            case "libsqlite3.so.0" -> "libsqlite3-0";
            case "libcurl.so.4" -> "libcurl4";
            case "libstdc++.so.6" -> "libstdc++6";
            case "libgcc_s.so.1" -> "libgcc-s1";
            default -> "that has it";
        };
    }
}
