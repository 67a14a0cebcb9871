/**
 * Typed settings in levels, shared by Java and native code.
 *
 * <p>A module whose validators the settings call must export their package to this one. The native
 * libraries are in the module; from JDK 24 on, the option {@code
 * --enable-native-access=com.velonix.settings} lets Java load them without a warning.
 */
module com.velonix.settings {
    exports com.velonix.services.settings;
    exports com.velonix.services.settings.validators;
    exports com.velonix.util.types;
}
