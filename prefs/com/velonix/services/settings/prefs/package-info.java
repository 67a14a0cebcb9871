/** The preferences of {@code java.util.prefs} in the settings of the process. */
package com.velonix.services.settings.prefs;
