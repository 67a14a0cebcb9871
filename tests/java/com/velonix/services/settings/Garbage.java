package com.velonix.services.settings;

import java.lang.ref.WeakReference;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.concurrent.Callable;

/** Waits for what happens some time after the last reference to something has gone. */
final class Garbage {
    private static final long PATIENCE_NANOS = 30_000_000_000L;

    private Garbage() {}

    /** The memory of the process that is resident, native memory too. */
    static long residentBytes() throws Exception {
        for (String line : Files.readAllLines(Path.of("/proc/self/status"))) {
            if (line.startsWith("VmRSS:"))
                return 1024 * Long.parseLong(line.replaceAll("\\D", ""));
        }
        throw new AssertionError("no VmRSS");
    }

    /** Whether what is referred to goes away. */
    static boolean takesAway(WeakReference<?> reference) throws Exception {
        return collectedUntil(() -> reference.get() == null);
    }

    /**
     * Collects garbage until an effect can be seen, or patience has run out.
     *
     * @return whether the effect could be seen at last
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
