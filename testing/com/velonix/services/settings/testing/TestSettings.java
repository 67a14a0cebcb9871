package com.velonix.services.settings.testing;

import com.velonix.services.settings.SettingException;
import com.velonix.services.settings.SettingNotFoundException;
import com.velonix.services.settings.SettingPath;
import com.velonix.services.settings.SettingTestEnvironment;

/**
 * Empties the settings of the process, which it keeps in memory. An empty tree beside them is
 * {@link SettingPath#standalone()}.
 */
public final class TestSettings {
    private TestSettings() {}

    /**
     * Removes all entries from the settings of the process. The first call puts these into memory:
     * no file and no database is read or written, and values of all four levels can be changed.
     *
     * <p>Every root of the process's settings that is open, also in C++ code, sees the same empty
     * tree. Listeners on removed entries end; those on the root itself stay until they are closed.
     * No other thread may change these settings meanwhile.
     *
     * @return the root, which the caller closes
     * @throws IllegalStateException if the settings of the process have been read from the disk
     *     already
     * @throws SettingException if an entry cannot be removed
     */
    public static SettingPath freshProcessRoot() throws SettingException {
        SettingTestEnvironment.keepInMemory();
        try (SettingPath root = SettingPath.processRoot()) {
            for (String entry : root.children()) {
                try {
                    root.delete(entry);
                } catch (SettingNotFoundException removedMeanwhile) {
                    // By a listener of the program, for instance.
                }
            }
        }
        return SettingPath.processRoot();
    }
}
