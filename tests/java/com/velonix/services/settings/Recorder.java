package com.velonix.services.settings;

import java.util.ArrayList;
import java.util.List;

/** Writes down what it hears. */
final class Recorder implements SettingListener {
    final List<String> heard = new ArrayList<>();
    Object source;

    @Override
    public void settingChanged(SettingChangeEvent event) {
        hear("changed", event);
    }

    @Override
    public void settingAdded(SettingChangeEvent event) {
        hear("added", event);
    }

    @Override
    public void settingRemoved(SettingChangeEvent event) {
        hear("removed", event);
    }

    private void hear(String what, SettingChangeEvent event) {
        heard.add(what + (event.isNode() ? " node " : " key ") + event);
        source = event.source();
    }
}
