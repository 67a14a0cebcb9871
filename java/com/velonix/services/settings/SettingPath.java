package com.velonix.services.settings;

import java.io.IOException;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import java.util.Objects;
import java.util.Optional;

/**
 * The path of a node in a settings tree. The object may exist without the node: each operation
 * looks for the node.
 *
 * <p>{@link #processRoot()}, {@link #sessionRoot(long)}, {@link #load(Path)} and {@link
 * #standalone()} open a tree and return its root, which owns the tree's native handle. All paths
 * and settings made from a root share its handle. Their operations throw {@link
 * IllegalStateException} once the root has been closed; they then have changed nothing. May be used
 * by any number of threads, also by shutdown hooks.
 *
 * <p>An operation throws {@link SettingNotFoundException} if the node, or an entry of it that is
 * named, does not exist, and {@link SettingNameDuplicationException} if another entry has the name
 * of a new one. Any other failure of the service is a {@link SettingException} or a {@link
 * RuntimeException}.
 */
public final class SettingPath implements AutoCloseable, Listenable {
    private final TreeHandle tree;
    private final String[] names;

    /**
     * The cached lists of children; the index is the selector plus one. Null before the first read.
     * Threads replace the elements without a lock, because a CachedNames is immutable.
     */
    private CachedNames[] cached;

    private SettingPath(TreeHandle tree, String[] names) {
        this.tree = tree;
        this.names = names;
    }

    /** {@return the root of the settings of this process, which the caller closes} */
    public static SettingPath processRoot() {
        NativeLibrary.load();
        return open(nativeGetZvmRoot(/* no session */ 0), true, "the settings of the process");
    }

    /**
     * Opens the settings of an engine session. A session that does not exist has the settings of
     * the process.
     *
     * @param session the session's number, not negative
     * @return the root, which the caller closes
     * @throws IllegalArgumentException if the number is negative
     */
    public static SettingPath sessionRoot(long session) {
        if (session < 0)
            throw new IllegalArgumentException("The session number " + session + " is negative");
        try (SettingPath process = processRoot()) {
            long address = nativeGetZvmRoot(session);
            boolean same = address != 0 && target(address) == process.tree.shared().target;
            return open(address, same, "the settings of session " + session);
        }
    }

    /**
     * Reads a settings file into a new tree in memory.
     *
     * @param file the file
     * @return the root, which the caller closes
     * @throws IOException if the file cannot be read or is no settings file; the message has the
     *     reason, with line and column
     * @throws SettingException if the settings service fails otherwise
     */
    public static SettingPath load(Path file) throws IOException, SettingException {
        String name = Objects.requireNonNull(file, "file").toFile().getPath();
        NativeLibrary.load();
        return open(nativeLoadSettings(name), false, "the settings of " + name);
    }

    /** {@return the root of a new, empty tree in memory, which the caller closes} */
    public static SettingPath standalone() {
        NativeLibrary.load();
        try {
            return open(nativeLoadSettings(null), false, "standalone settings");
        } catch (IOException | SettingException failed) {
            throw new IllegalStateException(failed.getMessage(), failed);
        }
    }

    /**
     * Returns a path below this one.
     *
     * @param further the names that lead downwards; none for this path itself
     * @return the path; closing it has no effect unless it is the root
     */
    public SettingPath path(String... further) {
        return new SettingPath(tree, Names.joined(names, further));
    }

    /**
     * Returns a key of the node.
     *
     * @param name the key's name
     * @param type the class of its values: one of the element classes, an array of one, a primitive
     *     array, or a supertype of the values, such as {@code Object}
     * @param <T> the class of its values
     * @return the key
     * @throws SettingUnsupportedTypeRuntimeException if no setting has values of that class
     */
    public <T> Setting<T> setting(String name, Class<T> type) {
        Objects.requireNonNull(name, "name");
        return tree.setting(this, name, ValueTypes.checkAsked(type, this, name));
    }

    /** {@return the names that lead here from the root; empty for the root} */
    public List<String> names() {
        return List.of(names);
    }

    /**
     * {@return the names of the nodes directly below this node, sorted}
     * @throws SettingException if there is no node here
     */
    public List<String> nodes() throws SettingException {
        return list(-1);
    }

    /**
     * {@return the names of the keys of this node, sorted}
     * @throws SettingException if there is no node here
     */
    public List<String> keys() throws SettingException {
        return list(1);
    }

    /**
     * {@return the names of the nodes and keys directly below this node, sorted}
     * @throws SettingException if there is no node here
     */
    public List<String> children() throws SettingException {
        return list(0);
    }

    /** {@return true if the node exists; false also if the path is that of a key} */
    public boolean exists() {
        return Setting.exists(tree, names, null);
    }

    /**
     * Tells whether an entry of this node is a node rather than a key.
     *
     * @param child the entry's name
     * @return true for a node, false for a key
     * @throws SettingException if there is no such entry
     */
    public boolean isNode(String child) throws SettingException {
        Objects.requireNonNull(child, "child");
        try (NativeCall call = new NativeCall(tree)) {
            boolean node = nativeIsChildNode(call.address, names, child);
            NativeCall.check(this);
            return node;
        }
    }

    /**
     * Adds a node.
     *
     * @param name its name, a letter followed by letters, digits and underscores
     * @return its path
     * @throws SettingValidationException if the tree would be deeper than 200 entries
     * @throws SettingException if there is no node here, or the change cannot be stored
     */
    public SettingPath addNode(String name) throws SettingException {
        return addNode(name, ValidatorName.NONE);
    }

    /**
     * Adds a node with a validator for the keys below it that have none of their own.
     *
     * @param name its name, a letter followed by letters, digits and underscores
     * @param validator the validator's class
     * @param argument the argument of the validator's constructor
     * @return its path
     * @throws IllegalArgumentException if the validator does not accept the argument
     * @throws SettingException if there is no node here, or the change cannot be stored
     */
    public SettingPath addNode(String name, Class<? extends ValueValidator> validator,
            String argument) throws SettingException {
        return addNode(name, ValidatorName.of(validator, argument));
    }

    /**
     * Returns the node at a path below this one, after adding the nodes that do not exist. Several
     * threads and processes may do so at once.
     *
     * @param further the names that lead downwards; none for this path itself
     * @return the path of the node
     * @throws SettingNameDuplicationException if there is a key on the way
     * @throws SettingException if this node does not exist, or the change cannot be stored
     */
    public SettingPath getOrAddNode(String... further) throws SettingException {
        SettingPath node = path(further);
        if (node.exists() || further.length == 0)
            return node;
        node = path();
        for (String name : further) {
            SettingPath next = node.path(name);
            try {
                if (!next.exists())
                    node.addNode(name);
            } catch (SettingNameDuplicationException taken) {
                if (!next.exists())
                    throw taken;
            }
            node = next;
        }
        return node;
    }

    /**
     * Returns a key of this node, after adding it with its first value if it does not exist.
     * Several threads and processes may do so at once: the first one's value stays.
     *
     * @param name the key's name
     * @param value the value of a new key, at the default level; it decides the class
     * @param <T> the class of the values
     * @return the key
     * @throws SettingUnsupportedTypeRuntimeException if there is a key with values of another class
     * @throws SettingNameDuplicationException if there is a node of that name
     * @throws SettingException if there is no node here, or the change is refused
     */
    public <T> Setting<T> getOrAddKey(String name, T value) throws SettingException {
        if (!Setting.exists(tree, names, Names.checkNew(name))) {
            try {
                return addKey(name, value);
            } catch (SettingNameDuplicationException taken) {
                if (!Setting.exists(tree, names, name))
                    throw taken;
            }
        }
        @SuppressWarnings("unchecked") Setting<T> key = setting(name, (Class<T>) value.getClass());
        key.find(); // refuses a key of another class
        return key;
    }

    /**
     * Returns the effective values of all keys of this node. Each is read by itself.
     *
     * @return the names of the keys that have a value, sorted, and their values
     * @throws SettingException if there is no node here
     */
    public Map<String, Object> values() throws SettingException {
        Map<String, Object> values = new LinkedHashMap<>();
        for (String key : keys()) {
            Object value = setting(key, Object.class).getOr(null);
            if (value != null)
                values.put(key, value);
        }
        return values;
    }

    /**
     * Adds a key with its first value, at the default level. If the value is refused, the key is
     * added without a value.
     *
     * @param name its name, a letter followed by letters, digits and underscores
     * @param value its value, which decides its type
     * @param <T> the class of its values
     * @return the key
     * @throws SettingException if there is no node here, or the change cannot be stored
     */
    public <T> Setting<T> addKey(String name, T value) throws SettingException {
        return addKey(name, value, SettingLevel.defaultLevel(), ValidatorName.NONE);
    }

    /**
     * Adds a key with a validator and its first value. If the value is refused, the key is added
     * without a value.
     *
     * @param name its name, a letter followed by letters, digits and underscores
     * @param value its value, which decides its type
     * @param level the level of the value
     * @param validator the validator's class
     * @param argument the argument of the validator's constructor
     * @param <T> the class of its values
     * @return the key
     * @throws IllegalArgumentException if the validator does not accept the argument
     * @throws SettingException if there is no node here, or the change is refused
     */
    public <T> Setting<T> addKey(String name, T value, SettingLevel level,
            Class<? extends ValueValidator> validator, String argument) throws SettingException {
        return addKey(name, value, level, ValidatorName.of(validator, argument));
    }

    /**
     * Removes an entry: a key, or a node with all entries below it.
     *
     * @param child the entry's name
     * @throws SettingAccessException if a file of a read-only level defines it, or it is locked
     * @throws SettingStoreException if the change cannot be stored
     */
    public void delete(String child) throws SettingException {
        Objects.requireNonNull(child, "child");
        try (NativeCall call = new NativeCall(tree)) {
            nativeDelete(call.address, names, child);
            NativeCall.check(this);
        } catch (SettingValidationException refused) {
            throw refused.forCaller();
        }
    }

    /**
     * Copies this node with all entries below it to another node, of this tree or of another.
     *
     * @param parent the parent of the copy
     * @param name the name of the copy
     * @return the path of the copy
     * @throws UnsupportedOperationException if the parent has a node of that name with children
     * @throws SettingValidationException if the tree would be deeper than 200 entries
     * @throws SettingStoreException if the change cannot be stored
     */
    public SettingPath copyTo(SettingPath parent, String name) throws SettingException {
        Names.checkNew(name);
        // The native method would report a missing source by the name of the destination.
        if (!exists())
            throw new SettingNotFoundException(dotted(null));
        Objects.requireNonNull(parent, "parent");
        try (NativeCall to = new NativeCall(parent.tree); NativeCall from = new NativeCall(tree)) {
            nativeCopySubtree(to.address, parent.names, from.address, names, name);
            NativeCall.check(this);
        } catch (SettingValidationException refused) {
            throw refused.forCaller();
        }
        return parent.path(name);
    }

    /**
     * Moves an entry of this node, with its values, its validator, and all entries below it, to
     * another node of the tree or to another name. It is a new entry there: listeners hear of the
     * removal of the old one and then end.
     *
     * @param child the entry's name
     * @param parent the node that it is moved to
     * @param name its name there
     * @throws IllegalArgumentException if the parent is in another tree
     * @throws SettingValidationException if there is no such entry, the new name is taken, a file
     *         of
     *     a read-only level defines the entry, or a validator refuses one of its values there
     * @throws SettingStoreException if the change cannot be stored
     */
    public void move(String child, SettingPath parent, String name) throws SettingException {
        SettingTransaction.run(this, SettingLevel.defaultLevel(),
                transaction -> transaction.move(this, child, parent, name));
    }

    /**
     * Tells whether entries and values below the node can be changed at a level: the level is not
     * read-only, and no lock of a lower level counts.
     *
     * @param level the level
     * @return true if they can
     * @throws SettingException if there is no node here
     * @throws UnsupportedOperationException if another settings service is used that cannot tell
     */
    public boolean isWritable(SettingLevel level) throws SettingException {
        return EntryFacts.isWritable(tree, names, null, level);
    }

    /**
     * Returns the lock that counts for the node, its own or that of a node above it.
     *
     * @return the lock; empty if there is none
     * @throws SettingException if there is no node here
     */
    public Optional<SettingLock> lock() throws SettingException {
        return EntryFacts.lock(tree, names, null);
    }

    /**
     * Writes everything below this node to a settings file, as of one moment. An existing file is
     * replaced in one step: a reader finds the old content or the new one, also after a crash.
     *
     * @param file the file; {@link #load(Path)} and a directory of the factory or workgroup level
     *     read it
     * @param levels the levels whose values are written; all of them if none is named
     * @throws SettingNotFoundException if there is no node here
     * @throws IOException if the file cannot be written, or cannot hold a text; the message has the
     *     file and the reason
     */
    public void save(Path file, SettingLevel... levels)
            throws IOException, SettingNotFoundException {
        String name = Objects.requireNonNull(file, "file").toFile().getPath();
        SettingLevel[] chosen = levels.length == 0 ? SettingLevel.values() : levels;
        String[] levelNames =
                Arrays.stream(chosen).map(SettingLevel::nameOf).toArray(String[] ::new);
        if (!exists())
            throw new SettingNotFoundException(dotted(null));
        try (NativeCall call = new NativeCall(tree)) {
            String reason = NativeLane.save(call.address, names, levelNames, name);
            NativeCall.check(this);
            if (reason != null)
                throw new IOException(reason);
        }
    }

    /**
     * Brings the changes of other processes into the whole tree: everything that a process of the
     * user had set, at the user level, before this call can be read when it returns. Its listeners
     * are called a moment later. Without this call, changes arrive by themselves within a second.
     * Asks the database one question if there are none.
     *
     * @throws SettingStoreException if the database cannot be asked; the tree then has what it had
     */
    public void sync() throws SettingStoreException {
        try (NativeCall call = new NativeCall(tree)) {
            String reason = NativeLane.synchronize(call.address);
            NativeCall.check(tree);
            if (reason != null)
                throw new SettingStoreException(tree + " cannot be synchronized: " + reason);
        }
    }

    /**
     * Returns the description that settings files supply.
     *
     * @return the description, whose texts are empty if there is none
     * @throws SettingException if there is no node here
     */
    public SettingDescription describe() throws SettingException {
        return EntryFacts.describe(tree, names, null);
    }

    @Override
    public Registration addListener(SettingListener listener) throws SettingException {
        Objects.requireNonNull(listener, "listener");
        return Setting.listen(tree, names, null, listener, this);
    }

    /** {@return the directory of the factory settings, which need not exist} */
    public Path factoryDir() {
        return Path.of(Setting.factoryDir(tree));
    }

    /** Closes the tree if this is its root. Does nothing otherwise, or if the tree is closed. */
    @Override
    public void close() {
        if (names.length == 0)
            tree.close();
    }

    /** Tells whether the other object is the same path in the same tree. */
    @Override
    public boolean equals(Object other) {
        return other instanceof SettingPath path && Arrays.equals(names, path.names)
                && tree.sameTree(path.tree);
    }

    @Override
    public int hashCode() {
        return 31 * tree.treeHash() + Arrays.hashCode(names);
    }

    /** Returns the dotted path and the name of the tree. */
    @Override
    public String toString() {
        return names.length == 0 ? tree.toString() : dotted(null) + " in " + tree;
    }

    TreeHandle tree() {
        return tree;
    }

    String[] nameArray() {
        return names;
    }

    /** Returns the node's own name, or null for the root. */
    String lastName() {
        return names.length == 0 ? null : names[names.length - 1];
    }

    String dotted(String key) {
        return Names.dotted(Arrays.asList(names), key);
    }

    /** Returns the identity of the root that a handle refers to. */
    static long target(long address) {
        return nativeGetPtrTarget(address);
    }

    static void release(long address) {
        nativeReleasePtr(address);
    }

    static SettingPath open(long address, boolean ofProcess, String description) {
        ServiceProblems.reportNew();
        if (address == 0)
            throw NativeCall.unanswered(description);
        return new SettingPath(new TreeHandle(address, ofProcess, description), new String[0]);
    }

    private SettingPath addNode(String name, ValidatorName validator) throws SettingException {
        Names.checkNew(name);
        try (NativeCall call = new NativeCall(tree)) {
            nativeAddNode(call.address, names, name, validator.className(), validator.argument());
            NativeCall.check(this);
        } catch (SettingValidationException refused) {
            throw refused.forCaller();
        }
        return path(name);
    }

    <T> Setting<T> addKey(String name, T value, SettingLevel level, ValidatorName validator)
            throws SettingException {
        Names.checkNew(name);
        Object stored = ValueTypes.toStored(value, this, name);
        @SuppressWarnings("unchecked") Setting<T> key = setting(name, (Class<T>) value.getClass());
        try (NativeCall call = new NativeCall(tree)) {
            nativeAddKey(call.address, names, name, new SettingInfo(stored),
                    SettingLevel.nameOf(level), validator.className(), validator.argument());
            NativeCall.check(key);
        } catch (SettingValidationException refused) {
            throw refused.forCaller();
        }
        return key;
    }

    private List<String> list(int selector) throws SettingException {
        CachedNames[] all = cached;
        if (all == null)
            cached = all = new CachedNames[3];
        CachedNames last = all[selector + 1];
        if (last != null && last.count() == ChangeCounters.count(counterOffset()) && tree.isOpen())
            return last.names();
        if (!ChangeCounters.exist())
            return listUncached(selector);
        // The count before the names: a change that the names miss moves the counter from it.
        CachedNames next =
                new CachedNames(ChangeCounters.count(counterOffset()), listUncached(selector));
        all[selector + 1] = next;
        return next.names();
    }

    private int counterOffset() {
        return ChangeCounters.offsetOfList(lastName());
    }

    private List<String> listUncached(int selector) throws SettingException {
        String[] children;
        try (NativeCall call = new NativeCall(tree)) {
            children = nativeGetChildren(call.address, names, selector);
        }
        if (children == null)
            throw NativeCall.unanswered(toString());
        // The contract of the native method leaves the order of nodes, and of keys, open.
        if (selector != 0)
            Arrays.sort(children);
        return List.of(children);
    }

    private static native void nativeAddNode(long handle, String[] path, String name,
            String validatorClass, String argument) throws SettingException;

    private static native void nativeAddKey(long handle, String[] path, String name,
            SettingInfo value, String level, String validatorClass, String argument)
            throws SettingException;

    private static native void nativeCopySubtree(long destination, String[] destinationPath,
            long source, String[] path, String name) throws SettingException;

    private static native void nativeDelete(long handle, String[] path, String name)
            throws SettingException;

    private static native long nativeGetZvmRoot(long session);

    private static native long nativeGetPtrTarget(long handle);

    private static native boolean nativeIsChildNode(long handle, String[] path, String name)
            throws SettingException;

    private static native long nativeLoadSettings(String fileName)
            throws IOException, SettingException;

    private static native void nativeReleasePtr(long handle);

    private static native String[] nativeGetChildren(long handle, String[] path, int selector)
            throws SettingException;
}
