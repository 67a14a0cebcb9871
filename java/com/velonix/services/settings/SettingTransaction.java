package com.velonix.services.settings;

import java.lang.ref.Cleaner;
import java.util.List;
import java.util.Objects;
import java.util.concurrent.atomic.AtomicReference;

/**
 * A transaction: records changes to the settings of the process, and applies all of them or none.
 *
 * <p>The recorded changes stay after {@link #commit} and {@link #validate}: committing again
 * applies them again. Several changes of one key are applied in order. For one thread at a time: a
 * second thread, or a listener that is called during the commit, gets an {@link
 * IllegalStateException}. So does every use after {@link #close()}; then nothing is recorded or
 * applied. A cleaner closes a transaction that is no longer referenced.
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

    /** Makes an empty transaction, which the caller closes. */
    public SettingTransaction() {
        NativeLibrary.load();
        context = nativeCreateTransactionContext();
        deletion = TreeHandle.CLEANER.register(this, new Deletion(context));
    }

    /**
     * Records a change.
     *
     * @param setting the key to change
     * @param value its new value
     * @param <T> the class of its values
     * @throws IllegalArgumentException if the key does not belong to the settings of the process
     * @throws SettingNotFoundException if there is no such key
     * @throws SettingException if the settings service fails otherwise
     */
    public <T> void set(Setting<T> setting, T value) throws SettingException {
        Objects.requireNonNull(setting, "setting");
        if (!setting.parent().tree().isOfProcess()) {
            throw new IllegalArgumentException(setting
                    + " is not a setting of the process. A transaction changes only those.");
        }
        begin();
        try {
            setting.record(context, value);
        } finally {
            end();
        }
    }

    /**
     * Applies the recorded changes in one step, or none of them.
     *
     * @param level the level to change
     * @return the problems found; empty if the changes have been applied
     * @throws IllegalStateException if the native program has stopped Java; then nothing has been
     *     applied
     */
    public List<SettingValidity> commit(SettingLevel level) {
        String levelName = SettingLevel.nameOf(level);
        begin();
        try {
            List<SettingValidity> found = nativeCommitTransaction(context, levelName);
            return problems(found);
        } finally {
            end();
        }
    }

    /**
     * Looks for problems without applying anything.
     *
     * @return the problems found
     */
    public List<SettingValidity> validate() {
        begin();
        try {
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
