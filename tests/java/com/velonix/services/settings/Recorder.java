package com.velonix.services.settings;

import java.util.ArrayList;
import java.util.List;

/** A listener that records its events as texts. */
final class Recorder implements SettingListener {
    final List<String> heard = new ArrayList<>();
    Object source;

    @Override
    public void settingChanged(SettingChangeEvent event) {
        record("changed", event);
    }

    @Override
    public void settingAdded(SettingChangeEvent event) {
        record("added", event);
    }

    @Override
    public void settingRemoved(SettingChangeEvent event) {
        record("removed", event);
    }

    private void record(String kind, SettingChangeEvent event) {
        heard.add(kind + (event.isNode() ? " node " : " key ") + event);
        source = event.source();
    }
}
