package com.velonix.services.settings;

import java.util.List;

/**
 * What a {@link ValueValidator} is asked to judge.
 *
 * @param path the names that lead from the root to the node that holds the key
 * @param name the key's name
 * @param runtimeContext the runtime context whose settings these are, 0 for a standalone tree
 * @param value the value that is about to be set
 */
public record ValidationContext(List<String> path, String name, long runtimeContext, Object value) {
    /** The key's dotted path. */
    @Override
    public String toString() {
        return Names.dotted(path, name);
    }
}
