package com.velonix.services.settings;

/**
 * A problem that a transaction found with one of its changes.
 *
 * @param path the dotted path of the setting
 * @param reason why its new value cannot be set
 */
public record SettingValidity(String path, String reason) {
    @Override
    public String toString() {
        return path + ": " + reason;
    }
}
