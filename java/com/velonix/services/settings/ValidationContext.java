package com.velonix.services.settings;

import java.util.List;

/**
 * A value to validate, and its key.
 *
 * @param path the names that lead from the root to the node that has the key
 * @param name the key's name
 * @param runtimeContext the runtime context of the tree, 0 for a standalone tree
 * @param value the value that is about to be set
 */
public record ValidationContext(List<String> path, String name, long runtimeContext, Object value) {
    /** Returns the key's dotted path. */
    @Override
    public String toString() {
        return Names.dotted(path, name);
    }
}
