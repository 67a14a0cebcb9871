package com.velonix.services.settings;

import java.io.IOException;
import java.nio.file.Path;

/**
 * One way to keep settings, with the tree of {@link BenchTrees} at the lowest of its levels. Each
 * way has loops of its own, so that the compiler optimises each separately. A method returns null
 * if the way does not support the work.
 */
abstract class Alternative implements AutoCloseable {
    static final String[] LEVELS = {"session", "user", "workgroup", "factory"};
    /** The node whose keys are listed, below the root. */
    static final String LISTED = "listed";
    static final int LISTED_KEYS = 1000;
    private static final int CHANGED_PER_NODE = BenchTrees.KEYS_PER_NODE - 4;

    /** A number that was not set before, because setting the same value may be no work. */
    static int fresh;

    /** The number of nodes below "top". */
    final int nodes;

    Alternative(int keys) {
        nodes = keys / BenchTrees.KEYS_PER_NODE;
    }

    /** Sets all keys at the lowest level. */
    void fill() throws Exception {
        for (int node = 0; node < nodes; ++node) {
            for (int key = 0; key < BenchTrees.KEYS_PER_NODE; ++key) {
                put("top/n" + node, "k" + key, BenchTrees.valueOf(key));
            }
        }
    }

    /** Adds the node {@link #LISTED} with its keys. */
    void fillListed() throws Exception {
        for (int key = 0; key < LISTED_KEYS; ++key) put(LISTED, "key" + key, key);
    }

    /** Adds a key at the lowest level, with the nodes of its path. */
    abstract void put(String node, String key, Object value) throws Exception;

    /** Reads the effective value of a key, by path, in nodes all over the tree. */
    abstract Rounds.Loop read(String key);

    /** Reads an effective int through an object that is held. */
    Rounds.Loop readHeld() {
        return null;
    }

    /** Sets an int by path, in memory, at the highest level. */
    abstract Rounds.Loop set();

    /** Sets an int and stores it on the disk, as durably as the way can. */
    Rounds.Loop setDurably(Path directory) throws Exception {
        return null;
    }

    /** Sets an int and waits until all listeners have been called. */
    Rounds.Loop deliver(int listeners) throws Exception {
        return null;
    }

    /** Sets several ints at the highest level, in one step if the way can. */
    abstract Rounds.Loop change(int count) throws Exception;

    /** Reads the whole tree from a file. */
    Rounds.Loop load(Path directory) throws Exception {
        return null;
    }

    /** Writes the whole tree to a file. */
    Rounds.Loop write(Path directory) throws Exception {
        return null;
    }

    /** Lists the names of the keys of {@link #LISTED}. */
    Rounds.Loop list() {
        return null;
    }

    /** Adds a new listener of the key "key0" of {@link #LISTED}. */
    void listen(int number) throws Exception {}

    @Override
    public void close() throws IOException {}

    static void checkHeard(long heard, long expected) {
        if (heard != expected)
            throw new AssertionError("not all listeners were called");
    }

    /** Returns the node of a change. */
    static int changedNode(int change) {
        return change / CHANGED_PER_NODE;
    }

    /** Returns the key of a change, an int. */
    static String changedKey(int change) {
        return "k" + (4 + change % CHANGED_PER_NODE);
    }

    /** Returns the paths of the nodes that all ways read in turn. */
    String[] nodePaths(String prefix) {
        String[] paths = new String[BenchTrees.PATHS];
        for (int i = 0; i < paths.length; ++i) {
            paths[i] = prefix + "n" + i * Math.max(1, nodes / paths.length) % nodes;
        }
        return paths;
    }
}
