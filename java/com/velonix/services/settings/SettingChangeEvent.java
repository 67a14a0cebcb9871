package com.velonix.services.settings;

import java.util.List;

/** An event for a {@link SettingListener}: an entry was changed, added or removed. Immutable. */
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
     * @param node true if the entry is a node
     */
    public SettingChangeEvent(Object source, List<String> path, String name, boolean node) {
        this.source = source;
        this.path = List.copyOf(path);
        this.name = name;
        this.node = node;
    }

    /**
     * Returns the object that the listener is registered on.
     *
     * @return a {@link SettingPath} or a {@link Setting}
     */
    public Object source() {
        return source;
    }

    /**
     * Returns the path of the entry's parent.
     *
     * @return the names that lead from the root to the parent; empty for the root itself
     */
    public List<String> path() {
        return path;
    }

    /**
     * Returns the entry's own name.
     *
     * @return the last component of its path
     */
    public String name() {
        return name;
    }

    /**
     * Tells whether the entry is a node rather than a key.
     *
     * @return true for a node
     */
    public boolean isNode() {
        return node;
    }

    /** Returns the entry's dotted path. */
    @Override
    public String toString() {
        return Names.dotted(path, name);
    }
}
