package com.velonix.services.settings;

/**
 * The literal floor: the JNI work of each native method, written by hand (each step one direct JNI
 * call, every class and identifier cached) on a bare tree of hash tables without types and locks.
 */
final class Literal {
    private Literal() {}

    /** Looks up classes and identifiers. The caller must call it once, before all other methods. */
    static native void prepare();

    static native void empty();

    /** Returns the bytes of the native heap that the process has allocated. */
    static native long nativeBytes();

    /** Makes a bare tree: a node "top" with empty nodes "n0", "n1" and so on. */
    static native long createTree(int nodes);

    /** Sets the value of a key at one level; adds the key if it does not exist. */
    static native void put(long tree, String[] path, String key, SettingInfo value, int level);

    static native SettingInfo get(long tree, String[] path, String key, String level)
            throws SettingException;

    static native void set(
            long context, long tree, String[] path, String key, SettingInfo value, String level);

    /** Adds a listener of one key, which set() then calls. */
    static native void addListener(
            long tree, String[] path, String key, Object source, SettingListener listener);

    static native String[] children(long tree, String[] path);

    static native long createContext();

    static native void deleteContext(long context);

    static native void commit(long context, long tree, String level);
}
