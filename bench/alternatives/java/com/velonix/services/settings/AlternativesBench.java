package com.velonix.services.settings;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.Comparator;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import java.util.stream.Stream;

/**
 * Measures the Java API, its floor and other libraries for settings in turn in one run. The
 * arguments are the file for the results, a directory on a disk, which is emptied, and the number
 * of rounds.
 */
public final class AlternativesBench {
    /** Makes the loop of an alternative. */
    private interface Work {
        Rounds.Loop of(Alternative alternative) throws Exception;
    }

    private static final int SMALL = 1000, LARGE = 100_000;
    private static final int ROOTS = 10_000, LISTENERS = 5000;
    /** Far more than the 1,024 settings that a tree caches by their paths. */
    private static final int SETTINGS = 50_000;

    private final Rounds rounds;
    private final Path directory;

    private AlternativesBench(Path directory, int rounds) {
        this.directory = directory;
        this.rounds = new Rounds(rounds);
    }

    public static void main(String[] arguments) throws Throwable {
        Path directory = Path.of(arguments[1]);
        delete(directory);
        Path factory = Files.createDirectories(directory.resolve("factory"));
        // The settings of the process, which transactions and the user level need.
        Files.writeString(
                factory.resolve("bench.xml"), BenchTrees.xml(Alternative.changedNode(LARGE) + 1));
        NativeLibrary.load();
        SettingTestEnvironment.setDirectories(factory, directory.resolve("user"));
        System.loadLibrary("bridgefloors");
        Literal.prepare();
        AlternativesBench bench = new AlternativesBench(
                directory, arguments.length > 2 ? Integer.parseInt(arguments[2]) : 21);
        bench.small();
        bench.large();
        for (int keys : new int[] {LARGE / 10, LARGE}) bench.files(keys);
        bench.memory();
        bench.rounds.write(Path.of(arguments[0]));
        delete(directory);
        System.exit(0);
    }

    private void small() throws Throwable {
        try (BenchTrees trees = BenchTrees.ofKeys(SMALL)) {
            Map<String, Alternative> all = filled(trees, SMALL);
            for (Alternative each : all.values()) each.fillListed();
            reading(all, SMALL);
            measure("deliver 1", all, each -> each.deliver(1));
            measure("deliver 100", all, each -> each.deliver(100));
            measure("list", all, Alternative::list);
            measure("set durably", all, each -> each.setDurably(directory));
            close(all);
        }
    }

    private void large() throws Throwable {
        try (BenchTrees trees = BenchTrees.ofKeys(LARGE)) {
            Map<String, Alternative> all = filled(trees, LARGE);
            reading(all, LARGE);
            TwoThreads.measure(
                    rounds, "two threads", loops(all, each -> each.read(BenchTrees.INT)));
            measure("read held", all, Alternative::readHeld);
            TwoThreads.measure(rounds, "two threads held", loops(all, Alternative::readHeld));
            measure("set", all, Alternative::set);
            measure("change 1000", all, each -> each.change(SMALL));
            measure("change 100000", all, each -> each.change(LARGE));
            close(all);
        }
    }

    private void reading(Map<String, Alternative> all, int keys) throws Throwable {
        measure("read int " + keys, all, each -> each.read(BenchTrees.INT));
        measure("read text " + keys, all, each -> each.read(BenchTrees.TEXT));
        measure("read doubles " + keys, all, each -> each.read(BenchTrees.DOUBLES));
    }

    private void files(int keys) throws Throwable {
        try (BenchTrees trees = BenchTrees.ofKeys(keys)) {
            Map<String, Alternative> all = filled(trees, keys);
            // Written first, because each loads the file that it has written.
            measure("write " + keys, all, each -> each.write(directory));
            measure("load " + keys, all, each -> each.load(directory));
            close(all);
        }
    }

    private void memory() throws Exception {
        Path file = directory.resolve("memory.xml");
        Files.writeString(file, BenchTrees.xml(LARGE / BenchTrees.KEYS_PER_NODE));
        new Memory(rounds, "memory key", LARGE)
                .of("ours", () -> SettingPath.load(file))
                .of("prefs", () -> filled(new JavaPreferences(LARGE)))
                .of("Equinox", () -> filled(new EquinoxPreferences(LARGE)))
                .of("Commons", () -> filled(new CommonsConfiguration(LARGE)))
                .of("map", () -> filled(new PlainMap(LARGE)))
                .record();
        new Memory(rounds, "memory root", ROOTS)
                .of("ours", Memory.many(ROOTS, SettingPath::processRoot))
                .record();
        // The names are not counted: a program has them anyway.
        String[][] nodes = new String[Alternative.changedNode(SETTINGS) + 1][];
        Arrays.setAll(nodes, BenchTrees::nodePath);
        String[] keys = new String[SETTINGS];
        Arrays.setAll(keys, Alternative::changedKey);
        new Memory(rounds, "memory setting", SETTINGS)
                .of("ours", () -> SettingPath.load(file), root -> settings(root, nodes, keys))
                .record();
        new Memory(rounds, "memory listener", LISTENERS)
                .of("ours", AlternativesBench::ourListed, AlternativesBench::listen)
                .of("prefs", () -> listed(new JavaPreferences(SMALL)), AlternativesBench::listen)
                .of("Equinox",
                        () -> listed(new EquinoxPreferences(SMALL)), AlternativesBench::listen)
                .of("Commons",
                        () -> listed(new CommonsConfiguration(SMALL)), AlternativesBench::listen)
                .record();
    }

    /** Makes settings with paths of their own, and reads each once. */
    private static Object settings(SettingPath root, String[][] nodes, String[] keys)
            throws Exception {
        Setting<?>[] settings = new Setting<?>[ keys.length ];
        for (int i = 0; i < keys.length; ++i) {
            settings[i] =
                    root.path(nodes[Alternative.changedNode(i)]).setting(keys[i], Integer.class);
            settings[i].get();
        }
        return settings;
    }

    private static Alternative filled(Alternative alternative) throws Exception {
        alternative.fill();
        return alternative;
    }

    private static Alternative listed(Alternative alternative) throws Exception {
        alternative.fillListed();
        return alternative;
    }

    private static Alternative ourListed() throws Exception {
        return listed(new OurSettings(BenchTrees.ofKeys(SMALL), SMALL));
    }

    private static Object listen(Alternative alternative) throws Exception {
        for (int i = 0; i < LISTENERS; ++i) alternative.listen(i);
        return null;
    }

    private static Map<String, Alternative> filled(BenchTrees trees, int keys) throws Exception {
        Map<String, Alternative> all = new LinkedHashMap<>();
        all.put("ours", new OurSettings(trees, keys));
        all.put("floor", new Floor(trees, keys));
        all.put("prefs", new JavaPreferences(keys));
        all.put("Equinox", new EquinoxPreferences(keys));
        all.put("Commons", new CommonsConfiguration(keys));
        all.put("map", new PlainMap(keys));
        for (Alternative each : all.values()) each.fill();
        return all;
    }

    private void measure(String name, Map<String, Alternative> all, Work work) throws Throwable {
        rounds.measure(name, loops(all, work));
    }

    private static Map<String, Rounds.Loop> loops(Map<String, Alternative> all, Work work)
            throws Exception {
        Map<String, Rounds.Loop> loops = new LinkedHashMap<>();
        for (Map.Entry<String, Alternative> each : all.entrySet()) {
            Rounds.Loop loop = work.of(each.getValue());
            if (loop != null)
                loops.put(each.getKey(), loop);
        }
        return loops;
    }

    private static void close(Map<String, Alternative> all) throws Exception {
        for (Alternative each : all.values()) each.close();
    }

    private static void delete(Path directory) throws IOException {
        if (!Files.exists(directory))
            return;
        List<Path> found = new ArrayList<>();
        try (Stream<Path> all = Files.walk(directory)) {
            all.sorted(Comparator.reverseOrder()).forEach(found::add);
        }
        for (Path each : found) Files.delete(each);
    }
}
