package com.velonix.services.settings;

import java.nio.ByteBuffer;
import java.nio.channels.FileChannel;
import java.nio.file.Path;
import java.nio.file.StandardOpenOption;
import java.util.concurrent.atomic.AtomicLong;

/**
 * The floor: the same work by {@link Literal} on a bare tree. On the disk, a record is appended and
 * flushed.
 */
final class Floor extends Alternative {
    private static final String[] LISTED_PATH = BenchTrees.nodePath(0);

    private final BenchTrees trees;
    private final long listed = Literal.createTree(1);

    Floor(BenchTrees trees, int keys) {
        super(keys);
        this.trees = trees;
    }

    /** The bare tree is already filled. */
    @Override
    void fill() {}

    @Override
    void put(String node, String key, Object value) {
        Literal.put(listed, LISTED_PATH, key, new SettingInfo(value), LEVELS.length - 1);
    }

    @Override
    Rounds.Loop read(String key) {
        return (times, sink) -> {
            for (int i = 0; i < times; ++i)
                sink.last = Literal.get(trees.bare, trees.path(i), key, null);
        };
    }

    @Override
    Rounds.Loop set() {
        SettingInfo[] values = {new SettingInfo(1), new SettingInfo(2)};
        return (times, sink) -> {
            for (int i = 0; i < times; ++i)
                Literal.set(0, trees.bare, trees.path(i >> 1), BenchTrees.INT, values[i & 1],
                        LEVELS[0]);
        };
    }

    @Override
    Rounds.Loop setDurably(Path directory) throws Exception {
        FileChannel file = FileChannel.open(
                directory.resolve("floor"), StandardOpenOption.CREATE, StandardOpenOption.APPEND);
        ByteBuffer record = ByteBuffer.allocateDirect(64);
        return (times, sink) -> {
            for (int i = 0; i < times; ++i) {
                file.write(record.clear());
                file.force(false);
            }
        };
    }

    @Override
    Rounds.Loop deliver(int listeners) {
        String[] path = BenchTrees.nodePath(0);
        long tree = BenchTrees.bareTree(1);
        AtomicLong heard = new AtomicLong();
        SettingListener listener = new SettingListener() {
            @Override
            public void settingChanged(SettingChangeEvent event) {
                heard.incrementAndGet();
            }
        };
        for (int i = 0; i < listeners; ++i)
            Literal.addListener(tree, path, BenchTrees.INT, this, listener);
        SettingInfo[] values = {new SettingInfo(1), new SettingInfo(2)};
        return (times, sink) -> {
            long before = heard.get();
            for (int i = 0; i < times; ++i)
                Literal.set(0, tree, path, BenchTrees.INT, values[i & 1], LEVELS[0]);
            checkHeard(heard.get() - before, (long) listeners * times);
        };
    }

    @Override
    Rounds.Loop change(int count) {
        long tree = BenchTrees.bareTree(changedNode(count) + 1);
        String[][] paths = new String[count][];
        String[] keys = new String[count];
        for (int i = 0; i < count; ++i) {
            paths[i] = BenchTrees.nodePath(changedNode(i));
            keys[i] = changedKey(i);
        }
        return (times, sink) -> {
            for (int i = 0; i < times; ++i) {
                SettingInfo value = new SettingInfo(++fresh);
                long context = Literal.createContext();
                for (int k = 0; k < count; ++k)
                    Literal.set(context, tree, paths[k], keys[k], value, null);
                Literal.commit(context, tree, LEVELS[0]);
                Literal.deleteContext(context);
            }
        };
    }

    @Override
    Rounds.Loop list() {
        return (times, sink) -> {
            for (int i = 0; i < times; ++i) sink.last = Literal.children(listed, LISTED_PATH);
        };
    }
}
