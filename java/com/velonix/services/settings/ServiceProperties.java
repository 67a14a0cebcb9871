package com.velonix.services.settings;

import java.util.List;
import java.util.Locale;

/**
 * The system properties that stand for variables of the environment: {@code settings.userdir} for
 * {@code SETTINGS_USERDIR}, and so on. A property has precedence over its variable. The environment
 * itself stays as it is, because other code of the process may be reading it.
 */
final class ServiceProperties {
    private static final List<String> DIRECTORIES =
            List.of("SETTINGS_USERDIR", "SETTINGS_FACTORYDIR");
    private static final List<String> OTHERS = List.of("SETTINGS_WORKGROUPDIR",
            "SETTINGS_WORKGROUP", "SETTINGS_WORKGROUP_CREDENTIALS", "SETTINGS_WORKGROUP_CA",
            "SETTINGS_WORKGROUP_CERTIFICATE", "SETTINGS_WORKGROUP_KEY", "SETTINGS_WORKGROUP_WAIT",
            "SETTINGS_LOCK_WAIT", "SETTINGS_HISTORY_COMMITS", "SETTINGS_HISTORY_DAYS");

    private ServiceProperties() {}

    /**
     * Hands the properties that are set to the settings service, for the trees that are opened
     * later.
     *
     * @throws IllegalArgumentException if the environment could not hold the value of a property
     */
    static void pass() {
        DIRECTORIES.forEach(ServiceProperties::pass);
        OTHERS.forEach(ServiceProperties::pass);
    }

    /** Makes the variables of the directories of the factory and the user count again. */
    static void takeBackDirectories() {
        for (String variable : DIRECTORIES) NativeLane.overrideEnvironment(variable, "");
    }

    private static void pass(String variable) {
        String property = variable.toLowerCase(Locale.ROOT).replace('_', '.');
        String value = System.getProperty(property, "");
        if (value.isEmpty())
            return;
        String reason = NativeLane.overrideEnvironment(variable, value);
        if (reason != null)
            throw new IllegalArgumentException("The system property " + property + ": " + reason);
    }
}
