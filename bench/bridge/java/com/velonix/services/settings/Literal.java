package com.velonix.services.settings;

/**
 * The literal floor: the JNI work that each native method needs, written by hand in the shortest
 * literal way (each step one direct JNI call, every class and identifier cached) on a bare tree of
 * hash tables without types, locks or events.
 */
final class Literal {
    private Literal() {}

    /** Finds classes and identifiers; once, before anything else here. */
    static native void prepare();

    static native void empty();

    /** What the process has allocated of the native heap. */
    static native long nativeBytes();

    /** A bare tree: a node "top" with nodes "n0", "n1" and so on, empty. */
    static native long createTree(int nodes);

    /** Puts a value into one level of a key, which is made if need be. */
    static native void put(long tree, String[] path, String key, SettingInfo value, int level);

    static native SettingInfo get(long tree, String[] path, String key, String level)
            throws SettingException;

    static native void set(
            long context, long tree, String[] path, String key, SettingInfo value, String level);

    /** Adds a listener of one key; set() then delivers to it. */
    static native void addListener(
            long tree, String[] path, String key, Object source, SettingListener listener);

    static native String[] children(long tree, String[] path);

    static native long createContext();

    static native void deleteContext(long context);

    static native void commit(long context, long tree, String level);
}
