package com.velonix.services.settings;

import java.util.Map;
import java.util.concurrent.CountDownLatch;

/** How many times one thread's rate two threads reach that do the same work at once. */
final class TwoThreads {
    private static final int ROUNDS = 21, WARM_UPS = 3, TIMES = 50_000;

    private TwoThreads() {}

    static void measure(Rounds rounds, String work, Map<String, Rounds.Loop> ways)
            throws InterruptedException {
        double[][] gains = new double[ways.size()][ROUNDS];
        for (int round = -WARM_UPS; round < ROUNDS; ++round) {
            int way = 0;
            for (Rounds.Loop loop : ways.values()) {
                double one = rate(loop, 1), gain = rate(loop, 2) / one;
                if (round >= 0)
                    gains[way][round] = gain;
                ++way;
            }
        }
        rounds.record(work, ways.keySet(), "times", gains);
    }

    private static double rate(Rounds.Loop loop, int threads) throws InterruptedException {
        CountDownLatch ready = new CountDownLatch(threads), go = new CountDownLatch(1);
        long[] nanos = new long[threads];
        Thread[] workers = new Thread[threads];
        for (int i = 0; i < threads; ++i) {
            int mine = i;
            workers[i] = new Thread(() -> {
                try {
                    ready.countDown();
                    go.await();
                    long start = System.nanoTime();
                    loop.run(TIMES);
                    nanos[mine] = System.nanoTime() - start;
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
            rate += TIMES / (double) nanos[i];
        }
        return rate;
    }
}
