package com.velonix.services.settings;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;

/**
 * Measures several ways of doing the same work in turn, round after round, so that other load of
 * the machine affects all of them alike. The first way is ours. A ratio is ours divided by another
 * way: the median of the ratios of all rounds.
 *
 * <p>A result is a line of work, way, unit, median, 10th and 90th percentile, and ratio, separated
 * by tabs.
 */
final class Rounds {
    /** A loop over the work that stores its results in the sink. */
    interface Loop {
        void run(int times, Sink sink) throws Throwable;
    }

    private static final int WARM_UPS = 6;
    private static final long PART_NANOS = 8_000_000;
    /** Work that takes longer than this gets few rounds. */
    private static final long SLOW_NANOS = 100_000_000;
    private static final int SLOW_ROUNDS = 5, SLOW_WARM_UPS = 2;

    private final int rounds;
    private final List<String> results = new ArrayList<>();

    Rounds(int rounds) {
        this.rounds = rounds;
    }

    /** Measures ours and the literal floor. */
    void measure(String work, Loop... ways) throws Throwable {
        String[] names = {"ours", "literal"};
        Map<String, Loop> named = new LinkedHashMap<>();
        for (int i = 0; i < ways.length; ++i) named.put(names[i], ways[i]);
        measure(work, named);
    }

    /** Measures the nanoseconds of each way; ours is the first. */
    void measure(String work, Map<String, Loop> named) throws Throwable {
        Loop[] ways = named.values().toArray(new Loop[0]);
        int[] times = new int[ways.length];
        long longest = 0;
        for (int way = 0; way < ways.length; ++way) {
            times[way] = 1;
            for (int i = 0; i < WARM_UPS; ++i) {
                long took = nanos(ways[way], times[way]);
                if (i >= SLOW_WARM_UPS && took / times[way] > SLOW_NANOS)
                    break;
                times[way] = (int) Math.max(1, PART_NANOS / Math.max(took / times[way], 1));
            }
            // Gives the compiler time for late compilations.
            while (nanos(ways[way], times[way]) < PART_NANOS / 2) times[way] *= 2;
            longest = Math.max(longest, nanos(ways[way], times[way]) / times[way]);
        }
        double[][] each = new double[ways.length][longest > SLOW_NANOS ? SLOW_ROUNDS : rounds];
        for (int round = 0; round < each[0].length; ++round) {
            for (int i = 0; i < ways.length; ++i) {
                int way = (i + round) % ways.length;
                each[way][round] = nanos(ways[way], times[way]) / (double) times[way];
            }
        }
        record(work, named.keySet(), "ns", each);
    }

    /**
     * Records figures that the caller has measured: a row for each way, a figure for each round.
     */
    void record(String work, Iterable<String> names, String unit, double[][] each) {
        int way = 0;
        for (String name : names) {
            double[] ratios = new double[each[way].length];
            for (int i = 0; i < ratios.length; ++i) ratios[i] = each[0][i] / each[way][i];
            String result = String.format("%s\t%s\t%s\t%.3f\t%.3f\t%.3f\t%.4f", work, name, unit,
                    median(each[way]), quantile(each[way], 0.1), quantile(each[way], 0.9),
                    median(ratios));
            System.out.println(result);
            results.add(result);
            ++way;
        }
    }

    void write(Path file) throws IOException {
        Files.write(file, results);
    }

    static double median(double[] values) {
        return quantile(values, 0.5);
    }

    static double quantile(double[] values, double part) {
        double[] sorted = values.clone();
        Arrays.sort(sorted);
        return sorted[(int) Math.round(part * (sorted.length - 1))];
    }

    static long nanos(Loop loop, int times) throws Throwable {
        Sink sink = new Sink();
        long start = System.nanoTime();
        loop.run(times, sink);
        return System.nanoTime() - start;
    }
}
