package com.velonix.services.settings;

import java.lang.ref.WeakReference;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.concurrent.Callable;

/** Waits for the effects of garbage collection. */
final class Garbage {
    private static final long PATIENCE_NANOS = 30_000_000_000L;

    private Garbage() {}

    /** Returns the resident memory of the process, native memory included. */
    static long residentBytes() throws Exception {
        for (String line : Files.readAllLines(Path.of("/proc/self/status"))) {
            if (line.startsWith("VmRSS:"))
                return 1024 * Long.parseLong(line.replaceAll("\\D", ""));
        }
        throw new AssertionError("no VmRSS");
    }

    /** Tells whether the object is collected in time. */
    static boolean collects(WeakReference<?> reference) throws Exception {
        return collectedUntil(() -> reference.get() == null);
    }

    /**
     * Collects garbage until an effect shows, for at most {@link #PATIENCE_NANOS}.
     *
     * @return true if the effect has shown
     */
    static boolean collectedUntil(Callable<Boolean> effect) throws Exception {
        long end = System.nanoTime() + PATIENCE_NANOS;
        while (!effect.call()) {
            if (System.nanoTime() - end > 0)
                return false;
            System.gc();
            Thread.sleep(10);
        }
        return true;
    }
}
