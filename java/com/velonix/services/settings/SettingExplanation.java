package com.velonix.services.settings;

import java.util.Arrays;
import java.util.List;
import java.util.Optional;

/**
 * The reasons why a key has the value that it has, as of one moment.
 *
 * @param path the dotted path of the key
 * @param type the name of the type in settings files, such as {@code int[]}; empty while the key
 *     has neither a declared type nor a value
 * @param description the key's description
 * @param validator the effective validator, empty if there is none
 * @param validatorPath the dotted path of the entry that has the validator
 * @param lock the lock that counts for the key
 * @param levels all levels, the highest first
 */
public record SettingExplanation(String path, String type, SettingDescription description,
        String validator, String validatorPath, Optional<SettingLock> lock, List<Level> levels) {
    /**
     * One level of a key.
     *
     * @param level the level
     * @param value the value, of the class that a {@link Setting} of the key's type has; empty if
     *     the level has none
     * @param isInEffect whether this is the effective value
     * @param isLocked whether the level has no effect because of the key's lock
     * @param source where the value is from: a file with line and column, a database, or the memory
     *     of this process
     * @param leftOut why a stored value of the level is left out; empty if there is none
     * @param readOnlyReason why the level is read-only; empty if it is not
     * @param unreadable the files of the level that are left out whole, with the mistake of each
     */
    public record Level(SettingLevel level, Optional<Object> value, boolean isInEffect,
            boolean isLocked, String source, String leftOut, String readOnlyReason,
            List<String> unreadable) {
        private String text() {
            StringBuilder text = new StringBuilder("  ").append(level.levelName()).append(": ");
            if (value.isPresent()) {
                Object shown = value.get();
                text.append(shown instanceof Object[] array ? Arrays.toString(array) : shown)
                        .append(", from ")
                        .append(source);
                text.append(isInEffect ? " (in effect)" : isLocked ? " (locked)" : " (hidden)");
            } else {
                text.append("no value");
            }
            if (!leftOut.isEmpty())
                text.append("; left out: ").append(leftOut);
            if (!readOnlyReason.isEmpty())
                text.append("; read-only: ").append(readOnlyReason);
            for (String file : unreadable) text.append("\n    not read: ").append(file);
            return text.append('\n').toString();
        }
    }

    /** {@return the level of the effective value; empty if there is none} */
    public Optional<Level> inEffect() {
        return levels.stream().filter(Level::isInEffect).findFirst();
    }

    /** Returns the explanation for people, with a line for each level. */
    @Override
    public String toString() {
        StringBuilder text = new StringBuilder(path).append(" (").append(type).append(")\n");
        if (!validator.isEmpty())
            text.append("  validator: ").append(validator).append('\n');
        lock.ifPresent(counts -> text.append("  lock: ").append(counts).append('\n'));
        for (Level level : levels) text.append(level.text());
        return text.toString();
    }
}
