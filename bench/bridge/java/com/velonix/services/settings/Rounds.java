package com.velonix.services.settings;

import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;

/**
 * Measures several ways of doing the same work in turn, round after round, so that whatever else
 * the machine does meets all of them. Ratios are medians of the ratios within one round.
 */
final class Rounds {
    /** A loop over the work. */
    interface Loop {
        void run(int times) throws Throwable;
    }

    private static final int WARM_UPS = 6;
    private static final long PART_NANOS = 8_000_000;

    private final int rounds;
    private final StringBuilder table = new StringBuilder();

    Rounds(int rounds) {
        this.rounds = rounds;
        table.append("| work | ns | spread | literal ns | spread | ns / literal | spread |")
                .append(" best ns | ns / best |\n|---|---:|---:|---:|---:|---:|---:|---:|---:|\n");
    }

    /** Measures ours, the literal floor and, where there is one, the best floor. */
    void measure(String work, Loop... ways) throws Throwable {
        int[] times = new int[ways.length];
        for (int way = 0; way < ways.length; ++way) {
            times[way] = 1;
            for (int i = 0; i < WARM_UPS || nanos(ways[way], times[way]) < PART_NANOS / 2; ++i) {
                double each = nanos(ways[way], times[way]) / (double) times[way];
                times[way] = (int) Math.max(1, PART_NANOS / Math.max(each, 1));
            }
        }
        double[][] each = new double[ways.length][rounds];
        for (int round = 0; round < rounds; ++round) {
            for (int i = 0; i < ways.length; ++i) {
                int way = (i + round) % ways.length;
                each[way][round] = nanos(ways[way], times[way]) / (double) times[way];
            }
        }
        List<String> row = new ArrayList<>(List.of(work, figure(median(each[0])), spread(each[0])));
        row.addAll(List.of(figure(median(each[1])), spread(each[1])));
        double[] ratios = ratios(each[0], each[1]);
        row.add(ratio(median(ratios)));
        row.add(ratio(quantile(ratios, 0.1)) + " - " + ratio(quantile(ratios, 0.9)));
        boolean hasBest = ways.length > 2;
        row.add(hasBest ? figure(median(each[2])) : "");
        row.add(hasBest ? ratio(median(ratios(each[0], each[2]))) : "");
        addRow(row);
    }

    /** Adds a row that was measured elsewhere. */
    void addRow(List<String> cells) {
        String row = "| " + String.join(" | ", cells) + " |\n";
        System.err.print(row);
        table.append(row);
    }

    @Override
    public String toString() {
        return table.toString();
    }

    static double median(double[] values) {
        return quantile(values, 0.5);
    }

    static double quantile(double[] values, double part) {
        double[] sorted = values.clone();
        Arrays.sort(sorted);
        return sorted[(int) Math.round(part * (sorted.length - 1))];
    }

    static String ratio(double value) {
        return String.format("%.2f", value);
    }

    private static long nanos(Loop loop, int times) throws Throwable {
        long start = System.nanoTime();
        loop.run(times);
        return System.nanoTime() - start;
    }

    private static double[] ratios(double[] over, double[] under) {
        double[] ratios = new double[over.length];
        for (int i = 0; i < ratios.length; ++i) {
            ratios[i] = over[i] / under[i];
        }
        return ratios;
    }

    private static String figure(double nanos) {
        return nanos < 100 ? String.format("%.1f", nanos) : String.format("%,.0f", nanos);
    }

    /** From the tenth to the ninetieth of a hundred. */
    private static String spread(double[] values) {
        return figure(quantile(values, 0.1)) + " - " + figure(quantile(values, 0.9));
    }
}
