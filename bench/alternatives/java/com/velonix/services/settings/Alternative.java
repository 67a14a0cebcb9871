package com.velonix.services.settings;

import java.io.IOException;
import java.nio.file.Path;

/**
 * One way to keep settings, with the tree of {@link Places} at the lowest of its levels. Each way
 * brings loops of its own, so that the compiler sees every one of them as if it were alone. What a
 * way has no work for is null.
 */
abstract class Alternative implements AutoCloseable {
    static final String[] LEVELS = {"session", "user", "workgroup", "factory"};
    /** The node whose keys are listed, below the root. */
    static final String LISTED = "listed";
    static final int LISTED_KEYS = 1000;
    private static final int CHANGED_PER_NODE = Places.KEYS_PER_NODE - 4;

    /** A number that was never set before: setting the same again might be no work. */
    static int fresh;

    /** Nodes that the tree has below "top". */
    final int nodes;

    Alternative(int keys) {
        nodes = keys / Places.KEYS_PER_NODE;
    }

    /** Puts all keys at the lowest level; {@link #LISTED} beside "top" in small trees. */
    void fill() throws Exception {
        for (int node = 0; node < nodes; ++node) {
            for (int key = 0; key < Places.KEYS_PER_NODE; ++key) {
                put("top/n" + node, "k" + key, Places.valueOf(key));
            }
        }
    }

    void fillListed() throws Exception {
        for (int key = 0; key < LISTED_KEYS; ++key) put(LISTED, "key" + key, key);
    }

    /** Adds a key at the lowest level, with the nodes that lead to it. */
    abstract void put(String node, String key, Object value) throws Exception;

    /** Reads the value in effect of a key, by path, at places all over the tree. */
    abstract Rounds.Loop read(String key);

    /** Reads an int in effect from whatever can be held on to. */
    Rounds.Loop readHeld() {
        return null;
    }

    /** Sets an int by path, in memory, at the highest level. */
    abstract Rounds.Loop set();

    /** Sets an int and has it on the disk, as far as the way knows how. */
    Rounds.Loop setDurably(Path directory) throws Exception {
        return null;
    }

    /** Sets an int and waits until all listeners have heard. */
    Rounds.Loop deliver(int listeners) throws Exception {
        return null;
    }

    /** Sets that many ints at the highest level, in one step where the way has one. */
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

    /** Adds a listener of the key "key0" of {@link #LISTED}, unlike any other. */
    void listen(int number) throws Exception {}

    @Override
    public void close() throws IOException {}

    static void checkHeard(long heard, long expected) {
        if (heard != expected)
            throw new AssertionError("not all was heard");
    }

    /** The node of the change of that number. */
    static int changedNode(int change) {
        return change / CHANGED_PER_NODE;
    }

    /** The key of the change of that number: an int. */
    static String changedKey(int change) {
        return "k" + (4 + change % CHANGED_PER_NODE);
    }

    /** The path of the node of a place that all ways read in turn. */
    String[] placesOf(String prefix) {
        String[] places = new String[Places.PLACES];
        for (int i = 0; i < places.length; ++i) {
            places[i] = prefix + "n" + i * Math.max(1, nodes / places.length) % nodes;
        }
        return places;
    }
}
