package com.velonix.services.settings;

import java.lang.ref.Reference;
import java.util.ArrayList;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;

/**
 * What things take of the Java heap, and ours of the native one too, in bytes each. The others have
 * nothing there, and what the machine itself has there changes all the time.
 */
final class Memory {
    /** Makes what is measured, and answers what keeps it alive. */
    interface Maker {
        Object make() throws Exception;
    }

    /** The same for what is made out of something that is not to be counted. */
    interface Step<T> {
        Object make(T prepared) throws Exception;
    }

    /** Makes something that is not to be counted. */
    interface Preparation<T> {
        T make() throws Exception;
    }

    private static final int ROUNDS = 3;
    private static final int SETTLING_RUNS = 2;

    private final Rounds rounds;
    private final String work;
    private final int count;
    private final Map<String, double[]> ways = new LinkedHashMap<>();

    /** Measures things of which each maker makes that many. */
    Memory(Rounds rounds, String work, int count) {
        this.rounds = rounds;
        this.work = work;
        this.count = count;
    }

    Memory of(String way, Maker maker) throws Exception {
        return of(way, () -> null, nothing -> maker.make());
    }

    <T> Memory of(String way, Preparation<T> preparation, Step<T> step) throws Exception {
        double[] each = new double[ROUNDS];
        // The first time also loads classes and compiles.
        for (int round = -1; round < ROUNDS; ++round) {
            T prepared = preparation.make();
            boolean ours = way.equals("ours");
            long before = used(ours);
            Object kept = step.make(prepared);
            long after = used(ours);
            Reference.reachabilityFence(prepared);
            Reference.reachabilityFence(kept);
            close(kept);
            close(prepared);
            if (round >= 0)
                each[round] = (after - before) / (double) count;
        }
        ways.put(way, each);
        return this;
    }

    void record() {
        rounds.record(work, ways.keySet(), "bytes", ways.values().toArray(new double[0][]));
    }

    /** Makes a list of `count` things. */
    static Maker many(int count, Maker one) {
        return () -> {
            List<Object> all = new ArrayList<>(count);
            for (int i = 0; i < count; ++i) all.add(one.make());
            return all;
        };
    }

    private static void close(Object kept) throws Exception {
        if (kept instanceof Iterable<?> all) {
            for (Object one : all) close(one);
        } else if (kept instanceof AutoCloseable one) {
            one.close();
        }
    }

    private static long used(boolean nativeToo) {
        Runtime runtime = Runtime.getRuntime();
        for (int i = 0; i < SETTLING_RUNS; ++i) System.gc();
        return runtime.totalMemory() - runtime.freeMemory()
                + (nativeToo ? Literal.nativeBytes() : 0);
    }
}
