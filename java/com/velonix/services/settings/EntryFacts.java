package com.velonix.services.settings;

import java.util.Arrays;
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
