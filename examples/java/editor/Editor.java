package editor;

import com.velonix.services.settings.SettingException;
import com.velonix.services.settings.SettingPath;
import com.velonix.services.settings.SettingValidationException;
import java.util.List;

/** Starts an editor, changes some of its settings, and ends; the next run finds the changes. */
final class Editor {
    private Editor() {}

    public static void main(String[] arguments) throws SettingException {
        try (SettingPath root = SettingPath.processRoot()) {
            show(root);
            EditorSettings.FONT_SIZE.set(root, EditorSettings.FONT_SIZE.get(root) + 2);
            EditorSettings.THEME.set(root, EditorSettings.Theme.DARK);
            EditorSettings.RECENT.set(root, List.of("notes.txt", "todo.txt"));
            try {
                EditorSettings.FONT_SIZE.set(root, 100);
            } catch (SettingValidationException refused) {
                System.out.println("The font size 100 is refused");
            }
            show(root);
        }
    }

    private static void show(SettingPath root) throws SettingException {
        System.out.println("font size " + EditorSettings.FONT_SIZE.get(root) + ", theme "
                + EditorSettings.THEME.get(root) + ", recent files "
                + String.join(" ", EditorSettings.RECENT.get(root)));
    }
}
