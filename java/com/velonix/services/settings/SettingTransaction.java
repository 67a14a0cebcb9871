package com.velonix.services.settings;

import java.lang.ref.Cleaner;
import java.util.ArrayList;
import java.util.List;
import java.util.Objects;
import java.util.concurrent.atomic.AtomicReference;

/**
 * A transaction: records changes to the settings of the process, or to those of another tree, and
 * makes all of them or none. It sets and removes values at any level, and adds, removes and moves
 * entries. Other threads, processes and listeners see all changes at once.
 *
 * <p>Each change is made as it would be after those before it: a key that the transaction adds may
 * be set by it. The recorded changes stay after {@link #commit} and {@link #validate}: committing
 * again makes them again. For one thread at a time: a second thread, or a listener that is called
 * during the commit, gets an {@link IllegalStateException}. So does every use after {@link
 * #close()}; then nothing is recorded or changed. A cleaner closes a transaction that is no longer
 * referenced.
 *
 * <p>Changes that are stored must all be of one level, because two stores cannot change as one.
 * Added, removed and moved entries belong to the user level; values of the session level may be
 * among them.
 */
public final class SettingTransaction implements AutoCloseable {
    enum State {
        IDLE,
        IN_USE,
        /** Closed during a call, which deletes the context when it ends. */
        IN_USE_AND_CLOSED,
        CLOSED
    }

    /** Deletes the context of a transaction that is closed or no longer referenced. */
    record Deletion(long context) implements Runnable {
        @Override
        public void run() {
            nativeDeleteTransactionContext(context);
        }
    }

    private final long context;
    private final Cleaner.Cleanable deletion;
    private final AtomicReference<State> state = new AtomicReference<>(State.IDLE);

    /** The changes that are not values of the process's settings at the level of the commit. */
    private final RecordedChanges changes = new RecordedChanges();

    /** The tree of those changes; null for the settings of the process, before the first one. */
    private TreeHandle tree;

    /** Whether the last commit failed because of the store. */
    private boolean storeFailed;

    /** Records changes in a transaction. */
    @FunctionalInterface
    public interface Body {
        /**
         * Records the changes.
         *
         * @param transaction the transaction, which the caller commits and closes
         * @throws SettingException to commit nothing
         */
        void record(SettingTransaction transaction) throws SettingException;
    }

    /**
     * Records changes in a new transaction and commits it.
     *
     * @param root the root of the tree, or a path of it
     * @param level the level of changes that name none
     * @param body records the changes
     * @throws SettingValidationException if there are problems; the message has all of them, and
     *     nothing has been changed
     * @throws SettingStoreException if the changes cannot be stored
     * @throws SettingException if the body throws it
     */
    public static void run(SettingPath root, SettingLevel level, Body body)
            throws SettingException {
        Objects.requireNonNull(level, "level");
        Objects.requireNonNull(body, "body");
        try (SettingTransaction transaction = on(root)) {
            body.record(transaction);
            List<SettingValidity> found = transaction.commit(level);
            if (!found.isEmpty()) {
                String all = String.join("; ", found.stream().map(Object::toString).toList());
                throw transaction.storeFailed ? new SettingStoreException(found.get(0).reason())
                                              : new SettingValidationException(all);
            }
        }
    }

    /**
     * Makes an empty transaction on a tree, which the caller closes.
     *
     * @param root the root of the tree, or a path of it
     * @return the transaction
     */
    public static SettingTransaction on(SettingPath root) {
        TreeHandle tree = Objects.requireNonNull(root, "root").tree();
        SettingTransaction transaction = new SettingTransaction();
        transaction.tree = tree;
        return transaction;
    }

    /** Makes an empty transaction on the settings of the process, which the caller closes. */
    public SettingTransaction() {
        NativeLibrary.load();
        context = nativeCreateTransactionContext();
        deletion = TreeHandle.CLEANER.register(this, new Deletion(context));
    }

    /**
     * Records a value, which is set at the level of the commit.
     *
     * @param setting the key to change
     * @param value its new value
     * @param <T> the class of its values
     * @throws IllegalArgumentException if the key does not belong to the tree
     * @throws SettingNotFoundException if there is no such key; one that this transaction adds or
     *     moves is there
     * @throws SettingException if the settings service fails otherwise
     */
    public <T> void set(Setting<T> setting, T value) throws SettingException {
        begin(nodeOf(setting));
        try {
            if (tree == null)
                setting.record(context, value);
            else
                changes.set(setting, value, null);
        } finally {
            end();
        }
    }

    /**
     * Records a value, which is set at a level. A key that does not exist is found at the commit.
     *
     * @param setting the key to change
     * @param value its new value
     * @param level the level to change
     * @param <T> the class of its values
     * @throws IllegalArgumentException if the key does not belong to the tree
     */
    public <T> void set(Setting<T> setting, T value, SettingLevel level) {
        Objects.requireNonNull(level, "level");
        record(nodeOf(setting), () -> changes.set(setting, value, level));
    }

    /**
     * Records that the value of a level is removed.
     *
     * @param setting the key to change
     * @param level the level to change
     * @throws IllegalArgumentException if the key does not belong to the tree
     */
    public void unset(Setting<?> setting, SettingLevel level) {
        Objects.requireNonNull(level, "level");
        record(nodeOf(setting), () -> changes.unset(setting, level));
    }

    /**
     * Records that a node is added.
     *
     * @param parent the node that it is added to
     * @param name its name, a letter followed by letters, digits and underscores
     * @return its path
     * @throws IllegalArgumentException if the parent does not belong to the tree
     */
    public SettingPath addNode(SettingPath parent, String name) {
        Names.checkNew(name);
        record(parent, () -> changes.addNode(parent, name, ValidatorName.NONE));
        return parent.path(name);
    }

    /**
     * Records that a node is added, with a validator for the keys below it that have none.
     *
     * @param parent the node that it is added to
     * @param name its name, a letter followed by letters, digits and underscores
     * @param validator the validator's class
     * @param argument the argument of the validator's constructor
     * @return its path
     * @throws IllegalArgumentException if the parent does not belong to the tree, or the validator
     *     does not accept the argument
     */
    public SettingPath addNode(SettingPath parent, String name,
            Class<? extends ValueValidator> validator, String argument) {
        Names.checkNew(name);
        ValidatorName named = ValidatorName.of(validator, argument);
        record(parent, () -> changes.addNode(parent, name, named));
        return parent.path(name);
    }

    /**
     * Records that a key is added with its first value, which is set at the level of the commit.
     *
     * @param parent the node that it is added to
     * @param name its name, a letter followed by letters, digits and underscores
     * @param value its value, which decides its type
     * @param <T> the class of its values
     * @return the key
     * @throws IllegalArgumentException if the parent does not belong to the tree
     */
    public <T> Setting<T> addKey(SettingPath parent, String name, T value) {
        return addKey(parent, name, value, ValidatorName.NONE);
    }

    /**
     * Records that a key is added with a validator and its first value, which is set at the level
     * of the commit.
     *
     * @param parent the node that it is added to
     * @param name its name, a letter followed by letters, digits and underscores
     * @param value its value, which decides its type
     * @param validator the validator's class
     * @param argument the argument of the validator's constructor
     * @param <T> the class of its values
     * @return the key
     * @throws IllegalArgumentException if the parent does not belong to the tree, or the validator
     *     does not accept the argument
     */
    public <T> Setting<T> addKey(SettingPath parent, String name, T value,
            Class<? extends ValueValidator> validator, String argument) {
        return addKey(parent, name, value, ValidatorName.of(validator, argument));
    }

    /**
     * Records that an entry is removed: a key, or a node with all entries below it.
     *
     * @param parent the node that has it
     * @param name its name
     * @throws IllegalArgumentException if the parent does not belong to the tree
     */
    public void delete(SettingPath parent, String name) {
        Objects.requireNonNull(name, "name");
        record(parent, () -> changes.remove(parent.dotted(name)));
    }

    /**
     * Records that an entry is moved, with its values, its validator, and all entries below it. It
     * is a new entry there: listeners hear of the removal of the old one and then end. An entry is
     * moved before anything below it is changed by the same transaction.
     *
     * @param parent the node that has it
     * @param name its name
     * @param newParent the node that it is moved to, of the same tree
     * @param newName its name there
     * @throws IllegalArgumentException if a parent does not belong to the tree
     */
    public void move(SettingPath parent, String name, SettingPath newParent, String newName) {
        Objects.requireNonNull(name, "name");
        Names.checkNew(newName);
        checkTree(Objects.requireNonNull(newParent, "newParent"));
        record(parent, () -> changes.move(parent.dotted(name), newParent.dotted(newName)));
    }

    /**
     * Makes the recorded changes in one step, or none of them.
     *
     * @param level the level of changes that name none
     * @return the problems found; empty if the changes have been made
     * @throws IllegalStateException if the native program has stopped Java; then nothing has been
     *     changed
     */
    public List<SettingValidity> commit(SettingLevel level) {
        String levelName = SettingLevel.nameOf(level);
        begin();
        try {
            if (!changes.isEmpty())
                return apply(level, false);
            List<SettingValidity> found = nativeCommitTransaction(context, levelName);
            return problems(found);
        } finally {
            end();
        }
    }

    /**
     * Looks for problems without changing anything.
     *
     * @return the problems found
     */
    public List<SettingValidity> validate() {
        begin();
        try {
            if (!changes.isEmpty())
                return apply(SettingLevel.defaultLevel(), true);
            List<SettingValidity> found = nativeValidateTransaction(context, "");
            return problems(found);
        } finally {
            end();
        }
    }

    /** Drops the recorded changes. Closing again does nothing. */
    @Override
    public void close() {
        State before = state.getAndUpdate(now
                -> now == State.IDLE || now == State.CLOSED ? State.CLOSED
                                                            : State.IN_USE_AND_CLOSED);
        if (before == State.IDLE)
            deletion.clean();
    }

    private <T> Setting<T> addKey(
            SettingPath parent, String name, T value, ValidatorName validator) {
        Names.checkNew(name);
        Objects.requireNonNull(value, "value");
        record(parent, () -> changes.addKey(parent, name, value, null, validator));
        @SuppressWarnings("unchecked")
        Setting<T> key = parent.setting(name, (Class<T>) value.getClass());
        return key;
    }

    private void record(SettingPath place, Runnable change) {
        begin(place);
        try {
            change.run();
            if (tree == null)
                tree = place.tree();
        } finally {
            end();
        }
    }

    private List<SettingValidity> apply(SettingLevel level, boolean isTrial) {
        String[] texts;
        try (NativeCall call = new NativeCall(tree)) {
            texts = changes.apply(call.address, context, level, isTrial);
        }
        NativeCall.check("a transaction");
        if (texts == null)
            throw NativeCall.unanswered("a transaction");
        storeFailed = texts.length == 1;
        if (storeFailed)
            return List.of(new SettingValidity("", texts[0]));
        List<SettingValidity> found = new ArrayList<>();
        for (int i = 0; i < texts.length; i += 2)
            found.add(new SettingValidity(texts[i], texts[i + 1]));
        return List.copyOf(found);
    }

    private static SettingPath nodeOf(Setting<?> setting) {
        return Objects.requireNonNull(setting, "setting").parent();
    }

    private void begin(SettingPath place) {
        checkTree(place);
        begin();
    }

    private void checkTree(SettingPath place) {
        TreeHandle other = Objects.requireNonNull(place, "parent").tree();
        if (tree == null ? !other.isOfProcess() : !tree.sameTree(other)) {
            throw new IllegalArgumentException(place + " does not belong to "
                    + (tree == null ? "the settings of the process" : tree.toString())
                    + ", which the transaction changes");
        }
    }

    private void begin() {
        State before = state.compareAndExchange(State.IDLE, State.IN_USE);
        if (before == State.IDLE)
            return;
        throw new IllegalStateException(before == State.IN_USE ? "the transaction is in use"
                                                               : "the transaction has been closed");
    }

    private void end() {
        if (!state.compareAndSet(State.IN_USE, State.IDLE)) {
            state.set(State.CLOSED);
            deletion.clean();
        }
        ServiceProblems.reportNew();
    }

    private static List<SettingValidity> problems(List<SettingValidity> found) {
        NativeCall.check("a transaction");
        return found == null ? List.of() : List.copyOf(found);
    }

    private static native long nativeCreateTransactionContext();

    private static native void nativeDeleteTransactionContext(long context);

    private static native List<SettingValidity> nativeCommitTransaction(long context, String level);

    private static native List<SettingValidity> nativeValidateTransaction(
            long context, String level);
}
