/** A module that uses the settings, with a validator of its own. */
module story {
    requires com.velonix.settings;
    exports story to com.velonix.settings;
}
