package com.velonix.services.settings;

import java.util.Optional;

/**
 * Guards the values of a key, or of all keys below a node, that was added with this validator.
 *
 * <p>An implementation has a public constructor that takes one {@code String}, the argument given
 * together with the class when the entry was added. One instance serves all keys that name the same
 * class and argument. It is called on whatever thread changes the setting, also several at a time,
 * before anything is stored. It may read and change settings. An exception that leaves it counts
 * as a refusal.
 */
public interface ValueValidator {
    /**
     * Judges a value that is about to be set.
     *
     * @param candidate the key and the value
     * @return why the value is refused, or empty when it is valid
     */
    Optional<String> problem(ValidationContext candidate);
}
