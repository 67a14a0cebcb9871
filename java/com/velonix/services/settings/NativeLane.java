package com.velonix.services.settings;

import java.nio.ByteBuffer;

/**
 * The lane: fast natives beside those of {@link Setting}, {@link SettingPath}, {@link
 * SettingLevel},
 * {@link SettingTransaction} and {@link SettingTestEnvironment}, which are the contract between
 * Java and the library. The lane's natives take plain arguments. In every unusual case they report
 * that they did nothing, and the caller uses a native of the contract, which throws the right
 * exception.
 * {@code nativesettings/lane.h} declares the native side.
 */
final class NativeLane {
    /** Stands for no level: the effective value. */
    static final int EFFECTIVE = -1;

    /**
     * The result of {@link #getNumber} when nothing was read. A key that has this very number is
     * read through the contract.
     */
    static final long NOT_DONE = 0x7FF45E7712650DEBL;

    private NativeLane() {}

    /** Returns the version of the native library, such as {@code 1.2.0}. */
    static native String librariesVersion();

    /**
     * Returns the memory of the service's change counters, which stays valid until the process
     * ends.
     *
     * @return null if the settings service has no change counters
     */
    static native ByteBuffer changeCounters();

    /**
     * Opens the tree of an application.
     *
     * @param sources its name, and the directories of the user and of the workgroup, the address of
     *     the cluster and the directory of the factory; null for each that it does not name
     * @param files the factory files
     * @param contents their contents; null for those that are read from the disk
     * @param handle receives the native handle on the root, which the caller releases
     * @return null if that is done, or else the reason why not
     */
    static native String openApplication(
            String[] sources, String[] files, byte[][] contents, long[] handle);

    /**
     * Sets a variable of the environment for the settings service only; "" takes that back.
     *
     * @return null if that is done, or else the reason why not
     */
    static native String overrideEnvironment(String variable, String value);

    /**
     * Brings the changes of other processes into a tree.
     *
     * @return null if that is done, or else the reason why not
     */
    static native String synchronize(long root);

    /**
     * Writes the tree below a node to a settings file, with the values of the levels.
     *
     * @return null if that is done, or else the reason why not
     */
    static native String save(long root, String[] path, String[] levels, String file);

    /**
     * Keeps the settings of the process in memory.
     *
     * @return null if that is done, or else the reason why not
     */
    static native String keepInMemory();

    /**
     * Takes over the problems that the service notices from now on.
     *
     * @return the memory of their count, which stays valid until the process ends; null if the
     *     settings service cannot hand them over
     */
    static native ByteBuffer takeProblems();

    /** Returns the problems that nobody has fetched; null if the program has stopped Java. */
    static native String[] fetchProblems();

    /** Returns the problems noticed so far; null if the program has stopped Java. */
    static native String[] noticedProblems();

    /**
     * Tells whether the last native call of this thread did nothing because the JVM is shutting
     * down.
     */
    static native boolean wasRefused();

    /**
     * Returns the service's text for the exception that a native method is making on this thread,
     * whose message may have the path only.
     *
     * @return null if no native method is making one
     */
    static native String refusalReason();

    /** Tells whether the exception that this thread is making is for a store that failed. */
    static native boolean refusalIsOfStore();

    /**
     * Binds the key at a path below a root, whether it exists or not.
     *
     * @return the bound key, which the caller releases; 0 if the service cannot bind keys
     */
    static native long bind(long root, String[] path, String key);

    /** Releases a bound key. No call on it may be under way. */
    static native void release(long key);

    /** Returns the number of a level for the methods below. */
    static native int levelOf(String level);

    /**
     * Returns the bits of a number or of a truth value.
     *
     * @param kind a number of {@link ValueKinds}
     * @return {@link #NOT_DONE} if there is no such key, or it has no value of the kind at the
     *         level
     */
    static native long getNumber(long key, int kind, int level);

    /** Returns a text; null if there is no such key, or it has no text at the level. */
    static native String getText(long key, int level);

    /**
     * Returns an array of texts, or of the primitive type that has the size of the kind's elements;
     * null if there is no such key, or it has no value of the kind at the level.
     */
    static native Object getArray(long key, int kind, int level);

    /**
     * Sets a number or a truth value or, if the transaction context is not 0, records it.
     *
     * @return false if nothing was set or recorded
     */
    static native boolean setNumber(long context, long key, int kind, int level, long bits);

    /** Sets or records a text, as {@link #setNumber} does a number. */
    static native boolean setText(long context, long key, int level, String text);

    /** Sets or records an array of the class that {@link #getArray} returns. */
    static native boolean setArray(long context, long key, int kind, int level, Object array);

    /**
     * Subscribes to the events of the entry at a path below a root.
     *
     * @param key a child of the node at the path, or null for that node
     * @param listener receives all events ({@code nativesettings/lane_listeners.h})
     * @return the subscription, which the caller ends by {@link #unlisten}; 0 if there is none
     */
    static native long listen(long root, String[] path, String key, SharedListener listener);

    /** Ends a subscription. */
    static native void unlisten(long subscription);

    /** Tells whether the entry of a subscription is still in its tree. */
    static native boolean isListening(long subscription);

    /**
     * Removes the value from a level.
     *
     * @return false if nothing was removed
     */
    static native boolean unset(long key, int level);

    /**
     * Returns the name of the level of a key's effective value.
     *
     * @return "" if there is no value; null if the service cannot tell or there is no such key
     */
    static native String effectiveLevel(long root, String[] path, String key);

    /**
     * Returns the lock that counts for an entry.
     *
     * @param key a child of the node at the path, or null for that node
     * @return path, level, reason and source of the lock; no texts if there is none; null if there
     *         is no such entry
     */
    static native String[] lockOf(long root, String[] path, String key);

    /**
     * Tells whether values of an entry can be changed at a level.
     *
     * @return 1 if they can, 0 if not, -1 if the service cannot tell, -2 if there is no such entry
     */
    static native int isWritable(long root, String[] path, String key, String level);

    /**
     * Returns the description of an entry.
     *
     * @param key a child of the node at the path, or null for that node
     * @return title, text, unit, deprecation, the paths that replace it and that it replaces,
     *         constraint, then value and label of each choice; no texts if the service has no
     *         descriptions; null if there is no such entry
     */
    static native String[] describe(long root, String[] path, String key);

    /**
     * Returns the explanation of a key.
     *
     * @return texts of the key (type, validator, path of the validator), of its lock, of its
     *         description; then of each level the value and texts (level, whether it is in effect,
     *         whether it is locked, source, what is left out, why it is read-only, unreadable
     *         files); no elements if the service cannot explain; null if there is no such key
     */
    static native Object[] explain(long root, String[] path, String key);

    /**
     * Makes several changes of a tree as one; each array has an element for each change.
     *
     * @param context a transaction context whose changes come first, or 0
     * @param level the level of those, and of changes that name none
     * @param isTrial whether only problems are looked for
     * @param what 0 set, 1 unset, 2 add a node, 3 add a key, 4 remove, 5 move
     * @param paths dotted paths below the root
     * @param targets the paths that entries are moved to, or null
     * @param values values as they are stored, or null
     * @param levels level names, or null
     * @param validators class and argument of a validator, or null
     * @return the problems, each as path and reason; only the reason if the store failed; null if
     *         the JVM is going down
     */
    static native String[] applyChanges(long root, long context, String level, boolean isTrial,
            int[] what, String[] paths, String[] targets, Object[] values, String[] levels,
            String[][] validators);

    /** Returns the text of a number or a truth value in a settings file; null for another value. */
    static native String textOf(Object value);

    /**
     * Returns the number or the truth value that a text stands for; null if it stands for none.
     *
     * @param kind a number of {@link ValueKinds}
     */
    static native Object valueOf(int kind, String text);
}
