package com.velonix.services.settings.prefs;

import com.velonix.services.settings.Setting;
import com.velonix.services.settings.SettingAccessException;
import com.velonix.services.settings.SettingException;
import com.velonix.services.settings.SettingLevel;
import com.velonix.services.settings.SettingNameDuplicationException;
import com.velonix.services.settings.SettingNotFoundException;
import com.velonix.services.settings.SettingPath;
import java.util.ArrayList;
import java.util.HashMap;
import java.util.List;
import java.util.Map;
import java.util.concurrent.Callable;
import java.util.prefs.AbstractPreferences;
import java.util.prefs.BackingStoreException;

/**
 * A node of preferences that is a node of the settings of the process.
 *
 * <p>A value is on the disk when {@link #put} returns, and other processes read it within a second,
 * or at once after {@link #sync}. A value that a settings file presets, at the factory or the
 * workgroup level, counts where the user has none; removing it brings the preset back. Operations
 * that the class {@link java.util.prefs.Preferences} does not allow to fail log their failures.
 */
final class SettingsPreferences extends AbstractPreferences {
    /** How often a value is stored while other processes remove the node. */
    private static final int ATTEMPTS = 100;

    private static final System.Logger LOG =
            System.getLogger(SettingsPreferences.class.getPackageName());

    private final SettingPath tree;
    private final SettingPath node;

    /** The settings that a key may be: by its own name, or by the escaped one. */
    private record Forms(Setting<Object> plain, Setting<Object> escaped) {
        /** Returns the one that exists, or else the second. */
        Setting<Object> present() {
            return plain.exists() ? plain : escaped;
        }
    }

    /** The settings of the keys that were used. Guarded by the lock of the node. */
    private final Map<String, Forms> keys = new HashMap<>();

    /** Makes the root of a tree of preferences, which is a node of a tree of settings. */
    SettingsPreferences(SettingPath tree, String... names) {
        super(null, "");
        this.tree = tree;
        node = tree.path(names);
        newNode = !node.exists();
    }

    private SettingsPreferences(SettingsPreferences parent, String name) {
        super(parent, name);
        tree = parent.tree;
        SettingPath plain = parent.node.path(EntryNames.NODES.of(name));
        SettingPath escaped = parent.node.path(EntryNames.NODES.escaped(name));
        boolean isEscaped = !plain.exists()
                && (escaped.exists()
                        || parent.node.setting(EntryNames.NODES.of(name), Object.class).exists());
        node = isEscaped ? escaped : plain;
        newNode = !node.exists();
        try {
            addNode();
        } catch (SettingException failed) {
            log("Cannot store the node " + absolutePath(), failed);
        }
    }

    @Override
    public void sync() throws BackingStoreException {
        synchronized (lock) {
            if (isRemoved())
                throw new IllegalStateException("The node has been removed");
        }
        try {
            node.sync();
        } catch (SettingException failed) {
            throw new BackingStoreException(failed);
        }
    }

    /** Does nothing: every change is stored when its call returns. */
    @Override
    public void flush() {}

    @Override
    protected String getSpi(String key) {
        try {
            Forms forms = forms(key);
            Object value = forms.plain.getOr(null);
            if (value == null)
                value = forms.escaped.getOr(null);
            return value == null || value instanceof String ? (String) value : textOf(value);
        } catch (SettingException failed) {
            log("Cannot read " + key + " of " + absolutePath(), failed);
            return null;
        }
    }

    @Override
    protected void putSpi(String key, String value) {
        try {
            for (int attempt = 1; !tryToStore(key, value, attempt == ATTEMPTS); ++attempt) {
            }
        } catch (SettingException | RuntimeException failed) {
            log("Cannot store " + key + " of " + absolutePath(), failed);
        }
    }

    /** Puts a value unless the user has one. */
    void putIfNotSet(String key, String value) {
        synchronized (lock) {
            if (!forms(key).present().isSet(SettingLevel.USER))
                put(key, value);
        }
    }

    /** Returns false if another process has just removed the node, unless this is the last try. */
    private boolean tryToStore(String key, String value, boolean isLast) throws SettingException {
        try {
            store(key, value);
            return true;
        } catch (SettingNotFoundException removed) {
            if (isLast)
                throw removed;
            return false;
        }
    }

    private void store(String key, String value) throws SettingException {
        Forms forms = forms(key);
        Setting<Object> present = forms.present();
        if (present.exists()) {
            present.set(storedOf(present, key, value));
            return;
        }
        addNode();
        try {
            node.addKey(forms.plain.name(), storedOf(forms.plain, key, value));
        } catch (SettingNameDuplicationException taken) {
            Setting<Object> second = forms.present();
            node.getOrAddKey(second.name(), storedOf(second, key, value));
            second.set(storedOf(second, key, value));
        }
    }

    @Override
    protected void removeSpi(String key) {
        Forms forms = forms(key);
        for (Setting<Object> setting : List.of(forms.plain, forms.escaped)) {
            try {
                if (setting.exists())
                    removeKey(setting);
            } catch (SettingException failed) {
                log("Cannot remove " + key + " of " + absolutePath(), failed);
            }
        }
    }

    @Override
    protected void removeNodeSpi() throws BackingStoreException {
        SettingPath above = ((SettingsPreferences) parent()).node;
        run(() -> {
            try {
                above.delete(node.names().get(node.names().size() - 1));
            } catch (SettingAccessException preset) {
                for (String key : node.keys()) removeKey(node.setting(key, Object.class));
            }
            return null;
        });
    }

    @Override
    protected String[] keysSpi() throws BackingStoreException {
        List<String> names = new ArrayList<>();
        run(() -> {
            for (Map.Entry<String, Object> key : node.values().entrySet()) {
                if (!EntryNames.KEYS.isHashed(key.getKey()))
                    EntryNames.KEYS.nameOf(key.getKey()).ifPresent(names::add);
                else if (key.getValue() instanceof String[] named && named.length == 2)
                    names.add(named[0]);
            }
            return null;
        });
        return names.toArray(String[] ::new);
    }

    @Override
    protected String[] childrenNamesSpi() throws BackingStoreException {
        List<String> names = new ArrayList<>();
        run(() -> {
            for (String child : node.nodes()) {
                if (!EntryNames.NODES.isHashed(child))
                    EntryNames.NODES.nameOf(child).ifPresent(names::add);
                else
                    node.path(child)
                            .setting(EntryNames.NAME_KEY, String.class)
                            .find()
                            .ifPresent(names::add);
            }
            return null;
        });
        return names.toArray(String[] ::new);
    }

    @Override
    protected AbstractPreferences childSpi(String name) {
        return new SettingsPreferences(this, name);
    }

    @Override
    protected AbstractPreferences getChild(String name) {
        boolean exists = node.path(EntryNames.NODES.of(name)).exists()
                || node.path(EntryNames.NODES.escaped(name)).exists();
        return exists ? childSpi(name) : null;
    }

    /** Never called: {@link #sync} does the work. */
    @Override
    protected void syncSpi() {}

    /** Never called: {@link #flush} has nothing to do. */
    @Override
    protected void flushSpi() {}

    private Forms forms(String key) {
        Forms known = keys.get(key);
        if (known == null) {
            known = new Forms(node.setting(EntryNames.KEYS.of(key), Object.class),
                    node.setting(EntryNames.KEYS.escaped(key), Object.class));
            keys.put(key, known);
        }
        return known;
    }

    /** Adds the node if it does not exist. */
    private void addNode() throws SettingException {
        if (node.exists())
            return;
        List<String> names = node.names();
        tree.getOrAddNode(names.toArray(String[] ::new));
        if (EntryNames.NODES.isHashed(names.get(names.size() - 1)))
            node.getOrAddKey(EntryNames.NAME_KEY, name());
    }

    /** Runs a task of the settings, which does nothing if another process has removed the node. */
    private static void run(Callable<Void> task) throws BackingStoreException {
        try {
            task.call();
        } catch (SettingNotFoundException gone) {
            // There is nothing to list or to remove.
        } catch (Exception failed) {
            throw new BackingStoreException(failed);
        }
    }

    /** Removes a key, or only the user's value if a settings file defines the key. */
    private static void removeKey(Setting<Object> setting) throws SettingException {
        try {
            setting.parent().delete(setting.name());
        } catch (SettingAccessException preset) {
            setting.reset();
        } catch (SettingNotFoundException gone) {
            // Another process has removed it.
        }
    }

    private static String textOf(Object value) {
        return value instanceof String[] named && named.length == 2 ? named[1] : value.toString();
    }

    /** Returns the value as the setting has it: of the preset's type, or with the hashed name. */
    private static Object storedOf(Setting<Object> setting, String key, String value)
            throws SettingException {
        if (EntryNames.KEYS.isHashed(setting.name()))
            return new String[] {key, value};
        Class<?> type =
                setting.exists() ? setting.declaredType().orElse(String.class) : String.class;
        if (type == Boolean.class)
            return Boolean.valueOf(value);
        if (type == Integer.class)
            return Integer.valueOf(value);
        if (type == Long.class)
            return Long.valueOf(value);
        if (type == Float.class)
            return Float.valueOf(value);
        if (type == Double.class)
            return Double.valueOf(value);
        return value;
    }

    private static void log(String message, Exception failure) {
        LOG.log(System.Logger.Level.WARNING, message + ": " + failure.getMessage());
    }
}
