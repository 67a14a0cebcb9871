package com.velonix.services.settings;

import java.io.IOException;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.concurrent.atomic.AtomicLong;
import org.eclipse.core.internal.preferences.EclipsePreferences;
import org.eclipse.core.internal.preferences.PreferencesService;
import org.eclipse.core.runtime.IPath;
import org.eclipse.core.runtime.preferences.IEclipsePreferences;
import org.osgi.service.prefs.BackingStoreException;

/**
 * The preferences of Eclipse without the rest of Eclipse: a scope for each level, read through the
 * preferences service, which has the lookup order. Arrays are bytes.
 */
final class EquinoxPreferences extends Alternative {
    private final PreferencesService service = PreferencesService.getDefault();
    private final String top;
    private final IEclipsePreferences[] levels = new IEclipsePreferences[LEVELS.length];

    EquinoxPreferences(int keys) {
        super(keys);
        top = "bench" + keys;
        Arrays.setAll(
                levels, i -> (IEclipsePreferences) service.getRootNode().node(LEVELS[i]).node(top));
        service.setDefaultLookupOrder(top, null, LEVELS);
    }

    @Override
    void put(String node, String key, Object value) {
        var parent = levels[LEVELS.length - 1].node(node);
        if (value instanceof Double[] items) {
            parent.putByteArray(key, Doubles.toBytes(items));
        } else {
            parent.put(key, value.toString());
        }
    }

    @Override
    Rounds.Loop read(String key) {
        String[] paths = nodePaths("top/");
        for (int i = 0; i < paths.length; ++i) paths[i] += '/' + key;
        if (key.equals(BenchTrees.DOUBLES)) {
            return (times, sink) -> {
                for (int i = 0; i < times; ++i)
                    sink.last = Doubles.fromBytes(
                            service.getByteArray(top, paths[i & BenchTrees.PATHS - 1], null, null));
            };
        }
        if (key.equals(BenchTrees.TEXT)) {
            return (times, sink) -> {
                for (int i = 0; i < times; ++i)
                    sink.last = service.getString(top, paths[i & BenchTrees.PATHS - 1], null, null);
            };
        }
        return (times, sink) -> {
            for (int i = 0; i < times; ++i)
                sink.last = service.getInt(top, paths[i & BenchTrees.PATHS - 1], 0, null);
        };
    }

    @Override
    Rounds.Loop readHeld() {
        String[] paths = nodePaths("top/");
        IEclipsePreferences[][] held = new IEclipsePreferences[paths.length][levels.length];
        for (int i = 0; i < paths.length; ++i) {
            for (int level = 0; level < levels.length; ++level)
                held[i][level] = (IEclipsePreferences) levels[level].node(paths[i]);
        }
        return (times, sink) -> {
            for (int i = 0; i < times; ++i)
                sink.last = Integer.parseInt(
                        service.get(BenchTrees.INT, null, held[i & BenchTrees.PATHS - 1]));
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
        FileNode node = new FileNode(directory.resolve("durable.prefs"));
        return (times, sink) -> {
            for (int i = 0; i < times; ++i) {
                node.putInt("key", ++fresh);
                node.flush();
            }
        };
    }

    @Override
    Rounds.Loop deliver(int listeners) {
        IEclipsePreferences node = (IEclipsePreferences) levels[0].node("heard" + listeners);
        AtomicLong heard = new AtomicLong();
        for (int i = 0; i < listeners; ++i)
            node.addPreferenceChangeListener(event -> heard.incrementAndGet());
        return (times, sink) -> {
            long before = heard.get();
            for (int i = 0; i < times; ++i) node.putInt("key", ++fresh);
            checkHeard(heard.get() - before, (long) listeners * times);
        };
    }

    @Override
    Rounds.Loop change(int count) {
        IEclipsePreferences[] held = new IEclipsePreferences[changedNode(count) + 1];
        Arrays.setAll(held, i -> (IEclipsePreferences) levels[0].node("top/n" + i));
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
    Rounds.Loop load(Path directory) throws BackingStoreException {
        Path file = directory.resolve("equinox.prefs");
        return (times, sink) -> {
            for (int i = 0; i < times; ++i) new FileNode(file).load();
        };
    }

    @Override
    Rounds.Loop write(Path directory) throws Exception {
        FileNode node = new FileNode(directory.resolve("equinox.prefs"));
        for (int i = 0; i < nodes; ++i) {
            for (int key = 0; key < BenchTrees.KEYS_PER_NODE; ++key) {
                String path = "top/n" + i;
                node.node(path).put(
                        "k" + key, levels[LEVELS.length - 1].node(path).get("k" + key, ""));
            }
        }
        return (times, sink) -> {
            for (int i = 0; i < times; ++i) node.save();
        };
    }

    @Override
    Rounds.Loop list() {
        var node = levels[LEVELS.length - 1].node(LISTED);
        return (times, sink) -> {
            for (int i = 0; i < times; ++i) sink.last = node.keys();
        };
    }

    @Override
    void listen(int number) {
        ((IEclipsePreferences) levels[LEVELS.length - 1].node(LISTED))
                .addPreferenceChangeListener(event -> fresh = number);
    }

    @Override
    public void close() throws IOException {
        try {
            for (IEclipsePreferences level : levels) level.removeNode();
        } catch (BackingStoreException failed) {
            throw new IOException(failed);
        }
    }

    /** A node that is stored in a file with all nodes below it. */
    private static final class FileNode extends EclipsePreferences {
        private final IPath file;

        FileNode(Path file) {
            super(null, null);
            this.file = new org.eclipse.core.runtime.Path(file.toString());
        }

        @Override
        protected IPath getLocation() {
            return file;
        }

        @Override
        protected IEclipsePreferences getLoadLevel() {
            return this;
        }

        @Override
        public void load() throws BackingStoreException {
            super.load();
        }

        @Override
        public void save() throws BackingStoreException {
            super.save();
        }
    }
}
