/** Tests of programs that use the settings. JUnit 5 is needed by its annotations only. */
module com.velonix.settings.testing {
    requires transitive com.velonix.settings;
    requires static transitive org.junit.jupiter.api;

    exports com.velonix.services.settings.testing;
}
