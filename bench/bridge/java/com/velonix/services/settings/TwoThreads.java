package com.velonix.services.settings;

import java.util.Map;
import java.util.concurrent.CountDownLatch;

/** Measures the rate of two threads at the same work as a multiple of one thread's rate. */
final class TwoThreads {
    private static final int ROUNDS = 21, WARM_UPS = 3;
    /** The least time of one run, much longer than the start of two threads. */
    private static final long PART_NANOS = 20_000_000;

    private TwoThreads() {}

    static void measure(Rounds rounds, String work, Map<String, Rounds.Loop> ways)
            throws Throwable {
        double[][] gains = new double[ways.size()][ROUNDS];
        int way = 0;
        int[] times = new int[ways.size()];
        for (Rounds.Loop loop : ways.values()) times[way++] = timesOf(loop);
        for (int round = -WARM_UPS; round < ROUNDS; ++round) {
            way = 0;
            for (Rounds.Loop loop : ways.values()) {
                double one = rate(loop, times[way], 1), gain = rate(loop, times[way], 2) / one;
                if (round >= 0)
                    gains[way][round] = gain;
                ++way;
            }
        }
        rounds.record(work, ways.keySet(), "times", gains);
    }

    private static int timesOf(Rounds.Loop loop) throws Throwable {
        int times = 1000;
        while (Rounds.nanos(loop, times) < PART_NANOS) times *= 2;
        return times;
    }

    /** Returns the number of times per nanosecond that all threads together do the work. */
    private static double rate(Rounds.Loop loop, int times, int threads)
            throws InterruptedException {
        CountDownLatch ready = new CountDownLatch(threads), go = new CountDownLatch(1);
        long[] nanos = new long[threads];
        Thread[] workers = new Thread[threads];
        for (int i = 0; i < threads; ++i) {
            int mine = i;
            workers[i] = new Thread(() -> {
                try {
                    ready.countDown();
                    go.await();
                    nanos[mine] = Rounds.nanos(loop, times);
                } catch (Throwable failed) {
                    throw new IllegalStateException(failed);
                }
            });
            workers[i].start();
        }
        ready.await();
        go.countDown();
        double rate = 0;
        for (int i = 0; i < threads; ++i) {
            workers[i].join();
            if (nanos[i] == 0)
                throw new IllegalStateException("a thread has failed");
            rate += times / (double) nanos[i];
        }
        return rate;
    }
}
