package editor;

import com.velonix.services.settings.SettingException;
import com.velonix.services.settings.SettingKey;
import com.velonix.services.settings.SettingPath;

/** A part of a program that is tested: it uses the settings of the process, by a root of its own. */
final class Editor {
    static final SettingKey<Integer> FONT_SIZE = SettingKey.of("editor.fontSize", 12);
    private static final SettingPath ROOT = SettingPath.processRoot();

    private Editor() {}

    /** Makes the letters larger for this user, and returns their size. */
    static int zoomIn() throws SettingException {
        FONT_SIZE.set(ROOT, FONT_SIZE.get(ROOT) + 1);
        return FONT_SIZE.get(ROOT);
    }
}
