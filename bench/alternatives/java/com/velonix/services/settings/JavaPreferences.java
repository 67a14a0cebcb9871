package com.velonix.services.settings;

import java.io.IOException;
import java.io.InputStream;
import java.io.OutputStream;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.concurrent.atomic.AtomicLong;
import java.util.prefs.BackingStoreException;
import java.util.prefs.Preferences;

/**
 * java.util.prefs, with a root for each level; reads try the roots in turn. Arrays are bytes,
 * because it has no others. Everything is below one node of the user's preferences.
 */
final class JavaPreferences extends Alternative {
    private final Preferences root;
    private final Preferences[] levels = new Preferences[LEVELS.length];

    JavaPreferences(int keys) {
        super(keys);
        root = Preferences.userRoot().node("bench" + keys);
        Arrays.setAll(levels, i -> root.node(LEVELS[i]));
    }

    @Override
    void put(String node, String key, Object value) {
        Preferences parent = levels[LEVELS.length - 1].node(node);
        if (value instanceof Double[] items) {
            parent.putByteArray(key, Doubles.toBytes(items));
        } else {
            parent.put(key, value.toString());
        }
    }

    @Override
    Rounds.Loop read(String key) {
        String[] paths = nodePaths("top/");
        if (key.equals(BenchTrees.DOUBLES)) {
            return (times, sink) -> {
                for (int i = 0; i < times; ++i)
                    sink.last = Doubles.fromBytes(bytes(paths[i & BenchTrees.PATHS - 1], key));
            };
        }
        if (key.equals(BenchTrees.TEXT)) {
            return (times, sink) -> {
                for (int i = 0; i < times; ++i)
                    sink.last = text(paths[i & BenchTrees.PATHS - 1], key);
            };
        }
        return (times, sink) -> {
            for (int i = 0; i < times; ++i)
                sink.last = Integer.parseInt(text(paths[i & BenchTrees.PATHS - 1], key));
        };
    }

    @Override
    Rounds.Loop readHeld() {
        Preferences[][] held = held();
        return (times, sink) -> {
            for (int i = 0; i < times; ++i) {
                String value = null;
                for (Preferences node : held[i & BenchTrees.PATHS - 1]) {
                    value = node.get(BenchTrees.INT, null);
                    if (value != null)
                        break;
                }
                sink.last = Integer.parseInt(value);
            }
        };
    }

    @Override
    Rounds.Loop set() {
        String[] paths = nodePaths("top/");
        return (times, sink) -> {
            for (int i = 0; i < times; ++i)
                levels[0].node(paths[i >> 1 & BenchTrees.PATHS - 1]).putInt(BenchTrees.INT, i & 1);
        };
    }

    @Override
    Rounds.Loop setDurably(Path directory) {
        Preferences node = root.node("durable");
        return (times, sink) -> {
            for (int i = 0; i < times; ++i) {
                node.putInt("key", ++fresh);
                node.flush();
            }
        };
    }

    @Override
    Rounds.Loop deliver(int listeners) {
        Preferences node = root.node("heard" + listeners);
        AtomicLong heard = new AtomicLong();
        for (int i = 0; i < listeners; ++i)
            node.addPreferenceChangeListener(event -> heard.incrementAndGet());
        return (times, sink) -> {
            for (int i = 0; i < times; ++i) {
                long all = heard.get() + listeners;
                node.putInt("key", ++fresh);
                while (heard.get() < all) Thread.onSpinWait();
            }
        };
    }

    @Override
    Rounds.Loop change(int count) {
        Preferences[] held = new Preferences[changedNode(count) + 1];
        Arrays.setAll(held, i -> levels[0].node("top/n" + i));
        String[] keys = new String[count];
        Arrays.setAll(keys, Alternative::changedKey);
        return (times, sink) -> {
            for (int i = 0; i < times; ++i) {
                int value = ++fresh;
                for (int k = 0; k < count; ++k) held[changedNode(k)].putInt(keys[k], value);
            }
        };
    }

    @Override
    Rounds.Loop load(Path directory) {
        Path file = directory.resolve("prefs.xml");
        return (times, sink) -> {
            for (int i = 0; i < times; ++i) {
                try (InputStream in = Files.newInputStream(file)) {
                    Preferences.importPreferences(in);
                }
            }
        };
    }

    @Override
    Rounds.Loop write(Path directory) {
        Path file = directory.resolve("prefs.xml");
        return (times, sink) -> {
            for (int i = 0; i < times; ++i) {
                try (OutputStream out = Files.newOutputStream(file)) {
                    levels[LEVELS.length - 1].exportSubtree(out);
                }
            }
        };
    }

    @Override
    Rounds.Loop list() {
        Preferences node = levels[LEVELS.length - 1].node(LISTED);
        return (times, sink) -> {
            for (int i = 0; i < times; ++i) sink.last = node.keys();
        };
    }

    @Override
    void listen(int number) {
        levels[LEVELS.length - 1].node(LISTED).addPreferenceChangeListener(event -> fresh = number);
    }

    @Override
    public void close() throws IOException {
        try {
            root.removeNode();
        } catch (BackingStoreException failed) {
            throw new IOException(failed);
        }
    }

    private String text(String node, String key) {
        for (Preferences level : levels) {
            String value = level.node(node).get(key, null);
            if (value != null)
                return value;
        }
        return null;
    }

    private byte[] bytes(String node, String key) {
        for (Preferences level : levels) {
            byte[] value = level.node(node).getByteArray(key, null);
            if (value != null)
                return value;
        }
        return null;
    }

    private Preferences[][] held() {
        String[] paths = nodePaths("top/");
        Preferences[][] held = new Preferences[paths.length][levels.length];
        for (int i = 0; i < paths.length; ++i) {
            for (int level = 0; level < levels.length; ++level)
                held[i][level] = levels[level].node(paths[i]);
        }
        return held;
    }
}
