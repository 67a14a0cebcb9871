package com.velonix.services.settings;

/**
 * One event on its way to a listener, or to several: what native code tells of it.
 *
 * @param kind one of the numbers below
 * @param path the names of the node's place
 * @param name of the entry below it
 * @param isNode whether the entry is a node
 */
record DeliveredEvent(int kind, String[] path, String name, boolean isNode) {
    /** The numbers of the kinds, as nativesettings/listener_delivery.cpp has them. */
    private static final int CHANGED = 0, ADDED = 1, REMOVED = 2;

    /**
     * Has a listener make its event and hear of it. What the listener throws leaves this method.
     */
    void deliver(SettingListener listener, Object source) {
        // Each listener may do with its path what it likes.
        SettingChangeEvent made = listener.createEvent(source, path.clone(), name, null, isNode);
        if (made == null)
            return;
        switch (kind) {
            case CHANGED -> listener.settingChanged(made);
            case ADDED -> listener.settingAdded(made);
            case REMOVED -> listener.settingRemoved(made);
            default -> throw new IllegalArgumentException("event " + kind);
        }
    }
}
