/** The preferences of {@code java.util.prefs} in the settings of the process. */
module com.velonix.settings.prefs {
    requires com.velonix.settings;
    requires transitive java.prefs;
    requires java.xml;

    exports com.velonix.services.settings.prefs;

    provides java.util.prefs.PreferencesFactory with
            com.velonix.services.settings.prefs.SettingsPreferencesFactory;
}
