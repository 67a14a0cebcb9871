package com.velonix.services.settings;

import java.util.Arrays;

class SettingInfo {
    private final Object value;
    private final Class<?> type;

    SettingInfo(Object value) {
        this.value = value;
        this.type = null;
    }

    SettingInfo(Class<?> type) {
        this.value = null;
        this.type = type;
    }

    Object getValue() {
        if (value instanceof RuntimeException) {
            throw (RuntimeException) value;
        }
        return value;
    }

    Class<?> getType() {
        return type;
    }

    @Override
    public String toString() {
        return value + " " + type;
    }
}

interface SettingListener {
    SettingChangeEvent createEvent(
            Object source, String[] path, String name, String reserved, boolean isNode);

    void settingChanged(SettingChangeEvent event);

    void settingAdded(SettingChangeEvent event);

    void settingRemoved(SettingChangeEvent event);
}

class SettingChangeEvent {
    private final String text;

    SettingChangeEvent(String text) {
        this.text = text;
    }

    @Override
    public String toString() {
        return text;
    }
}

/** Notes the events that it receives. */
class RecordingListener implements SettingListener {
    private final StringBuilder heard = new StringBuilder();

    @Override
    public SettingChangeEvent createEvent(
            Object source, String[] path, String name, String reserved, boolean isNode) {
        return new SettingChangeEvent(
                source + Arrays.toString(path) + name + " " + reserved + " " + isNode);
    }

    @Override
    public void settingChanged(SettingChangeEvent event) {
        heard.append("changed ").append(event).append("; ");
    }

    @Override
    public void settingAdded(SettingChangeEvent event) {
        heard.append("added ").append(event).append("; ");
    }

    @Override
    public void settingRemoved(SettingChangeEvent event) {
        heard.append("removed ").append(event).append("; ");
    }

    /** Returns the events since the last call. */
    @Override
    public String toString() {
        String all = heard.toString();
        heard.setLength(0);
        return all;
    }
}

/** A problem; one with the reason "unspeakable" cannot be made. */
class SettingValidity {
    private final String text;

    SettingValidity(String path, String reason) {
        if (reason.equals("unspeakable")) {
            throw new IllegalArgumentException(reason);
        }
        text = path + " because " + reason;
    }

    @Override
    public String toString() {
        return text;
    }
}

/** Refuses a value with the second string, or throws, as the first says; notes its arguments. */
class SettingValidator {
    static String asked = "";

    static String validate(
            String first, String second, long context, String[] path, String key, Object value) {
        asked = first + " " + second + " " + context + " " + Arrays.toString(path) + " " + key + " "
                + value;
        if (first.equals("throw")) {
            throw new IllegalArgumentException(second);
        }
        return first.equals("refuse") ? second : null;
    }
}
