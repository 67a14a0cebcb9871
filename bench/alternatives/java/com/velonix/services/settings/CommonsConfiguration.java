package com.velonix.services.settings;

import java.io.StringReader;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.concurrent.atomic.AtomicLong;
import org.apache.commons.configuration2.BaseHierarchicalConfiguration;
import org.apache.commons.configuration2.CombinedConfiguration;
import org.apache.commons.configuration2.XMLConfiguration;
import org.apache.commons.configuration2.event.ConfigurationEvent;
import org.apache.commons.configuration2.ex.ConfigurationException;
import org.apache.commons.configuration2.io.FileHandler;
import org.apache.commons.configuration2.sync.ReadWriteSynchronizer;
import org.apache.commons.configuration2.tree.OverrideCombiner;

/**
 * Apache Commons Configuration 2: a hierarchical configuration for each level, and one that
 * combines them for reads, all with locks for several threads. Arrays are repeated elements.
 */
final class CommonsConfiguration extends Alternative {
    /** More would take minutes: each change searches all keys before its own. */
    private static final int MOST_CHANGES = 1000;

    private final XMLConfiguration[] levels = new XMLConfiguration[LEVELS.length];
    private final CombinedConfiguration combined =
            new CombinedConfiguration(new OverrideCombiner());

    CommonsConfiguration(int keys) {
        super(keys);
        for (int i = 0; i < levels.length; ++i) {
            levels[i] = locked(new XMLConfiguration());
            combined.addConfiguration(levels[i], LEVELS[i]);
        }
        locked(combined);
    }

    /** Fills from a file, because adding a key takes longer the more keys there are. */
    @Override
    void fill() throws ConfigurationException {
        StringBuilder text = new StringBuilder("<configuration><top>");
        for (int node = 0; node < nodes; ++node) {
            text.append("<n").append(node).append('>');
            for (int key = 0; key < BenchTrees.KEYS_PER_NODE; ++key) {
                Object value = BenchTrees.valueOf(key);
                for (Object item : value instanceof Double[] items ? items : new Object[] {value})
                    text.append(String.format("<k%d>%s</k%d>", key, item, key));
            }
            text.append("</n").append(node).append('>');
        }
        text.append("</top></configuration>");
        new FileHandler(levels[LEVELS.length - 1]).load(new StringReader(text.toString()));
    }

    @Override
    void put(String node, String key, Object value) {
        levels[LEVELS.length - 1].addProperty(node.replace('/', '.') + '.' + key, value);
    }

    @Override
    Rounds.Loop read(String key) {
        String[] paths = paths(key);
        if (key.equals(BenchTrees.DOUBLES)) {
            return (times, sink) -> {
                for (int i = 0; i < times; ++i)
                    sink.last = combined.get(double[].class, paths[i & BenchTrees.PATHS - 1]);
            };
        }
        if (key.equals(BenchTrees.TEXT)) {
            return (times, sink) -> {
                for (int i = 0; i < times; ++i)
                    sink.last = combined.getString(paths[i & BenchTrees.PATHS - 1]);
            };
        }
        return (times, sink) -> {
            for (int i = 0; i < times; ++i)
                sink.last = combined.getInt(paths[i & BenchTrees.PATHS - 1]);
        };
    }

    @Override
    Rounds.Loop set() {
        XMLConfiguration alone = locked(new XMLConfiguration());
        String[] paths = paths(BenchTrees.INT);
        return (times, sink) -> {
            for (int i = 0; i < times; ++i)
                alone.setProperty(paths[i >> 1 & BenchTrees.PATHS - 1], i & 1);
        };
    }

    @Override
    Rounds.Loop setDurably(Path directory) {
        XMLConfiguration one = new XMLConfiguration();
        FileHandler file = new FileHandler(one);
        file.setFile(directory.resolve("durable.xml").toFile());
        return (times, sink) -> {
            for (int i = 0; i < times; ++i) {
                one.setProperty("key", ++fresh);
                file.save();
            }
        };
    }

    @Override
    Rounds.Loop deliver(int listeners) {
        BaseHierarchicalConfiguration one = locked(new BaseHierarchicalConfiguration());
        AtomicLong heard = new AtomicLong();
        for (int i = 0; i < listeners; ++i) {
            one.addEventListener(ConfigurationEvent.SET_PROPERTY, event -> {
                if (!event.isBeforeUpdate())
                    heard.incrementAndGet();
            });
        }
        return (times, sink) -> {
            long before = heard.get();
            for (int i = 0; i < times; ++i) one.setProperty("node.key", ++fresh);
            checkHeard(heard.get() - before, (long) listeners * times);
        };
    }

    @Override
    Rounds.Loop change(int count) {
        if (count > MOST_CHANGES)
            return null;
        XMLConfiguration alone = locked(new XMLConfiguration());
        String[] paths = new String[count];
        Arrays.setAll(paths, i -> "top.n" + changedNode(i) + '.' + changedKey(i));
        return (times, sink) -> {
            for (int i = 0; i < times; ++i) {
                Integer value = ++fresh;
                for (String path : paths) alone.setProperty(path, value);
            }
        };
    }

    @Override
    Rounds.Loop load(Path directory) {
        return (times, sink) -> {
            for (int i = 0; i < times; ++i) {
                FileHandler file = new FileHandler(new XMLConfiguration());
                file.setFile(directory.resolve("commons.xml").toFile());
                file.load();
            }
        };
    }

    @Override
    Rounds.Loop write(Path directory) {
        FileHandler file = new FileHandler(levels[LEVELS.length - 1]);
        file.setFile(directory.resolve("commons.xml").toFile());
        return (times, sink) -> {
            for (int i = 0; i < times; ++i) file.save();
        };
    }

    @Override
    Rounds.Loop list() {
        return (times, sink) -> {
            for (int i = 0; i < times; ++i) {
                List<String> names = new ArrayList<>(LISTED_KEYS);
                levels[LEVELS.length - 1].getKeys(LISTED).forEachRemaining(names::add);
                sink.last = names;
            }
        };
    }

    @Override
    void listen(int number) {
        levels[LEVELS.length - 1].addEventListener(
                ConfigurationEvent.SET_PROPERTY, event -> fresh = number);
    }

    private String[] paths(String key) {
        String[] paths = nodePaths("top.");
        for (int i = 0; i < paths.length; ++i) paths[i] += '.' + key;
        return paths;
    }

    private static <C extends BaseHierarchicalConfiguration> C locked(C configuration) {
        configuration.setSynchronizer(new ReadWriteSynchronizer());
        return configuration;
    }
}
