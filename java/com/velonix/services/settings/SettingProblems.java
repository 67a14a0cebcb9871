package com.velonix.services.settings;

import java.util.List;
import java.util.Optional;
import java.util.function.Consumer;

/**
 * Problems that no call reports: a settings file or a stored value that is left out, trouble of a
 * store, an exception of a listener. Each goes once to the handler that the program has set or, if
 * there is none, as a warning to the {@link System.Logger} with the name of this package.
 *
 * <p>A thread that uses settings reports them: problems of files and stores at the end of its next
 * call but those that are answered from the cache, the exception of a listener after that
 * listener's call. What is still waiting when the process exits is written to standard error. Any
 * thread may use this class.
 */
public final class SettingProblems {
    private static volatile Consumer<? super SettingProblem> handler;

    private SettingProblems() {}

    /**
     * Sets the handler of the problems of the future; set before the first root is opened, it
     * receives those of the settings files too. It may use settings. Its exceptions are dropped. It
     * is not called for problems that it causes itself until it has returned.
     *
     * @param receiver the handler; null for the logger
     */
    public static void setHandler(Consumer<? super SettingProblem> receiver) {
        handler = receiver;
    }

    /**
     * Returns the problems of files and stores that the process has noticed so far, reported or
     * not.
     *
     * @return their texts, oldest first; the last 256
     */
    public static List<String> noticed() {
        NativeLibrary.load();
        String[] problems = NativeLane.noticedProblems();
        return problems == null ? List.of() : List.of(problems);
    }

    /** Reports a problem. The caller holds no lock. */
    static void report(String text) {
        report(new SettingProblem(text, Optional.empty()));
    }

    /** Reports the exception of a listener. The caller holds no lock. */
    static void reportListener(Object source, Throwable thrown) {
        try {
            report(new SettingProblem("A listener on " + source
                            + " has thrown an exception. The other listeners are called.",
                    Optional.of(thrown)));
        } catch (Throwable noText) {
            // Without stack or memory for the text; the other listeners matter more.
        }
    }

    private static void report(SettingProblem problem) {
        Consumer<? super SettingProblem> receiver = handler;
        try {
            if (receiver != null)
                receiver.accept(problem);
            else
                System.getLogger(SettingProblems.class.getPackageName())
                        .log(System.Logger.Level.WARNING, problem.text(),
                                problem.exception().orElse(null));
        } catch (Throwable dropped) {
            // There is nobody else to tell.
        }
    }
}
