package editor;

import static com.velonix.services.settings.SettingKey.of;
import static com.velonix.services.settings.SettingKey.ofList;

import com.velonix.services.settings.SettingKey;
import com.velonix.services.settings.validators.Length;
import com.velonix.services.settings.validators.Range;
import java.util.List;

/** The thirty settings of a text editor. */
final class EditorSettings {
    // declarations
    enum Theme { LIGHT, DARK, SYSTEM }
    enum LineEnd { LF, CRLF }
    static final SettingKey<Integer> LEFT = of("window.left", 100);
    static final SettingKey<Integer> TOP = of("window.top", 100);
    static final SettingKey<Integer> WIDTH = of("window.width", 800, Range.class, "200..");
    static final SettingKey<Integer> HEIGHT = of("window.height", 600, Range.class, "100..");
    static final SettingKey<Boolean> MAXIMIZED = of("window.maximized", false);
    static final SettingKey<Theme> THEME = of("view.theme", Theme.LIGHT);
    static final SettingKey<Double> ZOOM = of("view.zoom", 1.0, Range.class, "0.25..8");
    static final SettingKey<Boolean> TOOLBAR = of("view.toolbar", true);
    static final SettingKey<Boolean> STATUS_BAR = of("view.statusBar", true);
    static final SettingKey<Boolean> LINE_NUMBERS = of("view.lineNumbers", true);
    static final SettingKey<Boolean> WHITESPACE = of("view.whitespace", false);
    static final SettingKey<String> FONT = of("font.name", "Monospaced", Length.class, "1..80");
    static final SettingKey<Integer> FONT_SIZE = of("font.size", 12, Range.class, "6..72");
    static final SettingKey<Float> SPACING = of("font.spacing", 1.2f, Range.class, "1..3");
    static final SettingKey<Integer> TAB_WIDTH = of("edit.tabWidth", 4, Range.class, "1..16");
    static final SettingKey<Boolean> TABS = of("edit.tabs", false);
    static final SettingKey<Boolean> WRAP = of("edit.wrap", true);
    static final SettingKey<Integer> MARGIN = of("edit.margin", 100, Range.class, "20..400");
    static final SettingKey<Boolean> SPELLING = of("edit.spelling", false);
    static final SettingKey<String> LANGUAGE = of("edit.language", "en", Length.class, "2..8");
    static final SettingKey<List<String>> WORDS = ofList("edit.words", String.class, List.of());
    static final SettingKey<LineEnd> LINE_END = of("files.lineEnd", LineEnd.LF);
    static final SettingKey<String> ENCODING = of("files.encoding", "UTF-8");
    static final SettingKey<Boolean> BACKUP = of("files.backup", true);
    static final SettingKey<Integer> SAVE_AFTER = of("files.saveAfter", 30, Range.class, "0..600");
    static final SettingKey<Long> LARGEST = of("files.largest", 1L << 30, Range.class, "1..");
    static final SettingKey<List<String>> RECENT = ofList("files.recent", String.class, List.of());
    static final SettingKey<String> PRINTER = of("print.printer", "");
    static final SettingKey<Boolean> COLOUR = of("print.colour", true);
    static final SettingKey<Short> COPIES = of("print.copies", (short) 1, Range.class, "1..99");
    // end

    private EditorSettings() {}
}
