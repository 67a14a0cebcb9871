package com.velonix.services.settings;

import java.lang.ref.Cleaner;
import java.util.List;
import java.util.Objects;
import java.util.concurrent.atomic.AtomicReference;

/**
 * Collects changes to the settings of the process, to apply all of them or none.
 *
 * <p>Recorded changes stay after {@link #commit} and {@link #validate}: committing again applies
 * them again. Several changes of one key are applied in order. For one thread at a time; a second
 * one, or a listener that is called while the transaction commits, is refused with {@link
 * IllegalStateException}. After {@link #close()} every use is refused, and so it is once the Java
 * machine has begun to shut down: nothing is recorded or applied then. One that was forgotten is
 * closed by a cleaner.
 */
public final class SettingTransaction implements AutoCloseable {
    enum State {
        IDLE,
        IN_USE,
        /** Closed by somebody while in use; who uses it frees it. */
        IN_USE_AND_CLOSED,
        CLOSED
    }

    /** What is left to do when the transaction has been closed or forgotten. */
    record Deletion(long context) implements Runnable {
        @Override
        public void run() {
            nativeDeleteTransactionContext(context);
        }
    }

    private final long context;
    private final Cleaner.Cleanable deletion;
    private final AtomicReference<State> state = new AtomicReference<>(State.IDLE);

    /** Makes an empty transaction; the caller closes it. */
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
            throw new IllegalArgumentException(
                    setting + " is not among the settings of the process");
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
     * @return the problems that were found; empty when the changes have been applied
     * @throws IllegalStateException if the Java machine is shutting down: nothing has been applied
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
     * @return the problems that were found
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
        if (state.compareAndSet(State.IN_USE, State.IDLE))
            return;
        state.set(State.CLOSED);
        deletion.clean();
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
