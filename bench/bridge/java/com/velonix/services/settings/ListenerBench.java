package com.velonix.services.settings;

import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;

/**
 * Measures many listeners, each a separate object on a separate node: the times to register and to
 * close one among 1,000 and among 10,000, and its memory. Prints a table.
 */
public final class ListenerBench {
    private static final int[] COUNTS = {1000, 10_000};
    private static final int ROUNDS = 15;

    private ListenerBench() {}

    public static void main(String[] arguments) throws Exception {
        // Memory first: later rounds reuse memory that earlier ones have freed.
        warmUp();
        memory(10_000);
        System.out.println("| listeners | register, ns each | spread | close, ns each | spread |");
        System.out.println("|---:|---:|---:|---:|---:|");
        for (int count : COUNTS) times(count);
    }

    private static void warmUp() throws Exception {
        try (SettingPath root = treeOf(200)) {
            for (int round = 0; round < 100; ++round) closeAll(register(root, 200));
        }
    }

    private static void memory(int count) throws Exception {
        try (SettingPath root = treeOf(count)) {
            // The listeners and paths belong to the program, so they are made before the
            // measurement.
            SettingPath[] paths = paths(root, count);
            SettingListener[] listeners = listeners(count);
            Registration[] registrations = new Registration[count];
            long heap = heapUsed();
            long resident = resident();
            for (int i = 0; i < count; ++i) registrations[i] = paths[i].addListener(listeners[i]);
            long nativeBytes = (resident() - resident) / count;
            long javaBytes = (heapUsed() - heap) / count;
            System.out.printf("memory of one registration among %,d: %,d bytes of Java heap, %,d"
                            + " bytes of native memory%n%n",
                    count, javaBytes, nativeBytes);
            closeAll(List.of(registrations));
        }
    }

    private static void times(int count) throws Exception {
        double[] registering = new double[ROUNDS];
        double[] closing = new double[ROUNDS];
        try (SettingPath root = treeOf(count)) {
            for (int round = 0; round < ROUNDS; ++round) {
                long start = System.nanoTime();
                List<Registration> registrations = register(root, count);
                long middle = System.nanoTime();
                closeAll(registrations);
                registering[round] = (middle - start) / (double) count;
                closing[round] = (System.nanoTime() - middle) / (double) count;
            }
        }
        System.out.printf("| %,d | %s | %s |%n", count, cells(registering), cells(closing));
    }

    private static String cells(double[] nanos) {
        return String.format("%,.0f | %,.0f - %,.0f", Rounds.median(nanos),
                Rounds.quantile(nanos, 0.1), Rounds.quantile(nanos, 0.9));
    }

    private static SettingPath treeOf(int nodes) throws SettingException {
        SettingPath root = SettingPath.standalone();
        for (int i = 0; i < nodes; ++i) root.addNode("n" + i);
        return root;
    }

    private static List<Registration> register(SettingPath root, int count)
            throws SettingException {
        List<Registration> registrations = new ArrayList<>(count);
        for (int i = 0; i < count; ++i)
            registrations.add(root.path("n" + i).addListener(new SettingListener() {}));
        return registrations;
    }

    private static void closeAll(List<Registration> registrations) {
        registrations.forEach(Registration::close);
    }

    private static SettingPath[] paths(SettingPath root, int count) {
        SettingPath[] paths = new SettingPath[count];
        for (int i = 0; i < count; ++i) paths[i] = root.path("n" + i);
        return paths;
    }

    private static SettingListener[] listeners(int count) {
        SettingListener[] listeners = new SettingListener[count];
        for (int i = 0; i < count; ++i) listeners[i] = new SettingListener() {};
        return listeners;
    }

    private static long heapUsed() {
        System.gc();
        return Runtime.getRuntime().totalMemory() - Runtime.getRuntime().freeMemory();
    }

    private static long resident() throws Exception {
        for (String line : Files.readAllLines(Path.of("/proc/self/status"))) {
            if (line.startsWith("VmRSS:"))
                return 1024 * Long.parseLong(line.replaceAll("\\D", ""));
        }
        throw new IllegalStateException("no VmRSS");
    }
}
