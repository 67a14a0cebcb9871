package com.velonix.services.settings;

import java.util.Arrays;
import java.util.Objects;
import java.util.Optional;

/**
 * A key of a settings tree, seen as holding values of one Java class. Whether there is such a key
 * is found out when an operation needs it.
 *
 * <p>Obtained from {@link SettingPath#setting}; it ends with the path that it was obtained from.
 * May be used by any number of threads. Every operation may fail with {@link IllegalStateException}
 * once the tree has been closed, or the Java machine has begun to shut down; a change that failed
 * so has not been made. Failures of the service other than those named here are {@link
 * SettingException}s too.
 *
 * @param <T> the class of the values
 */
public final class Setting<T> implements Listenable {
    /** How often an entry may come and go while a listener is registered on it. */
    private static final int LISTEN_ATTEMPTS = 100;

    private final SettingPath parent;
    private final TreeHandle tree;
    private final String name;
    private final Class<T> type;
    private final int counter;

    /** The kind of the values; 0 when their class stands for several. */
    private final int kind;

    /** What was read last, or null. Any thread may replace it at any time: it knows if it holds. */
    private CachedValue<T> kept;

    /** The key, once it has been used; null before. */
    private BoundKey bound;
    private boolean used;

    Setting(SettingPath parent, String name, Class<T> type) {
        this.parent = parent;
        this.tree = parent.tree();
        this.name = name;
        this.type = type;
        this.counter = ChangeCounters.place(parent.lastName(), name);
        this.kind = ValueTypes.kindOf(type);
    }

    /**
     * Whether a text may be the name of a node or a key: an ASCII letter followed by letters,
     * digits and underscores, at most 63 in all.
     *
     * @param name the text
     * @return true when it may
     */
    public static boolean isValidName(String name) {
        Objects.requireNonNull(name, "name");
        NativeLibrary.load();
        return nativeIsKeyNameValid(name);
    }

    /**
     * The value in effect. It is kept: reading it again while nothing has changed it takes no
     * native call. Once the call that changed it has returned, in Java or in native code, every
     * thread of this process reads the new value. What another process has changed is read here
     * within a moment, a second at most. Of an array each call returns a copy.
     *
     * @return the value of the first level that has one
     * @throws SettingNotFoundException if there is no such key, or no level has a value
     * @throws SettingException if the settings service fails otherwise
     * @throws SettingUnsupportedTypeRuntimeException if the key has values of another class
     */
    public T get() throws SettingException {
        CachedValue<T> now = inEffect();
        T value = now.value();
        if (value == null) {
            throw new SettingNotFoundException(
                    now.isMissing() ? dotted() : dotted() + " has no value at any level");
        }
        return value;
    }

    /**
     * The value at one level.
     *
     * @param level the level to look at
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
     * The value in effect, if there is one. It is kept, as by {@link #get()}, and so is that there
     * is none.
     *
     * @return the value of the first level that has one; empty when none has, and when there is no
     *     such key
     * @throws SettingException if the settings service fails otherwise
     * @throws SettingUnsupportedTypeRuntimeException if the key has values of another class
     */
    public Optional<T> find() throws SettingException {
        return Optional.ofNullable(inEffect().value());
    }

    /**
     * The value at one level, if there is one.
     *
     * @param level the level to look at
     * @return its value; empty when the level has none, and when there is no such key
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
     * The level that supplies the value in effect.
     *
     * @return the first level that has a value; empty when none has
     * @throws SettingNotFoundException if there is no such key
     * @throws SettingException if the settings service fails otherwise
     */
    public Optional<SettingLevel> level() throws SettingException {
        try (NativeCall call = new NativeCall(tree)) {
            String level = nativeGetLevel(call.address, path(), name);
            NativeCall.check(this);
            return level == null ? Optional.empty() : Optional.of(SettingLevel.ofName(level));
        }
    }

    /**
     * The class that the key's values have, whatever class this object reads them as.
     *
     * @return the class; empty while the key has neither a declared type nor a value
     * @throws SettingNotFoundException if there is no such key
     * @throws SettingException if the settings service fails otherwise
     */
    public Optional<Class<?>> declaredType() throws SettingException {
        return Optional.ofNullable(read(null).getType());
    }

    /**
     * Whether there is such a key.
     *
     * @return false also where there is a node
     */
    public boolean exists() {
        return exists(tree, path(), name);
    }

    /**
     * Whether there is such a key and some level has a value.
     *
     * @return true when {@link #get()} has something to return
     */
    public boolean isSet() {
        return isSet((String) null);
    }

    /**
     * Whether there is such a key and one level has a value.
     *
     * @param level the level to look at
     * @return true when {@link #get(SettingLevel)} has something to return
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
     * @throws SettingException if the change cannot be stored
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
     * @throws SettingAccessException if the level is read-only
     * @throws SettingException if the change cannot be stored
     */
    public void set(T value, SettingLevel level) throws SettingException {
        if (!storeAtOnce(0, value, SettingLevel.numberOf(level)))
            store(0, value, level.levelName());
    }

    /**
     * Removes the value from the default level, {@link SettingLevel#defaultLevel()}.
     *
     * @throws SettingNotFoundException if there is no such key, or the level has no value
     * @throws SettingException if the change cannot be stored
     */
    public void unset() throws SettingException {
        unset(SettingLevel.defaultLevel());
    }

    /**
     * Removes the value from one level.
     *
     * @param level the level to change
     * @throws SettingNotFoundException if there is no such key, or the level has no value
     * @throws SettingAccessException if the level is read-only
     * @throws SettingException if the change cannot be stored
     */
    public void unset(SettingLevel level) throws SettingException {
        int number = SettingLevel.numberOf(level);
        String levelName = level.levelName();
        try (NativeCall call = new NativeCall(tree)) {
            BoundKey key = bound(call);
            if (key != null && key.unset(number))
                return;
            nativeUnset(call.address, path(), name, levelName);
            NativeCall.check(this);
        }
    }

    @Override
    public Registration addListener(SettingListener listener) throws SettingException {
        Objects.requireNonNull(listener, "listener");
        return listen(tree, path(), name, listener, this);
    }

    /**
     * The place of the node that holds the key.
     *
     * @return the place
     */
    public SettingPath parent() {
        return parent;
    }

    /**
     * The key's name.
     *
     * @return the last component of its path
     */
    public String name() {
        return name;
    }

    /**
     * The class that this object reads and writes values as.
     *
     * @return the class
     */
    public Class<T> type() {
        return type;
    }

    /** The dotted path and the tree that it is in. */
    @Override
    public String toString() {
        return dotted() + " in " + tree;
    }

    /** Whether this is a key of that name at the place, which is of the same tree. */
    boolean isAt(SettingPath place, String key) {
        return name.equals(key) && Arrays.equals(path(), place.nameArray());
    }

    /** The dotted path. */
    String dotted() {
        return parent.dotted(name);
    }

    /** Records the value in a transaction context. */
    void record(long context, T value) throws SettingException {
        if (storeAtOnce(context, value, NativeLane.IN_EFFECT))
            return;
        // The native call records nothing for a key that does not exist, and does not say so.
        if (!exists())
            throw new SettingNotFoundException(dotted());
        store(context, value, null);
    }

    /** Sets or records the value by the short way; false when that was not done. */
    private boolean storeAtOnce(long context, T value, int level) {
        if (value == null || value.getClass() != type)
            return false;
        try (NativeCall call = new NativeCall(tree)) {
            BoundKey key = bound(call);
            return key != null && key.set(context, kind, level, value);
        }
    }

    /** The same by the way on which every failure has its reason. */
    private void store(long context, T value, String level) throws SettingException {
        SettingInfo info = new SettingInfo(ValueTypes.toStored(value, parent, name));
        try (NativeCall call = new NativeCall(tree)) {
            nativeSet(context, call.address, path(), name, info, level);
            NativeCall.check(this);
        }
    }

    static boolean exists(TreeHandle tree, String[] path, String key) {
        try (NativeCall call = new NativeCall(tree)) {
            boolean there = nativeExists(call.address, path, key);
            NativeCall.check(tree);
            return there;
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

    /** Registers on the node at the path or, with a key's name, on that child of it. */
    static Registration listen(TreeHandle tree, String[] path, String key,
            SettingListener listener, Object source) throws SettingException {
        try (NativeCall call = new NativeCall(tree)) {
            for (int attempt = 0; attempt < LISTEN_ATTEMPTS; ++attempt) {
                Registration registration = call.tree.listen(path, key, listener, source);
                if (registration != null && !NativeLane.wasRefused())
                    return registration;
                if (registration != null)
                    registration.close();
                // Removing a listener that was never added does nothing, but says what is wrong with
                // the place. If nothing is, another thread has added the entry meanwhile.
                nativeAddRemoveListener(null, call.address, path, key, listener);
                NativeCall.check("a listener");
            }
            throw NativeCall.unanswered("a listener on " + Names.dotted(Arrays.asList(path), key));
        }
    }

    /** The value in effect, as it is kept or else as it is now. */
    private CachedValue<T> inEffect() throws SettingException {
        CachedValue<T> last = kept;
        if (last != null && last.holdsUnder(ChangeCounters.of(counter)) && tree.isOpen())
            return last;
        // The count first: a change that the value misses moves it on from here.
        boolean keeps = ChangeCounters.areThere();
        long count = keeps ? ChangeCounters.of(counter) : 0;
        CachedValue<T> next;
        try {
            next = new CachedValue<>(count, now(NativeLane.IN_EFFECT, null));
        } catch (SettingNotFoundException missing) {
            next = CachedValue.missing(count);
        }
        if (keeps)
            kept = next;
        return next;
    }

    private T at(SettingLevel level) throws SettingException {
        return now(SettingLevel.numberOf(level), level.levelName());
    }

    /** The value that a level, or no level for the one in effect, has now; null for none. */
    @SuppressWarnings("unchecked")
    private T now(int number, String level) throws SettingException {
        try (NativeCall call = new NativeCall(tree)) {
            BoundKey key = bound(call);
            Object value = key == null ? null : key.get(kind, number, type);
            if (value != null)
                return (T) value;
        }
        return typed(read(level));
    }

    /** The key if it was used before; null else. */
    private BoundKey bound(NativeCall call) {
        if (bound != null || kind == 0)
            return bound;
        if (used)
            return bound = call.tree.bound(path(), name);
        used = true;
        return null;
    }

    private SettingInfo read(String level) throws SettingException {
        SettingInfo info;
        try (NativeCall call = new NativeCall(tree)) {
            info = nativeGet(call.address, path(), name, level);
        }
        if (info == null)
            throw NativeCall.unanswered(dotted());
        return info;
    }

    /** The value as one of this object's class, or null when there is none. */
    private T typed(SettingInfo info) {
        Class<?> declared = info.getType();
        if (declared != null && !ValueTypes.fits(declared, type)) {
            throw new SettingUnsupportedTypeRuntimeException(dotted() + " is of type "
                    + declared.getTypeName() + " and was read as " + type.getTypeName());
        }
        Object value = info.getValue();
        return value == null ? null : ValueTypes.fromStored(value, type);
    }

    private boolean isSet(String level) {
        try (NativeCall call = new NativeCall(tree)) {
            boolean set = nativeIsSet(call.address, path(), name, level);
            NativeCall.check(this);
            return set;
        }
    }

    private String[] path() {
        return parent.nameArray();
    }

    private static native void nativeAddRemoveListener(Object source, long handle, String[] path,
            String key, SettingListener listener) throws SettingException;

    private static native SettingInfo nativeGet(
            long handle, String[] path, String key, String level) throws SettingException;

    private static native String nativeGetLevel(long handle, String[] path, String key)
            throws SettingException;

    private static native boolean nativeIsKeyNameValid(String name);

    private static native boolean nativeIsSet(long handle, String[] path, String key, String level);

    private static native boolean nativeExists(long handle, String[] path, String key);

    private static native void nativeSet(long context, long handle, String[] path, String key,
            SettingInfo value, String level) throws SettingException;

    private static native void nativeUnset(long handle, String[] path, String key, String level)
            throws SettingException;

    private static native String nativeGetFactoryDir(long handle);
}
