package com.velonix.services.settings;

import java.lang.ref.Reference;
import java.util.ArrayList;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;

/**
 * Measures the bytes of memory of one object: on the Java heap, and for our settings also on the
 * native heap. The others use none of the latter, and the JVM's own use of it varies.
 */
final class Memory {
    /** Makes the measured objects, and returns an object that refers to them. */
    interface Maker {
        Object make() throws Exception;
    }

    /** Makes the measured objects from a prepared one that is not counted. */
    interface Step<T> {
        Object make(T prepared) throws Exception;
    }

    /** Makes an object that is not counted. */
    interface Preparation<T> {
        T make() throws Exception;
    }

    private static final int ROUNDS = 3;
    private static final int SETTLING_RUNS = 2;

    private final Rounds rounds;
    private final String work;
    private final int count;
    private final Map<String, double[]> ways = new LinkedHashMap<>();

    /** Prepares to measure objects of which each maker makes that many. */
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
        // The first round also loads and compiles classes, so it is not counted.
        for (int round = -1; round < ROUNDS; ++round) {
            T prepared = preparation.make();
            boolean ours = way.equals("ours");
            long before = used(ours);
            Object made = step.make(prepared);
            long after = used(ours);
            Reference.reachabilityFence(prepared);
            Reference.reachabilityFence(made);
            close(made);
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

    /** Returns a maker of a list of `count` objects. */
    static Maker many(int count, Maker one) {
        return () -> {
            List<Object> all = new ArrayList<>(count);
            for (int i = 0; i < count; ++i) all.add(one.make());
            return all;
        };
    }

    private static void close(Object made) throws Exception {
        if (made instanceof Iterable<?> all) {
            for (Object one : all) close(one);
        } else if (made instanceof AutoCloseable one) {
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
