package com.velonix.services.settings;

import java.nio.file.Files;
import java.nio.file.Path;
import java.util.stream.IntStream;

/**
 * The same settings in a tree of the service and in a bare tree of the floors: a node "top" with
 * nodes of 100 keys each, which are read in turn at paths all over the tree.
 */
final class BenchTrees implements AutoCloseable {
    static final int KEYS_PER_NODE = 100;
    static final int PATHS = 256;

    /** The keys that are read, in every node: an int, a text and an array. */
    static final String INT = "k1", TEXT = "k2", DOUBLES = "k3";

    final SettingPath root;
    final long handle;
    final long bare;
    private final String[][] paths;

    private BenchTrees(SettingPath root, long bare, int nodes) {
        this.root = root;
        this.handle = root.tree().enter();
        this.bare = bare;
        int step = Math.max(1, nodes / PATHS);
        this.paths = IntStream.range(0, PATHS)
                             .mapToObj(i -> nodePath(i * step % nodes))
                             .toArray(String[][] ::new);
    }

    static BenchTrees ofKeys(int keys) throws Exception {
        int nodes = keys / KEYS_PER_NODE;
        Path file = Files.createTempFile("settings-bench", ".xml");
        try {
            Files.writeString(file, xml(nodes));
            return new BenchTrees(SettingPath.load(file), bareTree(nodes), nodes);
        } finally {
            Files.delete(file);
        }
    }

    /** Returns the path of a node; successive numbers give different ones. */
    String[] path(int number) {
        return paths[number & PATHS - 1];
    }

    static String[] nodePath(int node) {
        return new String[] {"top", "n" + node};
    }

    static Double[] doubles(int seed) {
        return IntStream.range(0, 100).mapToObj(i -> seed + i / 4.0).toArray(Double[] ::new);
    }

    @Override
    public void close() {
        root.tree().shared().leave();
        root.close();
    }

    static Object valueOf(int key) {
        return switch ("k" + key) {
            case TEXT -> "a text of 20 letters";
            case DOUBLES -> doubles(1);
            default -> 100 + key;
        };
    }

    static String xml(int nodes) {
        StringBuilder keys = new StringBuilder();
        for (int key = 0; key < KEYS_PER_NODE; ++key) {
            Object value = valueOf(key);
            keys.append("<key name='k").append(key);
            keys.append("' type='").append(typeOf(value)).append("'><value>");
            if (value instanceof Double[] items) {
                for (Double item : items) keys.append("<item>").append(item).append("</item>");
        }
        else {
            keys.append(value);
        }
        keys.append("</value></key>\n");
        }
        StringBuilder text = new StringBuilder("<settings version='1'><node name='top'>\n");
        for (int node = 0; node < nodes; ++node) {
            text.append("<node name='n").append(node).append("'>\n").append(keys).append("</node>");
        }
        return text.append("</node></settings>\n").toString();
}

private static String typeOf(Object value) {
    if (value instanceof Integer)
        return "int";
    return value instanceof String ? "string" : "double[]";
}

    static long bareTree(int nodes) {
        long tree = Literal.createTree(nodes);
        int factory = 3;
        for (int node = 0; node < nodes; ++node) {
            for (int key = 0; key < KEYS_PER_NODE; ++key) {
                Literal.put(
                        tree, nodePath(node), "k" + key, new SettingInfo(valueOf(key)), factory);
            }
        }
        return tree;
    }
}
