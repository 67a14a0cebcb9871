package com.velonix.services.settings;

import java.util.Objects;
import java.util.function.Consumer;

/** A listener that runs an action for one kind of event. */
final class SingleKindListener implements SettingListener {
    enum Kind { CHANGED, ADDED, REMOVED }

    private final Kind kind;
    private final Consumer<? super SettingChangeEvent> action;

    private SingleKindListener(Kind kind, Consumer<? super SettingChangeEvent> action) {
        this.kind = kind;
        this.action = Objects.requireNonNull(action, "action");
    }

    static SettingListener changed(Consumer<? super SettingChangeEvent> action) {
        return new SingleKindListener(Kind.CHANGED, action);
    }

    static SettingListener added(Consumer<? super SettingChangeEvent> action) {
        return new SingleKindListener(Kind.ADDED, action);
    }

    static SettingListener removed(Consumer<? super SettingChangeEvent> action) {
        return new SingleKindListener(Kind.REMOVED, action);
    }

    @Override
    public void settingChanged(SettingChangeEvent event) {
        run(Kind.CHANGED, event);
    }

    @Override
    public void settingAdded(SettingChangeEvent event) {
        run(Kind.ADDED, event);
    }

    @Override
    public void settingRemoved(SettingChangeEvent event) {
        run(Kind.REMOVED, event);
    }

    private void run(Kind received, SettingChangeEvent event) {
        if (received == kind)
            action.accept(event);
    }
}
