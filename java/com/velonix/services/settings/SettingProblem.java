package com.velonix.services.settings;

import java.util.Optional;

/**
 * A problem that no call reports ({@link SettingProblems}).
 *
 * @param text one line; if the problem is about a settings file, it begins with the file, and with
 *     line and column if these are known
 * @param exception what a listener has thrown; empty for other problems
 */
public record SettingProblem(String text, Optional<Throwable> exception) {}
