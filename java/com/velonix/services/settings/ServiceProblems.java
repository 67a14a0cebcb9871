package com.velonix.services.settings;

import java.lang.invoke.MethodHandles;
import java.lang.invoke.VarHandle;
import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.util.concurrent.atomic.AtomicBoolean;

/**
 * Fetches the problems of the settings service and reports them. The service may notice them under
 * its locks and on native threads, so it calls nobody: it counts them, and every Java thread looks
 * at the count, in the service's memory, when a call of it ends. {@code service/problems.h}
 */
final class ServiceProblems {
    private static final ByteBuffer COUNT = NativeLane.takeProblems();
    private static final VarHandle LONGS =
            MethodHandles.byteBufferViewVarHandle(long[].class, ByteOrder.nativeOrder());
    private static final AtomicBoolean REPORTING = new AtomicBoolean();

    private static volatile long reported;

    static {
        // Links the access to the memory while there is stack for it.
        if (COUNT != null)
            count();
    }

    private ServiceProblems() {}

    /** Reports the problems that nobody has reported. The caller holds no lock. */
    static void reportNew() {
        try {
            if (COUNT != null && count() != reported)
                reportAll();
        } catch (StackOverflowError postponed) {
            // The call itself has succeeded; the next one reports.
        }
    }

    private static void reportAll() {
        // Else another thread does so, or this one, and its handler uses settings.
        if (!REPORTING.compareAndSet(false, true))
            return;
        try {
            for (long count = count(); count != reported; count = count()) {
                String[] problems = NativeLane.fetchProblems();
                reported = count;
                for (int i = 0; problems != null && i < problems.length; ++i)
                    SettingProblems.report(problems[i]);
            }
        } finally {
            REPORTING.set(false);
        }
    }

    private static long count() {
        return (long) LONGS.getAcquire(COUNT, 0);
    }
}
