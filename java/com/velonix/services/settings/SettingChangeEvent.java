package com.velonix.services.settings;

import java.util.List;

/** What a {@link SettingListener} is told: which entry was changed, added or removed. Immutable. */
public class SettingChangeEvent {
    private final Object source;
    private final List<String> path;
    private final String name;
    private final boolean node;

    /**
     * Makes an event.
     *
     * @param source the {@link SettingPath} or {@link Setting} that the listener is registered on
     * @param path the names that lead from the root to the entry's parent
     * @param name the entry's name
     * @param node whether the entry is a node
     */
    public SettingChangeEvent(Object source, List<String> path, String name, boolean node) {
        this.source = source;
        this.path = List.copyOf(path);
        this.name = name;
        this.node = node;
    }

    /**
     * Where the listener was registered.
     *
     * @return a {@link SettingPath} or a {@link Setting}
     */
    public Object source() {
        return source;
    }

    /**
     * The node that holds the entry.
     *
     * @return the names that lead to it from the root; empty for the root itself
     */
    public List<String> path() {
        return path;
    }

    /**
     * The entry's own name.
     *
     * @return the last component of its path
     */
    public String name() {
        return name;
    }

    /**
     * Whether the entry is a node rather than a key.
     *
     * @return true for a node
     */
    public boolean isNode() {
        return node;
    }

    /** The entry's dotted path. */
    @Override
    public String toString() {
        return Names.dotted(path, name);
    }
}
