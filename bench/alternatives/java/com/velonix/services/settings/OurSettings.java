package com.velonix.services.settings;

import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.concurrent.atomic.AtomicLong;

/** Our settings, through the public Java API. */
final class OurSettings extends Alternative {
    private final BenchTrees trees;
    private final SettingPath root;

    /** Uses the trees, which the caller closes afterwards. */
    OurSettings(BenchTrees trees, int keys) {
        super(keys);
        this.trees = trees;
        this.root = trees.root;
    }

    /** The tree is already filled. */
    @Override
    void fill() {}

    @Override
    void put(String node, String key, Object value) throws Exception {
        if (!root.path(node).exists())
            root.addNode(node);
        root.path(node).addKey(key, value);
    }

    @Override
    Rounds.Loop read(String key) {
        Class<?> type = key.equals(BenchTrees.DOUBLES) ? double[].class
                : key.equals(BenchTrees.TEXT)          ? String.class
                                                       : Integer.class;
        return (times, sink) -> {
            for (int i = 0; i < times; ++i)
                sink.last = root.path(trees.path(i)).setting(key, type).get();
        };
    }

    @Override
    Rounds.Loop readHeld() {
        @SuppressWarnings({"unchecked", "rawtypes"})
        Setting<Integer>[] held = new Setting[BenchTrees.PATHS];
        Arrays.setAll(held, i -> root.path(trees.path(i)).setting(BenchTrees.INT, Integer.class));
        return (times, sink) -> {
            for (int i = 0; i < times; ++i) sink.last = held[i & BenchTrees.PATHS - 1].get();
        };
    }

    @Override
    Rounds.Loop set() {
        return (times, sink) -> {
            for (int i = 0; i < times; ++i)
                root.path(trees.path(i >> 1))
                        .setting(BenchTrees.INT, Integer.class)
                        .set(i & 1, SettingLevel.SESSION);
        };
    }

    @Override
    Rounds.Loop setDurably(Path directory) {
        SettingPath process = SettingPath.processRoot();
        Setting<Integer> key = process.path("top", "n0").setting(BenchTrees.INT, Integer.class);
        return (times, sink) -> {
            for (int i = 0; i < times; ++i) key.set(++fresh, SettingLevel.USER);
        };
    }

    @Override
    Rounds.Loop deliver(int listeners) throws Exception {
        SettingPath tree = SettingPath.standalone();
        Setting<Integer> key = tree.addKey("key", 0);
        AtomicLong heard = new AtomicLong();
        for (int i = 0; i < listeners; ++i) key.onChanged(event -> heard.incrementAndGet());
        return (times, sink) -> {
            long before = heard.get();
            for (int i = 0; i < times; ++i) key.set(++fresh, SettingLevel.SESSION);
            checkHeard(heard.get() - before, (long) listeners * times);
        };
    }

    @Override
    Rounds.Loop change(int count) {
        // Transactions change only the settings of the process.
        SettingPath process = SettingPath.processRoot();
        @SuppressWarnings({"unchecked", "rawtypes"}) Setting<Integer>[] keys = new Setting[count];
        Arrays.setAll(keys,
                i
                -> process.path("top", "n" + changedNode(i)).setting(changedKey(i), Integer.class));
        return (times, sink) -> {
            for (int i = 0; i < times; ++i) {
                Integer value = ++fresh;
                try (SettingTransaction transaction = new SettingTransaction()) {
                    for (Setting<Integer> key : keys) transaction.set(key, value);
                    if (!transaction.commit(SettingLevel.SESSION).isEmpty())
                        throw new AssertionError("not committed");
                }
            }
        };
    }

    @Override
    Rounds.Loop load(Path directory) throws Exception {
        Path file = directory.resolve("ours.xml");
        Files.writeString(file, BenchTrees.xml(nodes));
        return (times, sink) -> {
            for (int i = 0; i < times; ++i) SettingPath.load(file).close();
        };
    }

    @Override
    Rounds.Loop list() {
        SettingPath node = root.path(LISTED);
        return (times, sink) -> {
            for (int i = 0; i < times; ++i) sink.last = node.keys();
        };
    }

    @Override
    void listen(int number) throws Exception {
        root.path(LISTED).setting("key0", Integer.class).onChanged(event -> fresh = number);
    }
}
