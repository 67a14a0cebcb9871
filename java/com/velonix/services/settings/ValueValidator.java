package com.velonix.services.settings;

import java.util.Optional;

/**
 * Validates the values of the key that was added with this validator, or of the keys below the node
 * that was.
 *
 * <p>An implementation must have a public constructor with one {@code String}, the argument that
 * was given together with the class. One instance serves all keys with the same class and argument.
 * The thread that changes the setting calls it before anything is stored, also several threads at a
 * time. It may read and change settings. If it throws, the value is refused. A named module must
 * export the package of its implementations to {@code com.velonix.settings}.
 */
public interface ValueValidator {
    /**
     * Validates a value that is about to be set.
     *
     * @param candidate the key and the value
     * @return the reason why the value is refused, or empty if it is valid
     */
    Optional<String> problem(ValidationContext candidate);
}
