package com.velonix.services.settings;

import com.sun.management.ThreadMXBean;
import java.lang.management.ManagementFactory;
import java.util.concurrent.ConcurrentHashMap;

/**
 * Measures reads through the public API: of a held setting whose value is cached, of one that
 * changes before each read, and of one that is looked up by its path each time; also of a plain
 * map. Prints a table with the bytes that a read allocates.
 */
public final class HotReadBench {
    private static final int ROUNDS = 21, TIMES = 1_000_000, WARM_UPS = 15;

    private static int sum;

    private HotReadBench() {}

    private interface Loop {
        int run(int times) throws Exception;
    }

    public static void main(String[] arguments) throws Throwable {
        NativeLibrary.load();
        System.loadLibrary("bridgefloors");
        Literal.prepare();
        try (BenchTrees trees = BenchTrees.ofKeys(1000)) {
            SettingPath node = trees.root.path("top", "n1");
            Setting<Integer> size = node.setting(BenchTrees.INT, Integer.class);
            Setting<String> text = node.setting(BenchTrees.TEXT, String.class);
            Setting<Integer> changing =
                    trees.root.path("top", "n2").setting(BenchTrees.INT, Integer.class);
            ConcurrentHashMap<String, Integer> map = new ConcurrentHashMap<>();
            for (int i = 0; i < 1000; ++i) map.put("top.n1.k" + i, i);
            System.out.println("| read | ns | spread | bytes |\n|---|---:|---:|---:|");
            measure("a held `Setting<Integer>`", TIMES, times -> {
                int total = 0;
                for (int i = 0; i < times; ++i) total += size.get();
                return total;
            });
            measure("a held `Setting<String>`", TIMES, times -> {
                int total = 0;
                for (int i = 0; i < times; ++i) total += text.get().length();
                return total;
            });
            measure("the same with `find()`", TIMES, times -> {
                int total = 0;
                for (int i = 0; i < times; ++i) total += text.find().get().length();
                return total;
            });
            measure("`ConcurrentHashMap` with the same path", TIMES, times -> {
                int total = 0;
                for (int i = 0; i < times; ++i) total += map.get("top.n1.k1");
                return total;
            });
            measure("by path: `root.path(..).setting(..).get()`", TIMES / 50, times -> {
                int total = 0;
                for (int i = 0; i < times; ++i)
                    total += trees.root.path(trees.path(i))
                                     .setting(BenchTrees.INT, Integer.class)
                                     .get();
                return total;
            });
            // A read at a level is not cached.
            String uncached = "uncached: `get(SettingLevel.FACTORY)` of a held `Setting<Integer>`";
            measure(uncached, TIMES / 10, times -> {
                int total = 0;
                for (int i = 0; i < times; ++i) total += size.get(SettingLevel.FACTORY);
                return total;
            });
            measure("a set of a held `Setting<Integer>`, in memory", TIMES / 10, times -> {
                for (int i = 0; i < times; ++i) changing.set(i, SettingLevel.SESSION);
                return times;
            });
            measure("an empty JNI call", TIMES, times -> {
                for (int i = 0; i < times; ++i) Literal.empty();
                return times;
            });
            measure("a held setting, with a set before each read", TIMES / 50, times -> {
                int total = 0;
                for (int i = 0; i < times; ++i) {
                    changing.set(i, SettingLevel.SESSION);
                    total += changing.get();
                }
                return total;
            });
        }
        if (sum == 0)
            System.out.println("nothing was read");
    }

    private static void measure(String work, int times, Loop loop) throws Exception {
        for (int i = 0; i < WARM_UPS; ++i) sum += loop.run(times);
        double[] nanos = new double[ROUNDS];
        long allocated = allocatedBytes();
        for (int round = 0; round < ROUNDS; ++round) {
            long start = System.nanoTime();
            sum += loop.run(times);
            nanos[round] = (System.nanoTime() - start) / (double) times;
        }
        double bytes = (allocatedBytes() - allocated) / (double) ROUNDS / times;
        System.out.printf("| %s | %.1f | %.1f - %.1f | %.0f |%n", work, Rounds.median(nanos),
                Rounds.quantile(nanos, 0.1), Rounds.quantile(nanos, 0.9), bytes);
    }

    private static long allocatedBytes() {
        return ((ThreadMXBean) ManagementFactory.getThreadMXBean())
                .getThreadAllocatedBytes(Thread.currentThread().getId());
    }
}
