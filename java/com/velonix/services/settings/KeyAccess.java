package com.velonix.services.settings;

/**
 * A key by its path, and the ways to its values: the cache, the lane, and the natives of the
 * contract. {@link Setting} is its public face. Any number of threads.
 *
 * @param <T> the class of the values
 */
abstract class KeyAccess<T> {
    final SettingPath parent;
    final TreeHandle tree;
    final String name;
    final Class<T> type;
    private final int counterOffset;

    /** The kind of the values; 0 if the class stands for several. */
    private final int kind;

    /** The value read last, or null. Threads may replace it at any time: it is immutable. */
    private CachedValue<T> cached;

    /** The bound key, from the second use on. */
    private BoundKey bound;
    private boolean used;

    KeyAccess(SettingPath parent, String name, Class<T> type) {
        this.parent = parent;
        this.tree = parent.tree();
        this.name = name;
        this.type = type;
        this.counterOffset = ChangeCounters.offset(parent.lastName(), name);
        this.kind = ValueTypes.kindOf(type);
    }

    /** Returns the dotted path. */
    final String dotted() {
        return parent.dotted(name);
    }

    /** Records the value in a transaction context. */
    final void record(long context, T value) throws SettingException {
        if (setThroughLane(context, value, NativeLane.EFFECTIVE))
            return;
        // The native method silently records nothing for a key that does not exist.
        if (!Setting.exists(tree, path(), name))
            throw new SettingNotFoundException(dotted());
        setThroughContract(context, value, null);
    }

    /** Sets or records the value by the lane; returns false if that did nothing. */
    final boolean setThroughLane(long context, T value, int level) {
        if (value == null || value.getClass() != type)
            return false;
        try (NativeCall call = new NativeCall(tree)) {
            BoundKey key = boundKey(call);
            return key != null && key.set(context, kind, level, value);
        }
    }

    /** Sets or records the value by the contract's native, which throws for every failure. */
    final void setThroughContract(long context, T value, String level) throws SettingException {
        SettingInfo info = new SettingInfo(ValueTypes.toStored(value, parent, name));
        try (NativeCall call = new NativeCall(tree)) {
            Setting.nativeSet(context, call.address, path(), name, info, level);
            NativeCall.check(this);
        } catch (SettingValidationException refused) {
            throw refused.forCaller();
        }
    }

    /** Returns the effective value, from the cache or from the tree. */
    final CachedValue<T> effective() throws SettingException {
        CachedValue<T> last = cached;
        if (last != null && last.isOfCount(ChangeCounters.count(counterOffset)) && tree.isOpen())
            return last;
        // The count before the value: a change that the value misses moves the counter from it.
        boolean cacheable = ChangeCounters.exist();
        long count = cacheable ? ChangeCounters.count(counterOffset) : 0;
        CachedValue<T> next;
        try {
            next = new CachedValue<>(count, readUncached(NativeLane.EFFECTIVE, null));
        } catch (SettingNotFoundException missing) {
            next = CachedValue.missing(count);
        }
        if (cacheable)
            cached = next;
        return next;
    }

    final T at(SettingLevel level) throws SettingException {
        return readUncached(SettingLevel.numberOf(level), level.levelName());
    }

    /** Reads the value at a level, or the effective value for a null level name; null if none. */
    @SuppressWarnings("unchecked")
    private T readUncached(int number, String level) throws SettingException {
        try (NativeCall call = new NativeCall(tree)) {
            BoundKey key = boundKey(call);
            Object value = key == null ? null : key.get(kind, number, type);
            if (value != null)
                return (T) value;
        }
        return typed(read(level));
    }

    /** Returns the bound key from the second use on; null before, or if it cannot be bound. */
    final BoundKey boundKey(NativeCall call) {
        if (bound != null || kind == 0)
            return bound;
        if (used)
            return bound = call.tree.bind(path(), name);
        used = true;
        return null;
    }

    final SettingInfo read(String level) throws SettingException {
        SettingInfo info;
        try (NativeCall call = new NativeCall(tree)) {
            info = Setting.nativeGet(call.address, path(), name, level);
        }
        if (info == null)
            throw NativeCall.unanswered(dotted());
        return info;
    }

    /** Returns the value as one of this object's class, or null if there is none. */
    private T typed(SettingInfo info) {
        Class<?> declared = info.getType();
        if (declared != null && !ValueTypes.fits(declared, type)) {
            throw new SettingUnsupportedTypeRuntimeException(dotted() + " is of type "
                    + declared.getTypeName() + " and was read as " + type.getTypeName());
        }
        Object value = info.getValue();
        return value == null ? null : ValueTypes.fromStored(value, type);
    }

    final String[] path() {
        return parent.nameArray();
    }
}
