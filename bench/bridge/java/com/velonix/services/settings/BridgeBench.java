package com.velonix.services.settings;

import java.nio.file.Path;
import java.util.LinkedHashMap;
import java.util.Map;

/**
 * Measures the bridge's native methods and the floor of the same work ({@link Literal}) in turn in
 * one run. The arguments are the file for the results and, both optional, the number of rounds and
 * the only measurement to make.
 */
public final class BridgeBench {
    private static final String SESSION = "session";
    private static final int CHANGES = 1000;

    private final Rounds rounds;

    private BridgeBench(int rounds) {
        this.rounds = new Rounds(rounds);
    }

    public static void main(String[] arguments) throws Throwable {
        NativeLibrary.load();
        System.loadLibrary("bridgefloors");
        Literal.prepare();
        BridgeBench bench =
                new BridgeBench(arguments.length > 1 ? Integer.parseInt(arguments[1]) : 21);
        String only = arguments.length > 2 ? arguments[2] : "";
        if ("call".startsWith(only))
            bench.call();
        for (int keys : new int[] {1000, 100_000}) {
            try (BenchTrees trees = BenchTrees.ofKeys(keys)) {
                if ("reading".startsWith(only))
                    bench.reading(trees, keys);
                if (keys == 1000) {
                    if ("failure".startsWith(only))
                        bench.failure(trees);
                } else {
                    if ("setting".startsWith(only))
                        bench.setting(trees);
                    if ("threads".startsWith(only))
                        bench.threads(trees);
                }
            }
        }
        for (int listeners : new int[] {1, 100}) {
            if ("events".startsWith(only))
                bench.events(listeners);
        }
        if ("children".startsWith(only))
            bench.children();
        if ("commit".startsWith(only))
            bench.commit();
        bench.rounds.write(Path.of(arguments[0]));
    }

    private void call() throws Throwable {
        rounds.measure("calling an empty native: by handle, directly",
                (times, sink)
                        -> {
                    for (int i = 0; i < times; ++i) Natives.empty();
                },
                (times, sink) -> {
                    for (int i = 0; i < times; ++i) Literal.empty();
                });
    }

    private void reading(BenchTrees trees, int keys) throws Throwable {
        String[][] works = {{"int", BenchTrees.INT}, {"20-char string", BenchTrees.TEXT},
                {"Double[100]", BenchTrees.DOUBLES}};
        for (String[] work : works) {
            String key = work[1];
            rounds.measure(String.format("nativeGet %s, %,d keys", work[0], keys),
                    (times, sink)
                            -> {
                        for (int i = 0; i < times; ++i)
                            sink.last = Natives.get(trees.handle, trees.path(i), key, null);
                    },
                    (times, sink)
                            -> {
                        for (int i = 0; i < times; ++i)
                            sink.last = Literal.get(trees.bare, trees.path(i), key, null);
                    });
        }
    }

    private void setting(BenchTrees trees) throws Throwable {
        set("nativeSet int", trees, BenchTrees.INT, 1, 2);
        set("nativeSet Double[100]", trees, BenchTrees.DOUBLES, BenchTrees.doubles(1),
                BenchTrees.doubles(2));
    }

    private void set(String work, BenchTrees trees, String key, Object first, Object second)
            throws Throwable {
        SettingInfo[] values = {new SettingInfo(first), new SettingInfo(second)};
        rounds.measure(work,
                (times, sink)
                        -> {
                    for (int i = 0; i < times; ++i)
                        Natives.set(
                                0, trees.handle, trees.path(i >> 1), key, values[i & 1], SESSION);
                },
                (times, sink)
                        -> {
                    for (int i = 0; i < times; ++i)
                        Literal.set(0, trees.bare, trees.path(i >> 1), key, values[i & 1], SESSION);
                });
    }

    /** Measures setting an int that has listeners. */
    private void events(int listeners) throws Throwable {
        try (BenchTrees trees = BenchTrees.ofKeys(1000)) {
            for (int i = 0; i < listeners; ++i) {
                SettingListener listener = new CountingListener();
                for (int node = 0; node < 2; ++node) {
                    Natives.addListener(trees.handle, BenchTrees.nodePath(node), BenchTrees.INT,
                            this, listener);
                    Literal.addListener(
                            trees.bare, BenchTrees.nodePath(node), BenchTrees.INT, this, listener);
                }
            }
            SettingInfo[] values = {new SettingInfo(1), new SettingInfo(2)};
            String[][] paths = {BenchTrees.nodePath(0), BenchTrees.nodePath(1)};
            rounds.measure("set + event to " + listeners,
                    (times, sink)
                            -> {
                        for (int i = 0; i < times; ++i)
                            Natives.set(0, trees.handle, paths[i >> 1 & 1], BenchTrees.INT,
                                    values[i & 1], SESSION);
                    },
                    (times, sink)
                            -> {
                        for (int i = 0; i < times; ++i)
                            Literal.set(0, trees.bare, paths[i >> 1 & 1], BenchTrees.INT,
                                    values[i & 1], SESSION);
                    });
            if (CountingListener.heard == 0)
                throw new IllegalStateException("no listener was called");
        }
    }

    private void children() throws Throwable {
        try (SettingPath root = SettingPath.standalone()) {
            long handle = root.tree().enter();
            long bare = Literal.createTree(1);
            String[] path = BenchTrees.nodePath(0);
            Natives.addNode(handle, new String[0], path[0]);
            Natives.addNode(handle, new String[] {path[0]}, path[1]);
            for (int i = 0; i < 1000; ++i) {
                Natives.addKey(handle, path, "key" + i, i, SESSION);
                Literal.put(bare, path, "key" + i, new SettingInfo(i), 0);
            }
            rounds.measure("list 1,000 children",
                    (times, sink)
                            -> {
                        for (int i = 0; i < times; ++i) sink.last = Natives.children(handle, path);
                    },
                    (times, sink)
                            -> {
                        for (int i = 0; i < times; ++i) sink.last = Literal.children(bare, path);
                    });
            root.tree().shared().leave();
        }
    }

    /** Measures transactions, which work only on the settings of the process. */
    private void commit() throws Throwable {
        try (SettingPath root = SettingPath.processRoot()) {
            long handle = root.tree().enter();
            long bare = Literal.createTree(1);
            String[] path = BenchTrees.nodePath(0);
            Natives.addNode(handle, new String[0], path[0]);
            Natives.addNode(handle, new String[] {path[0]}, path[1]);
            String[] keys = new String[CHANGES];
            for (int i = 0; i < CHANGES; ++i) {
                keys[i] = "key" + i;
                Natives.addKey(handle, path, keys[i], i, SESSION);
                Literal.put(bare, path, keys[i], new SettingInfo(i), 0);
            }
            SettingInfo[] values = new SettingInfo[CHANGES + 1];
            for (int i = 0; i < values.length; ++i) values[i] = new SettingInfo(-i);
            rounds.measure("1,000 sets recorded, one commit",
                    (times, sink)
                            -> {
                        for (int i = 0; i < times; ++i) {
                            long context = Natives.createContext();
                            for (int k = 0; k < CHANGES; ++k)
                                Natives.set(
                                        context, handle, path, keys[k], values[k + (i & 1)], null);
                            if (Natives.commit(context, SESSION) != null)
                                throw new AssertionError();
                            Natives.deleteContext(context);
                        }
                    },
                    (times, sink) -> {
                        for (int i = 0; i < times; ++i) {
                            long context = Literal.createContext();
                            for (int k = 0; k < CHANGES; ++k)
                                Literal.set(
                                        context, bare, path, keys[k], values[k + (i & 1)], null);
                            Literal.commit(context, bare, SESSION);
                            Literal.deleteContext(context);
                        }
                    });
            root.tree().shared().leave();
        }
    }

    private void failure(BenchTrees trees) throws Throwable {
        rounds.measure("failure raised and caught in Java",
                (times, sink)
                        -> {
                    for (int i = 0; i < times; ++i) {
                        try {
                            sink.last = Natives.get(trees.handle, trees.path(i), "missing", null);
                        } catch (SettingNotFoundException expected) {
                            sink.last = expected;
                        }
                    }
                },
                (times, sink) -> {
                    for (int i = 0; i < times; ++i) {
                        try {
                            sink.last = Literal.get(trees.bare, trees.path(i), "missing", null);
                        } catch (SettingNotFoundException expected) {
                            sink.last = expected;
                        }
                    }
                });
    }

    /** Measures the rate of two threads as a multiple of one thread's rate. */
    private void threads(BenchTrees trees) throws Throwable {
        Map<String, Rounds.Loop> ways = new LinkedHashMap<>();
        ways.put("ours", (times, sink) -> {
            for (int i = 0; i < times; ++i)
                sink.last = Natives.get(trees.handle, trees.path(i), BenchTrees.INT, null);
        });
        ways.put("literal", (times, sink) -> {
            for (int i = 0; i < times; ++i)
                sink.last = Literal.get(trees.bare, trees.path(i), BenchTrees.INT, null);
        });
        TwoThreads.measure(rounds, "two threads, natives", ways);
    }

    private static final class CountingListener implements SettingListener {
        static long heard;

        @Override
        public void settingChanged(SettingChangeEvent event) {
            ++heard;
        }
    }
}
