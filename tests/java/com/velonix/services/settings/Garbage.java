package com.velonix.services.settings;

import java.lang.ref.WeakReference;
import java.util.concurrent.Callable;

/** Waits for what happens some time after the last reference to something has gone. */
final class Garbage {
    private static final long PATIENCE_NANOS = 30_000_000_000L;

    private Garbage() {}

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
