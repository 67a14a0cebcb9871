import java.io.BufferedReader;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import java.util.prefs.Preferences;

/**
 * Compares java.util.prefs on the settings with the back end of the JDK, and prints a table.
 *
 * <p>PrefsBench DIRECTORY measures both in turn, each in processes of its own, which keep their
 * preferences below the directory; PrefsBench alone measures the back end of its process.
 */
public final class PrefsBench {
    private static final int PROCESSES = 3;
    private static final int KEYS = 100;
    private static final int ROUNDS = 31;
    private static final int GETS = 20_000;
    private static final int PUTS = 50;

    /** Something to measure, a number of times. */
    private interface Work {
        void run(int times) throws Exception;
    }

    private static final Preferences NODE = Preferences.userRoot().node("bench/prefs");

    /** A use of each value that is read, so that no read can be left out. */
    private static long used;

    private PrefsBench() {}

    public static void main(String[] arguments) throws Exception {
        if (arguments.length == 0)
            measure();
        else
            compare(Path.of(arguments[0]));
    }

    private static void measure() throws Exception {
        String[] present = new String[KEYS];
        String[] absent = new String[KEYS];
        for (int i = 0; i < KEYS; ++i) {
            present[i] = "key" + i;
            absent[i] = "none" + i;
            NODE.put(present[i], "value " + i);
        }
        print("get of a present key", GETS, times -> read(present, times));
        print("get of an absent key", GETS, times -> read(absent, times));
        print("put and flush", PUTS, times -> {
            for (int i = 0; i < times; ++i) {
                NODE.put(present[i % KEYS], "value " + ++used);
                NODE.flush();
            }
        });
    }

    private static void read(String[] keys, int times) {
        for (int i = 0; i < times; ++i) used += NODE.get(keys[i % KEYS], "default").length();
    }

    /** Prints the median of the rounds, in microseconds for one time. The first rounds warm up. */
    private static void print(String name, int times, Work work) throws Exception {
        double[] rounds = new double[ROUNDS];
        for (int round = -ROUNDS; round < ROUNDS; ++round) {
            long start = System.nanoTime();
            work.run(times);
            rounds[Math.max(round, 0)] = (System.nanoTime() - start) / 1e3 / times;
        }
        System.out.println(name + "\t" + median(rounds));
    }

    private static void compare(Path directory) throws Exception {
        Map<String, List<Double>> ours = new LinkedHashMap<>();
        Map<String, List<Double>> jdk = new LinkedHashMap<>();
        for (int process = 0; process < PROCESSES; ++process) {
            run(directory, "com.velonix.services.settings.prefs.SettingsPreferencesFactory", ours);
            run(directory, "java.util.prefs.FileSystemPreferencesFactory", jdk);
        }
        System.out.println("| | ours, us | the JDK's, us | ratio |\n|---|---|---|---|");
        for (String name : ours.keySet()) {
            double our = median(ours.get(name));
            double theirs = median(jdk.get(name));
            System.out.printf("| %s | %.3f | %.3f | %.2f |%n", name, our, theirs, our / theirs);
        }
    }

    private static void run(Path directory, String factory, Map<String, List<Double>> results)
            throws Exception {
        ProcessBuilder builder = new ProcessBuilder(
                Path.of(System.getProperty("java.home"), "bin", "java").toString(),
                "-Djava.util.prefs.PreferencesFactory=" + factory,
                "-Djava.util.prefs.userRoot=" + directory.resolve("jdk"), "-cp",
                System.getProperty("java.class.path"), PrefsBench.class.getName());
        builder.environment().put("SETTINGS_USERDIR", directory.resolve("user").toString());
        builder.environment().put("SETTINGS_FACTORYDIR", directory.resolve("factory").toString());
        builder.redirectError(ProcessBuilder.Redirect.INHERIT);
        Process child = builder.start();
        try (BufferedReader lines = child.inputReader()) {
            for (String line; (line = lines.readLine()) != null;) {
                String[] parts = line.split("\t");
                results.computeIfAbsent(parts[0], name -> new ArrayList<>())
                        .add(Double.valueOf(parts[1]));
            }
        }
        if (child.waitFor() != 0)
            throw new IllegalStateException(factory + " has failed");
    }

    private static double median(List<Double> values) {
        return median(values.stream().mapToDouble(Double::doubleValue).toArray());
    }

    private static double median(double[] values) {
        double[] sorted = values.clone();
        Arrays.sort(sorted);
        return sorted[sorted.length / 2];
    }
}
