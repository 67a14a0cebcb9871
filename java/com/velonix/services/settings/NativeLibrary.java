package com.velonix.services.settings;

/**
 * Loads the two native libraries, once for this class loader, by {@link LibrarySearch}.
 *
 * <p>The host, which owns the trees, is loaded once in a process: another class loader has a bridge
 * of its own, which the dynamic linker binds to the host that is loaded. A bridge that was built
 * for another version of the host is refused.
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
    /** A constant string, so all class loaders of the JVM share the object. */
    private static final Object LOADING_IN_ANY_LOADER = "com.velonix.services.settings loading";

    private static volatile boolean ready;

    private static boolean loaded; // guarded by the class
    private static String failure; // guarded by the class; null until loading has failed

    private NativeLibrary() {}

    /**
     * Returns once the libraries are loaded.
     *
     * @throws UnsatisfiedLinkError if they cannot be loaded, or are of a version that does not
     *     work with these classes; the message has the reasons
     */
    static void load() {
        if (!ready)
            new Loader().runToTheEnd();
    }

    static boolean isLoaded() {
        return ready;
    }

    private static synchronized String loadOnce() throws Exception {
        if (ready || failure != null)
            return failure;
        if (!loaded) {
            synchronized (LOADING_IN_ANY_LOADER) {
                failure = LibrarySearch.load();
            }
            if (failure == null)
                failure = LibrarySearch.versionProblem(NativeLane.librariesVersion());
            loaded = failure == null;
        }
        if (loaded) {
            EagerInitialisation.initialise();
            ServiceProperties.pass();
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
}
