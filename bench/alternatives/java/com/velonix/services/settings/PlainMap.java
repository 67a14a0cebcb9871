package com.velonix.services.settings;

import java.util.concurrent.ConcurrentHashMap;

/** The ceiling: a map from path to value. No types, levels, events or files. */
final class PlainMap extends Alternative {
    private final ConcurrentHashMap<String, Object> map = new ConcurrentHashMap<>();

    PlainMap(int keys) {
        super(keys);
    }

    @Override
    void put(String node, String key, Object value) {
        map.put(node + '/' + key, value);
    }

    @Override
    Rounds.Loop read(String key) {
        String[] paths = paths(key);
        return (times, sink) -> {
            for (int i = 0; i < times; ++i) sink.last = map.get(paths[i & BenchTrees.PATHS - 1]);
        };
    }

    @Override
    Rounds.Loop readHeld() {
        return read(BenchTrees.INT);
    }

    @Override
    Rounds.Loop set() {
        String[] paths = paths(BenchTrees.INT);
        Object[] values = {1, 2};
        return (times, sink) -> {
            for (int i = 0; i < times; ++i)
                map.put(paths[i >> 1 & BenchTrees.PATHS - 1], values[i & 1]);
        };
    }

    @Override
    Rounds.Loop change(int count) {
        String[] paths = new String[count];
        for (int i = 0; i < count; ++i) paths[i] = "top/n" + changedNode(i) + '/' + changedKey(i);
        return (times, sink) -> {
            for (int i = 0; i < times; ++i) {
                Integer value = ++fresh;
                for (String path : paths) map.put(path, value);
            }
        };
    }

    private String[] paths(String key) {
        String[] paths = nodePaths("top/");
        for (int i = 0; i < paths.length; ++i) paths[i] += '/' + key;
        return paths;
    }
}
