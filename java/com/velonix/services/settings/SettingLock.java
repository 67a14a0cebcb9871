package com.velonix.services.settings;

import java.util.Optional;

/**
 * A lock, which a settings file sets on a key or a node: the values of the levels above the file's
 * are kept and have no effect, and cannot be changed. Of several locks, on a key and on the nodes
 * above it, that of the lowest level counts.
 *
 * <p>Settings files are read when the tree is made, so a lock stays as long as the tree.
 *
 * @param path the dotted path of the entry that has the lock: the key or a node above it
 * @param level the level of the file
 * @param reason the reason that the file gives, if it gives one
 * @param source the file, with line and column
 */
public record SettingLock(String path, SettingLevel level, Optional<String> reason, String source) {
    @Override
    public String toString() {
        return "\"" + path + "\" is locked in " + source
                + reason.map(text -> ": " + text).orElse("");
    }
}
