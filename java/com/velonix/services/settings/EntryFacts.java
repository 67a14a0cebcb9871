package com.velonix.services.settings;

import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.Optional;

/** Facts about an entry beside its values. The natives of the lane supply them. */
final class EntryFacts {
    private EntryFacts() {}

    /**
     * Returns the lock that counts for an entry.
     *
     * @param key a child of the node at the path, or null for that node
     */
    static Optional<SettingLock> lock(TreeHandle tree, String[] path, String key)
            throws SettingException {
        try (NativeCall call = new NativeCall(tree)) {
            String[] texts = required(NativeLane.lockOf(call.address, path, key), path, key);
            return texts.length == 0 ? Optional.empty() : Optional.of(lockOf(texts));
        }
    }

    /** Tells whether values of an entry can be changed at a level. */
    static boolean isWritable(TreeHandle tree, String[] path, String key, SettingLevel level)
            throws SettingException {
        try (NativeCall call = new NativeCall(tree)) {
            int answer = NativeLane.isWritable(call.address, path, key, level.levelName());
            if (answer == -1)
                throw new UnsupportedOperationException("The settings service cannot tell this");
            return required(answer == -2 ? null : answer == 1, path, key);
        }
    }

    /**
     * Returns the description of an entry.
     *
     * @param key a child of the node at the path, or null for that node
     */
    static SettingDescription describe(TreeHandle tree, String[] path, String key)
            throws SettingException {
        try (NativeCall call = new NativeCall(tree)) {
            return description(required(NativeLane.describe(call.address, path, key), path, key));
        }
    }

    /** Explains a key. */
    static SettingExplanation explain(TreeHandle tree, String[] path, String key)
            throws SettingException {
        Object[] parts;
        try (NativeCall call = new NativeCall(tree)) {
            parts = required(NativeLane.explain(call.address, path, key), path, key);
        }
        if (parts.length == 0)
            throw new UnsupportedOperationException("The settings service cannot explain");
        String[] texts = (String[]) parts[0];
        String[] lock = (String[]) parts[1];
        List<SettingExplanation.Level> levels = new ArrayList<>();
        for (int i = 3; i < parts.length; i += 2)
            levels.add(level(parts[i], (String[]) parts[i + 1]));
        return new SettingExplanation(Names.dotted(Arrays.asList(path), key), texts[0],
                description((String[]) parts[2]), texts[1], texts[2],
                lock.length == 0 ? Optional.empty() : Optional.of(lockOf(lock)),
                List.copyOf(levels));
    }

    private static SettingExplanation.Level level(Object value, String[] texts) {
        return new SettingExplanation.Level(SettingLevel.ofName(texts[0]),
                Optional.ofNullable(value), !texts[1].isEmpty(), !texts[2].isEmpty(), texts[3],
                texts[4], texts[5], List.of(texts).subList(6, texts.length));
    }

    private static SettingDescription description(String[] texts) {
        if (texts.length == 0)
            return new SettingDescription("", "", "", "", "", "", "", List.of());
        List<SettingDescription.Choice> choices = new ArrayList<>();
        for (int i = 7; i < texts.length; i += 2)
            choices.add(new SettingDescription.Choice(texts[i], texts[i + 1]));
        return new SettingDescription(texts[0], texts[1], texts[2], texts[3], texts[4], texts[5],
                texts[6], List.copyOf(choices));
    }

    private static SettingLock lockOf(String[] texts) {
        Optional<String> reason = texts[2].isEmpty() ? Optional.empty() : Optional.of(texts[2]);
        return new SettingLock(texts[0], SettingLevel.ofName(texts[1]), reason, texts[3]);
    }

    /** Returns the answer of a native; throws if there is no such entry. */
    private static <T> T required(T answer, String[] path, String key) throws SettingException {
        String dotted = Names.dotted(Arrays.asList(path), key);
        NativeCall.check(dotted);
        if (answer == null)
            throw new SettingNotFoundException(dotted);
        return answer;
    }
}
