package com.velonix.services.settings;

import java.io.FileNotFoundException;
import java.io.IOException;
import java.io.InputStream;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.attribute.PosixFilePermissions;
import java.util.List;
import java.util.Locale;

/**
 * Loads the two native libraries, once for this class loader. They are looked for in the directory
 * named by the property {@value #DIRECTORY_PROPERTY}, then on {@code java.library.path}, then
 * inside the jar.
 *
 * <p>Loading initialises the classes that have native methods, and those that reading and writing
 * need, so none of these may load the libraries from its own static initialiser: two threads could
 * then wait for each other. Whatever makes a native handle calls {@link #load()} first.
 *
 * <p>This class has no static initialiser, and everything is loaded and initialised on a thread of
 * its own: a caller may have next to no stack left, and a class whose initialisation that breaks
 * off can never be used again, nor a library whose classes were not all found. What fails before
 * is tried again by the next caller.
 */
final class NativeLibrary {
    static final String DIRECTORY_PROPERTY = "com.velonix.services.settings.library.path";

    private static volatile boolean ready;

    /** Both guarded by the class: whether the libraries are in, and why they cannot be. */
    private static boolean loaded;
    private static String failure;

    private NativeLibrary() {}

    /**
     * Returns once the libraries are loaded.
     *
     * @throws UnsatisfiedLinkError every attempt with the reason why it failed
     */
    static void load() {
        if (!ready)
            new Loader().runToTheEnd();
    }

    private static synchronized String loadOnce() throws Exception {
        if (ready || failure != null)
            return failure;
        if (!loaded) {
            failure = tryAll();
            loaded = failure == null;
        }
        if (loaded) {
            InitialClasses.initialise();
            ready = true;
        }
        return failure;
    }

    /** Any number of them may run: they do their work one after the other, and only once. */
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
                } catch (InterruptedException heeded) {
                    interrupted = true;
                }
            }
            if (interrupted)
                Thread.currentThread().interrupt();
            if (failure != null)
                throw new UnsatisfiedLinkError(failure);
            if (broken != null)
                throw new IllegalStateException("the settings cannot be set up", broken);
        }
    }

    private static String tryAll() {
        StringBuilder reasons = new StringBuilder("The settings libraries cannot be loaded:");
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

    private static boolean attempt(String what, Attempt attempt, StringBuilder reasons) {
        try {
            attempt.run();
            return true;
        } catch (IOException | RuntimeException | LinkageError failed) {
            reasons.append("\n  ").append(what).append(": ").append(failed.getMessage());
            return false;
        }
    }

    private static void loadFromLibraryPath() {
        for (String name : names()) {
            System.loadLibrary(name);
        }
    }

    private static void loadFrom(Path directory) {
        for (String name : names()) {
            System.load(directory.resolve(System.mapLibraryName(name)).toString());
        }
    }

    private static void loadFromJar() throws IOException {
        Path directory = Files.createTempDirectory("nativesettings",
                PosixFilePermissions.asFileAttribute(PosixFilePermissions.fromString("rwx------")));
        // Deleted in reverse order: the folder last.
        directory.toFile().deleteOnExit();
        for (String name : names()) {
            String fileName = System.mapLibraryName(name);
            Path file = directory.resolve(fileName);
            file.toFile().deleteOnExit();
            String resource = jarFolder() + fileName;
            try (InputStream library = NativeLibrary.class.getResourceAsStream(resource)) {
                if (library == null)
                    throw new FileNotFoundException("no entry " + resource);
                Files.copy(library, file);
            }
        }
        loadFrom(directory);
    }

    /** In loading order: the second is linked to the first. */
    private static List<String> names() {
        return List.of("settingshost", "nativesettings");
    }

    private static String jarFolder() {
        String system = System.getProperty("os.name").toLowerCase(Locale.ROOT);
        String machine = System.getProperty("os.arch");
        return "/native/" + system + "-" + (machine.equals("amd64") ? "x86_64" : machine) + "/";
    }
}
