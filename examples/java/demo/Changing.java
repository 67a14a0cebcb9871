package demo;

import com.velonix.services.settings.Registration;
import com.velonix.services.settings.Setting;
import com.velonix.services.settings.SettingChangeEvent;
import com.velonix.services.settings.SettingException;
import com.velonix.services.settings.SettingLevel;
import com.velonix.services.settings.SettingListener;
import com.velonix.services.settings.SettingPath;
import com.velonix.services.settings.SettingTransaction;
import com.velonix.services.settings.SettingValidity;
import com.velonix.services.settings.validators.Range;
import java.util.List;

/** Changes values and entries, one by one and in transactions. */
final class Changing {
    private Changing() {}

    private static final SettingListener PRINTER = new SettingListener() {
        @Override
        public void settingChanged(SettingChangeEvent event) {
            print("changed", event);
        }

        @Override
        public void settingAdded(SettingChangeEvent event) {
            print("added", event);
        }

        @Override
        public void settingRemoved(SettingChangeEvent event) {
            print("removed", event);
        }

        private void print(String kind, SettingChangeEvent event) {
            System.out.println("    heard: " + event + " " + kind);
        }
    };

    static void showStructure(SettingPath root) throws SettingException {
        SettingPath materials = root.path("materials");
        try (Registration heard = materials.addListener(PRINTER)) {
            SettingPath copy = materials.path("copper").copyTo(materials, "copperSoft");
            copy.setting("yieldStrength", Double.class).set(28e6);
            System.out.println(TreePrinter.line(copy.setting("density", Object.class)));
            System.out.println(TreePrinter.line(copy.setting("yieldStrength", Object.class)));
            Reading.attempt(
                    "copy again", () -> materials.path("glass").copyTo(materials, "copperSoft"));
            materials.delete("copperSoft");
            System.out.println("materials now: " + materials.nodes());
        }
    }

    static void showValues(SettingPath process) throws SettingException {
        SettingPath editor = process.path("editor");
        Setting<Integer> size = editor.setting("fontSize", Integer.class);
        try (Registration onKey = size.onChanged(
                     event -> System.out.println("    the font size has changed"));
                Registration onNode = editor.addListener(PRINTER)) {
            set(size, 14, SettingLevel.USER);
            set(size, 20, SettingLevel.SESSION);
            size.unset(SettingLevel.SESSION);
            System.out.println("without session: " + size.get() + " from " + size.level().get());
            Reading.attempt("set 200", () -> set(size, 200, SettingLevel.USER));
            Reading.attempt("set at factory", () -> set(size, 8, SettingLevel.FACTORY));
            Setting<Integer> spacing =
                    editor.addKey("tabWidth", 4, SettingLevel.USER, Range.class, "1..16");
            Reading.attempt("tab width 17", () -> set(spacing, 17, SettingLevel.USER));
            editor.delete("tabWidth");
        }
    }

    private static Object set(Setting<Integer> key, int value, SettingLevel level)
            throws SettingException {
        System.out.println("set " + value + " at " + level);
        key.set(value, level);
        return key.get();
    }

    static void showTransactions(SettingPath process) throws SettingException {
        Setting<Integer> size = process.path("editor").setting("fontSize", Integer.class);
        Setting<String> theme = process.path("editor").setting("theme", String.class);
        try (Registration heard = process.addListener(PRINTER)) {
            commit(size, 100, theme, "light");
            System.out.println("still: " + size.get() + ", " + theme.get());
            commit(size, 18, theme, "light");
            System.out.println("now: " + size.get() + ", " + theme.get());
        }
    }

    private static void commit(Setting<Integer> size, int newSize, Setting<String> theme,
            String newTheme) throws SettingException {
        try (SettingTransaction transaction = new SettingTransaction()) {
            transaction.set(theme, newTheme);
            transaction.set(size, newSize);
            List<SettingValidity> problems = transaction.commit(SettingLevel.USER);
            System.out.println(problems.isEmpty() ? "committed" : "refused: " + problems);
        }
    }
}
