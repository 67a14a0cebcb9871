package com.velonix.services.settings.prefs;

import com.velonix.services.settings.Setting;
import com.velonix.services.settings.SettingException;
import com.velonix.services.settings.SettingPath;

/**
 * Brings the preferences that the JDK's own back end has stored for the user into the settings,
 * once: a mark is stored with them. Several processes may begin at the same time.
 */
final class Import {
    /** The key of the mark, which stands for no preference: the place of the imported files. */
    private static final String MARK = "x_imported";

    /** How often the import begins again because another process has begun it too. */
    private static final int ATTEMPTS = 10;

    private static final System.Logger LOG = System.getLogger(Import.class.getPackageName());

    private final JdkPreferences old = JdkPreferences.ofUser();
    private final SettingPath tree;
    private final String above;
    private final String name;
    private final Setting<String> mark;

    /** Imports into the node {@code name} below {@code above}. */
    Import(SettingPath tree, String above, String name) {
        this.tree = tree;
        this.above = above;
        this.name = name;
        mark = tree.path(above, name).setting(MARK, String.class);
    }

    /** Returns the root of the preferences. Logs a failure; the next process tries again. */
    SettingsPreferences run() {
        try {
            for (int attempt = 1; attempt <= ATTEMPTS && isNeeded(); ++attempt)
                tryOnce(attempt == ATTEMPTS);
        } catch (SettingException | RuntimeException failed) {
            LOG.log(System.Logger.Level.WARNING,
                    "The preferences in " + old + " are not imported: " + failed.getMessage());
        }
        return new SettingsPreferences(tree, above, name);
    }

    private boolean isNeeded() throws SettingException {
        return old.exist() && mark.getOr(null) == null;
    }

    private void tryOnce(boolean isLast) throws SettingException {
        SettingPath node = tree.path(above, name);
        try {
            if (node.exists() && !node.children().isEmpty())
                add(new SettingsPreferences(tree, above, name), node);
            else
                copyWhole();
        } catch (SettingException | RuntimeException failed) {
            // Another process may have been faster.
            if (isLast)
                throw failed;
        }
    }

    /** Stores everything in one change. */
    private void copyWhole() throws SettingException {
        try (SettingPath all = SettingPath.standalone()) {
            SettingPath node = all.getOrAddNode(name);
            add(new SettingsPreferences(all, name), node);
            node.copyTo(tree.getOrAddNode(above), name);
        }
    }

    private void add(SettingsPreferences root, SettingPath node) throws SettingException {
        old.copyTo(root);
        node.getOrAddKey(MARK, old.toString()).set(old.toString());
    }
}
