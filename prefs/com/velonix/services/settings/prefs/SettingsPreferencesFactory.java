package com.velonix.services.settings.prefs;

import com.velonix.services.settings.SettingPath;
import java.util.prefs.Preferences;
import java.util.prefs.PreferencesFactory;

/**
 * Keeps the preferences of {@code java.util.prefs} in the settings of the process, below the nodes
 * {@code preferences.user} and {@code preferences.system}. Both belong to the user; an
 * administrator presets values in settings files of the workgroup or factory level.
 *
 * <p>{@link Preferences} finds this class if its jar is on the class path or the module path, or
 * loaded as an agent.
 */
public final class SettingsPreferencesFactory implements PreferencesFactory {
    /** Called by {@link Preferences}. */
    public SettingsPreferencesFactory() {}

    /**
     * Does nothing. An agent's jar is added to the class path, where {@link Preferences} finds it;
     * so {@code -javaagent} brings it to a program that is started by {@code -jar}.
     *
     * @param unused the agent's options
     */
    public static void premain(String unused) {}

    @Override
    public Preferences userRoot() {
        return Roots.USER;
    }

    @Override
    public Preferences systemRoot() {
        return Roots.SYSTEM;
    }

    /** Made at the first use, and never closed: preferences may be used until the JVM ends. */
    private static final class Roots {
        static final SettingPath SETTINGS = SettingPath.processRoot();
        static final Preferences USER = new Import(SETTINGS, "preferences", "user").run();
        static final Preferences SYSTEM =
                new SettingsPreferences(SETTINGS, "preferences", "system");
    }
}
