package com.velonix.services.settings;

import java.io.FileNotFoundException;
import java.io.IOException;
import java.io.InputStream;
import java.net.URL;
import java.net.URLConnection;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.attribute.PosixFilePermissions;
import java.util.List;
import java.util.Locale;

/**
 * Loads the two native libraries, once for this class loader: from the directory named by the
 * property {@value #DIRECTORY_PROPERTY}, else from {@code java.library.path}, else from the jar.
 *
 * <p>The host, which owns the trees, is loaded once in a process: another class loader has a bridge
 * of its own, which the dynamic linker binds to the host that is loaded. A bridge that was built for
 * another version of the host is refused.
 *
 * <p>Loading initialises the classes that have native methods, and those that reading and writing
 * need, so none of these may load the libraries in its own static initialiser: two threads could
 * then wait for each other. Every method that makes a native handle calls {@link #load()} first.
 *
 * <p>This class has no static initialiser, and a thread of its own loads and initialises
 * everything, because a caller may have next to no stack left: a class whose initialisation a full
 * stack ends can never be used again, nor can a library that did not find all its classes. If the
 * thread cannot be started, the next caller tries again.
 */
final class NativeLibrary {
    static final String DIRECTORY_PROPERTY = "com.velonix.services.settings.library.path";

    /** The beginning of the host's symbol version, which the linker quotes when it differs. */
    private static final String HOST_VERSION = "SETTINGSHOST_";
    private static final String TWO_VERSIONS =
            "\n    There are two versions of nativesettings.jar in this process, in different class"
            + " loaders. Give all of them the same version, and start the process anew.";

    /** A constant string, so all class loaders of the JVM share the object. */
    private static final Object LOADING_IN_ANY_LOADER = "com.velonix.services.settings loading";

    private static volatile boolean ready;

    private static boolean loaded; // guarded by the class
    private static String failure; // guarded by the class; null until loading has failed

    private NativeLibrary() {}

    /**
     * Returns once the libraries are loaded.
     *
     * @throws UnsatisfiedLinkError if no attempt succeeds; the message has every attempt with the
     *     reason why it failed
     */
    static void load() {
        if (!ready)
            new Loader().runToTheEnd();
    }

    private static synchronized String loadOnce() throws Exception {
        if (ready || failure != null)
            return failure;
        if (!loaded) {
            synchronized (LOADING_IN_ANY_LOADER) {
                failure = tryAll();
            }
            loaded = failure == null;
        }
        if (loaded) {
            EagerInitialisation.initialise();
            ready = true;
        }
        return failure;
    }

    /** A thread that loads the libraries unless another one has. */
    private static final class Loader extends Thread {
        private String failure;
        private Throwable broken;

        Loader() {
            super(null, null, "settings loading", 0, false);
            setDaemon(true);
        }

        @Override
        public void run() {
            try {
                failure = loadOnce();
            } catch (Throwable thrown) {
                broken = thrown;
            }
        }

        void runToTheEnd() {
            start();
            boolean interrupted = false;
            while (isAlive()) {
                try {
                    join();
                } catch (InterruptedException postponed) {
                    interrupted = true;
                }
            }
            if (interrupted)
                Thread.currentThread().interrupt();
            if (failure != null)
                throw new UnsatisfiedLinkError(failure);
            if (broken != null)
                throw new IllegalStateException(
                        "The settings libraries cannot be initialised", broken);
        }
    }

    private static String tryAll() {
        StringBuilder reasons = new StringBuilder("The settings libraries cannot be loaded:");
        if (LibraryFiles.anotherHostIsMapped())
            return reasons.append(TWO_VERSIONS).toString();
        String directory = System.getProperty(DIRECTORY_PROPERTY);
        if (directory != null
                && attempt("from " + DIRECTORY_PROPERTY + "=" + directory,
                        () -> loadFrom(Path.of(directory).toAbsolutePath()), reasons)) {
            return null;
        }
        if (attempt("from java.library.path=" + System.getProperty("java.library.path"),
                    NativeLibrary::loadFromLibraryPath, reasons)
                || attempt("from the jar, " + jarFolder(), NativeLibrary::loadFromJar, reasons)) {
            return null;
        }
        return reasons.toString();
    }

    private interface Attempt {
        void run() throws IOException;
    }

    private static boolean attempt(String source, Attempt attempt, StringBuilder reasons) {
        try {
            attempt.run();
            return true;
        } catch (IOException | RuntimeException | LinkageError failed) {
            reasons.append("\n  ").append(source).append(": ").append(failed.getMessage());
            if (String.valueOf(failed.getMessage()).contains(HOST_VERSION))
                reasons.append(TWO_VERSIONS);
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

    /** Copies the libraries to a temporary directory, which it removes once they are mapped. */
    private static void loadFromJar() throws IOException {
        Path directory = Files.createTempDirectory("nativesettings",
                PosixFilePermissions.asFileAttribute(PosixFilePermissions.fromString("rwx------")));
        try {
            for (String file : filesToLoad()) {
                copyFromJar(file, directory);
            }
            loadFrom(directory);
        } finally {
            for (String file : List.of(LibraryFiles.HOST, LibraryFiles.BRIDGE)) {
                Files.deleteIfExists(directory.resolve(file));
            }
            Files.delete(directory);
        }
    }

    private static void copyFromJar(String fileName, Path directory) throws IOException {
        URL resource = NativeLibrary.class.getResource(jarFolder() + fileName);
        if (resource == null)
            throw new FileNotFoundException("no entry " + jarFolder() + fileName);
        URLConnection connection = resource.openConnection();
        // A cached connection would keep the jar open until the JVM ends.
        connection.setUseCaches(false);
        try (InputStream library = connection.getInputStream()) {
            Files.copy(library, directory.resolve(fileName));
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

    private static String jarFolder() {
        String system = System.getProperty("os.name").toLowerCase(Locale.ROOT);
        String machine = System.getProperty("os.arch");
        return "/native/" + system + "-" + (machine.equals("amd64") ? "x86_64" : machine) + "/";
    }
}
