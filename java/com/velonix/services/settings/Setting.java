package com.velonix.services.settings;

import java.util.Arrays;
import java.util.EnumMap;
import java.util.List;
import java.util.Map;
import java.util.Objects;
import java.util.Optional;

/**
 * A key of a settings tree with values of one Java class. The object may exist without the key:
 * each operation looks for the key.
 *
 * <p>{@link SettingPath#setting} makes it; it is valid until the root of the tree is closed. May be
 * used by any number of threads, also by shutdown hooks. Every operation throws {@link
 * IllegalStateException} once the tree has been closed; it then has changed nothing. Any other
 * failure of the service is a {@link SettingException} or a {@link RuntimeException}.
 *
 * @param <T> the class of the values
 */
public final class Setting<T> extends KeyAccess<T> implements Listenable {
    /** How often registering is tried while other threads add and remove the entry. */
    private static final int LISTEN_ATTEMPTS = 100;

    Setting(SettingPath parent, String name, Class<T> type) {
        super(parent, name, type);
    }

    /**
     * Tells whether a text may be the name of a node or a key: an ASCII letter followed by letters,
     * digits and underscores, at most 63 characters in all.
     *
     * @param name the text
     * @return true if it may
     */
    public static boolean isValidName(String name) {
        Objects.requireNonNull(name, "name");
        NativeLibrary.load();
        return nativeIsKeyNameValid(name);
    }

    /**
     * Returns the effective value. It is cached: reading it again while nothing has changed it
     * takes no native call. Once a changing call has returned, in Java or in native code, every
     * thread of this process reads the new value. External changes are read within a second at
     * most. Each call returns a copy of an array.
     *
     * @return the value of the first level that has one
     * @throws SettingNotFoundException if there is no such key, or no level has a value
     * @throws SettingException if the settings service fails otherwise
     * @throws SettingUnsupportedTypeRuntimeException if the key has values of another class
     */
    public T get() throws SettingException {
        CachedValue<T> read = effective();
        T value = read.value();
        if (value == null) {
            throw new SettingNotFoundException(
                    read.isMissing() ? dotted() : dotted() + " has no value at any level");
        }
        return value;
    }

    /**
     * Returns the value at one level.
     *
     * @param level the level to read
     * @return its value
     * @throws SettingNotFoundException if there is no such key, or the level has no value
     * @throws SettingException if the settings service fails otherwise
     * @throws SettingUnsupportedTypeRuntimeException if the key has values of another class
     */
    public T get(SettingLevel level) throws SettingException {
        T value = at(level);
        if (value == null) {
            throw new SettingNotFoundException(
                    dotted() + " has no value at the level " + level.levelName());
        }
        return value;
    }

    /**
     * Returns the effective value, if there is one. The result is cached, as by {@link #get()},
     * also if there is none.
     *
     * @return the value of the first level that has one; empty if none has, or if there is no such
     *     key
     * @throws SettingException if the settings service fails otherwise
     * @throws SettingUnsupportedTypeRuntimeException if the key has values of another class
     */
    public Optional<T> find() throws SettingException {
        return Optional.ofNullable(effective().value());
    }

    /**
     * Returns the value at one level, if there is one.
     *
     * @param level the level to read
     * @return its value; empty if the level has none, or if there is no such key
     * @throws SettingException if the settings service fails otherwise
     * @throws SettingUnsupportedTypeRuntimeException if the key has values of another class
     */
    public Optional<T> find(SettingLevel level) throws SettingException {
        try {
            return Optional.ofNullable(at(level));
        } catch (SettingNotFoundException missing) {
            return Optional.empty();
        }
    }

    /**
     * Returns the effective value, or another one if no level has one, or if there is no such key.
     *
     * @param fallback the value to return if there is none; may be null
     * @return the value of the first level that has one, or else the fallback
     * @throws SettingException if the settings service fails
     * @throws SettingUnsupportedTypeRuntimeException if the key has values of another class
     */
    public T getOr(T fallback) throws SettingException {
        T value = effective().value();
        return value == null ? fallback : value;
    }

    /**
     * Returns the values of all levels. Each is read by itself.
     *
     * @return the levels that have a value, the highest first, and their values; empty also if
     *     there is no such key
     * @throws SettingException if the settings service fails
     * @throws SettingUnsupportedTypeRuntimeException if the key has values of another class
     */
    public Map<SettingLevel, T> values() throws SettingException {
        Map<SettingLevel, T> values = new EnumMap<>(SettingLevel.class);
        for (SettingLevel level : SettingLevel.values()) {
            Optional<T> value = find(level);
            if (value.isPresent())
                values.put(level, value.get());
        }
        return values;
    }

    /**
     * Returns the level of the effective value.
     *
     * @return the first level that has a value and counts (see {@link SettingLock}); empty if there
     *     is none
     * @throws SettingNotFoundException if there is no such key
     * @throws SettingException if the settings service fails otherwise
     */
    public Optional<SettingLevel> level() throws SettingException {
        try (NativeCall call = new NativeCall(tree)) {
            // The contract's native knows no locks, which leave levels without effect.
            String level = NativeLane.effectiveLevel(call.address, path(), name);
            if (level == null)
                level = nativeGetLevel(call.address, path(), name);
            NativeCall.check(this);
            return level == null || level.isEmpty() ? Optional.empty()
                                                    : Optional.of(SettingLevel.ofName(level));
        }
    }

    /**
     * Returns the class of the key's values in the tree, which {@link #type()} need not be.
     *
     * @return the class; empty while the key has neither a declared type nor a value
     * @throws SettingNotFoundException if there is no such key
     * @throws SettingException if the settings service fails otherwise
     */
    public Optional<Class<?>> declaredType() throws SettingException {
        return Optional.ofNullable(read(null).getType());
    }

    /**
     * Tells whether there is such a key.
     *
     * @return true if there is; false also if the path is that of a node
     */
    public boolean exists() {
        return exists(tree, path(), name);
    }

    /**
     * Tells whether there is such a key and any level has a value.
     *
     * @return true if {@link #get()} returns a value
     */
    public boolean isSet() {
        return isSet((String) null);
    }

    /**
     * Tells whether there is such a key and one level has a value.
     *
     * @param level the level to read
     * @return true if {@link #get(SettingLevel)} returns a value
     */
    public boolean isSet(SettingLevel level) {
        return isSet(SettingLevel.nameOf(level));
    }

    /**
     * Sets the value at the default level, {@link SettingLevel#defaultLevel()}.
     *
     * @param value the new value
     * @throws SettingNotFoundException if there is no such key
     * @throws SettingValidationException if a validator refuses the value, or the key has values of
     *     another class
     * @throws SettingStoreException if the change cannot be stored
     */
    public void set(T value) throws SettingException {
        set(value, SettingLevel.defaultLevel());
    }

    /**
     * Sets the value at one level.
     *
     * @param value the new value
     * @param level the level to change
     * @throws SettingNotFoundException if there is no such key
     * @throws SettingValidationException if a validator refuses the value, or the key has values of
     *     another class
     * @throws SettingAccessException if the level is read-only, or the key is locked for it
     * @throws SettingStoreException if the change cannot be stored
     */
    public void set(T value, SettingLevel level) throws SettingException {
        if (!setThroughLane(0, value, SettingLevel.numberOf(level)))
            setThroughContract(0, value, level.levelName());
    }

    /**
     * Returns a value as texts, in the form of settings files: {@link #parse} gives it back
     * exactly.
     *
     * @param value the value
     * @return one text, or for an array a text for each element
     * @throws SettingUnsupportedTypeRuntimeException if no setting has values of its class
     */
    public List<String> format(T value) {
        return ValueTexts.of(ValueTypes.toStored(value, parent, name));
    }

    /**
     * Returns the value that texts stand for, in the form of settings files. Sets nothing.
     *
     * @param texts one text, or for an array a text for each element
     * @return a value of the class {@link #type()} or, if values of several classes may be read as
     *     that, of {@link #declaredType()}
     * @throws SettingValidationException if they stand for no value of the class
     * @throws SettingNotFoundException if the class is that of the key, and there is no such key or
     *     it has no class yet
     * @throws SettingException if the settings service fails otherwise
     */
    public T parse(String... texts) throws SettingException {
        for (String text : texts) Objects.requireNonNull(text, "text");
        Class<?> stored = ValueTypes.isStorable(type) ? ValueTypes.stored(type) : declared();
        return ValueTypes.fromStored(ValueTexts.parse(stored, texts, dotted()), type);
    }

    private Class<?> declared() throws SettingException {
        Optional<Class<?>> declared = declaredType();
        if (declared.isEmpty())
            throw new SettingNotFoundException(dotted() + " has no class yet");
        return declared.get();
    }

    /**
     * Replaces the key by one with values of another class, in one step: its values of all levels
     * and its validator go, and the new key has one value, at the default level. Its listeners hear
     * of the removal and then end.
     *
     * @param value the value, which decides the class
     * @param <U> the class of the new key's values
     * @return the new key
     * @throws SettingValidationException if there is no such key, a file of a read-only level
     *     defines it, or the validator of a node above refuses the value
     * @throws SettingStoreException if the change cannot be stored
     */
    public <U> Setting<U> changeType(U value) throws SettingException {
        Objects.requireNonNull(value, "value");
        SettingTransaction.run(parent, SettingLevel.defaultLevel(), transaction -> {
            transaction.delete(parent, name);
            transaction.addKey(parent, name, value);
        });
        @SuppressWarnings("unchecked")
        Setting<U> key = parent.setting(name, (Class<U>) value.getClass());
        return key;
    }

    /**
     * Removes the value from the default level, {@link SettingLevel#defaultLevel()}.
     *
     * @throws SettingNotFoundException if there is no such key, or the level has no value
     * @throws SettingStoreException if the change cannot be stored
     */
    public void unset() throws SettingException {
        unset(SettingLevel.defaultLevel());
    }

    /**
     * Removes the value from one level.
     *
     * @param level the level to change
     * @throws SettingNotFoundException if there is no such key, or the level has no value
     * @throws SettingAccessException if the level is read-only, or the key is locked for it
     * @throws SettingStoreException if the change cannot be stored
     */
    public void unset(SettingLevel level) throws SettingException {
        int number = SettingLevel.numberOf(level);
        String levelName = level.levelName();
        try (NativeCall call = new NativeCall(tree)) {
            BoundKey key = boundKey(call);
            if (key != null && key.unset(number))
                return;
            nativeUnset(call.address, path(), name, levelName);
            NativeCall.check(this);
        } catch (SettingValidationException refused) {
            throw refused.forCaller();
        }
    }

    /**
     * Tells whether the value at a level can be changed: the level is not read-only, and no lock of
     * a lower level counts. A validator may still refuse a value.
     *
     * @param level the level
     * @return true if it can
     * @throws SettingNotFoundException if there is no such key
     * @throws SettingException if the settings service fails otherwise
     * @throws UnsupportedOperationException if another settings service is used that cannot tell
     */
    public boolean isWritable(SettingLevel level) throws SettingException {
        return EntryFacts.isWritable(tree, path(), name, level);
    }

    /**
     * Returns the lock that counts for the key, its own or that of a node above it.
     *
     * @return the lock; empty if there is none
     * @throws SettingNotFoundException if there is no such key
     * @throws SettingException if the settings service fails otherwise
     */
    public Optional<SettingLock> lock() throws SettingException {
        return EntryFacts.lock(tree, path(), name);
    }

    /**
     * Removes the value from the default level, if it has one, so that the value of a lower level
     * comes into effect.
     *
     * @return true if there was a value
     * @throws SettingStoreException if the change cannot be stored
     */
    public boolean reset() throws SettingException {
        return reset(SettingLevel.defaultLevel());
    }

    /**
     * Removes the value from one level, if it has one.
     *
     * @param level the level to change
     * @return true if there was a value
     * @throws SettingAccessException if the level is read-only and has a value
     * @throws SettingStoreException if the change cannot be stored
     */
    public boolean reset(SettingLevel level) throws SettingException {
        if (!isSet(level))
            return false;
        try {
            unset(level);
            return true;
        } catch (SettingNotFoundException removedMeanwhile) {
            return false;
        }
    }

    /**
     * Returns the description that settings files supply, with the constraint of the values.
     *
     * @return the description, whose texts are empty if there is none
     * @throws SettingNotFoundException if there is no such key
     * @throws SettingException if the settings service fails otherwise
     */
    public SettingDescription describe() throws SettingException {
        return EntryFacts.describe(tree, path(), name);
    }

    /**
     * Explains why the key has the value that it has: the value of each level, where it is from,
     * and why it counts or not. Settings files are read again for the positions of values.
     *
     * @return the explanation
     * @throws SettingNotFoundException if there is no such key
     * @throws SettingException if the settings service fails otherwise
     * @throws UnsupportedOperationException if another settings service is used that cannot explain
     */
    public SettingExplanation explain() throws SettingException {
        return EntryFacts.explain(tree, path(), name);
    }

    @Override
    public Registration addListener(SettingListener listener) throws SettingException {
        Objects.requireNonNull(listener, "listener");
        return listen(tree, path(), name, listener, this);
    }

    /**
     * Returns the path of the node that has the key.
     *
     * @return the path
     */
    public SettingPath parent() {
        return parent;
    }

    /**
     * Returns the key's name.
     *
     * @return the last name of its path
     */
    public String name() {
        return name;
    }

    /**
     * Returns the class that this object reads and writes values as.
     *
     * @return the class
     */
    public Class<T> type() {
        return type;
    }

    /** Returns the dotted path and the name of the tree. */
    @Override
    public String toString() {
        return dotted() + " in " + tree;
    }

    /** Tells whether this is the key of a node of the same tree. */
    boolean hasPath(SettingPath node, String key) {
        return name.equals(key) && Arrays.equals(path(), node.nameArray());
    }

    static boolean exists(TreeHandle tree, String[] path, String key) {
        try (NativeCall call = new NativeCall(tree)) {
            boolean exists = nativeExists(call.address, path, key);
            NativeCall.check(tree);
            return exists;
        }
    }

    static String factoryDir(TreeHandle tree) {
        try (NativeCall call = new NativeCall(tree)) {
            String directory = nativeGetFactoryDir(call.address);
            if (directory == null)
                throw NativeCall.unanswered(tree.toString());
            return directory;
        }
    }

    /** Registers on the node at the path or, if a key is named, on that child of it. */
    static Registration listen(TreeHandle tree, String[] path, String key, SettingListener listener,
            Object source) throws SettingException {
        try (NativeCall call = new NativeCall(tree)) {
            for (int attempt = 0; attempt < LISTEN_ATTEMPTS; ++attempt) {
                Registration registration = call.tree.listen(path, key, listener, source);
                if (registration != null && !NativeLane.wasRefused())
                    return registration;
                if (registration != null)
                    registration.close();
                // Removing a listener that was never added only throws if the entry does not exist.
                // If it does not throw, another thread has added the entry meanwhile.
                nativeAddRemoveListener(null, call.address, path, key, listener);
                NativeCall.check("a listener");
            }
            throw NativeCall.unanswered("a listener on " + Names.dotted(Arrays.asList(path), key));
        }
    }

    private boolean isSet(String level) {
        try (NativeCall call = new NativeCall(tree)) {
            boolean set = nativeIsSet(call.address, path(), name, level);
            NativeCall.check(this);
            return set;
        }
    }

    private static native void nativeAddRemoveListener(Object source, long handle, String[] path,
            String key, SettingListener listener) throws SettingException;

    static native SettingInfo nativeGet(long handle, String[] path, String key, String level)
            throws SettingException;

    private static native String nativeGetLevel(long handle, String[] path, String key)
            throws SettingException;

    private static native boolean nativeIsKeyNameValid(String name);

    private static native boolean nativeIsSet(long handle, String[] path, String key, String level);

    private static native boolean nativeExists(long handle, String[] path, String key);

    static native void nativeSet(long context, long handle, String[] path, String key,
            SettingInfo value, String level) throws SettingException;

    private static native void nativeUnset(long handle, String[] path, String key, String level)
            throws SettingException;

    private static native String nativeGetFactoryDir(long handle);
}
