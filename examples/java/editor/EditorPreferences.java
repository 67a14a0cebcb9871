package editor;

import editor.EditorSettings.LineEnd;
import editor.EditorSettings.Theme;
import java.util.List;
import java.util.prefs.Preferences;

/**
 * The thirty settings of {@link EditorSettings} with {@code java.util.prefs}, for comparison. Each
 * has its type, default and limits in one place too.
 */
final class EditorPreferences {
    // declarations
    private static final Preferences ROOT = Preferences.userRoot().node("editor");
    private static final Preferences WINDOW = ROOT.node("window");
    private static final Preferences VIEW = ROOT.node("view");
    private static final Preferences FONT = ROOT.node("font");
    private static final Preferences EDIT = ROOT.node("edit");
    private static final Preferences FILES = ROOT.node("files");
    private static final Preferences PRINT = ROOT.node("print");

    static int left() { return WINDOW.getInt("left", 100); }
    static void setLeft(int value) { WINDOW.putInt("left", value); }
    static int top() { return WINDOW.getInt("top", 100); }
    static void setTop(int value) { WINDOW.putInt("top", value); }
    static int width() { return WINDOW.getInt("width", 800); }
    static void setWidth(int value) { WINDOW.putInt("width", (int) checked(value, 200, 1e9)); }
    static int height() { return WINDOW.getInt("height", 600); }
    static void setHeight(int value) { WINDOW.putInt("height", (int) checked(value, 100, 1e9)); }
    static boolean maximized() { return WINDOW.getBoolean("maximized", false); }
    static void setMaximized(boolean value) { WINDOW.putBoolean("maximized", value); }
    static Theme theme() { return constant(VIEW, "theme", Theme.LIGHT); }
    static void setTheme(Theme value) { VIEW.put("theme", value.name()); }
    static double zoom() { return VIEW.getDouble("zoom", 1.0); }
    static void setZoom(double value) { VIEW.putDouble("zoom", checked(value, 0.25, 8)); }
    static boolean toolbar() { return VIEW.getBoolean("toolbar", true); }
    static void setToolbar(boolean value) { VIEW.putBoolean("toolbar", value); }
    static boolean statusBar() { return VIEW.getBoolean("statusBar", true); }
    static void setStatusBar(boolean value) { VIEW.putBoolean("statusBar", value); }
    static boolean lineNumbers() { return VIEW.getBoolean("lineNumbers", true); }
    static void setLineNumbers(boolean value) { VIEW.putBoolean("lineNumbers", value); }
    static boolean whitespace() { return VIEW.getBoolean("whitespace", false); }
    static void setWhitespace(boolean value) { VIEW.putBoolean("whitespace", value); }
    static String font() { return FONT.get("name", "Monospaced"); }
    static void setFont(String value) { FONT.put("name", checked(value, 1, 80)); }
    static int fontSize() { return FONT.getInt("size", 12); }
    static void setFontSize(int value) { FONT.putInt("size", (int) checked(value, 6, 72)); }
    static float spacing() { return FONT.getFloat("spacing", 1.2f); }
    static void setSpacing(float value) { FONT.putFloat("spacing", (float) checked(value, 1, 3)); }
    static int tabWidth() { return EDIT.getInt("tabWidth", 4); }
    static void setTabWidth(int value) { EDIT.putInt("tabWidth", (int) checked(value, 1, 16)); }
    static boolean tabs() { return EDIT.getBoolean("tabs", false); }
    static void setTabs(boolean value) { EDIT.putBoolean("tabs", value); }
    static boolean wrap() { return EDIT.getBoolean("wrap", true); }
    static void setWrap(boolean value) { EDIT.putBoolean("wrap", value); }
    static int margin() { return EDIT.getInt("margin", 100); }
    static void setMargin(int value) { EDIT.putInt("margin", (int) checked(value, 20, 400)); }
    static boolean spelling() { return EDIT.getBoolean("spelling", false); }
    static void setSpelling(boolean value) { EDIT.putBoolean("spelling", value); }
    static String language() { return EDIT.get("language", "en"); }
    static void setLanguage(String value) { EDIT.put("language", checked(value, 2, 8)); }
    static List<String> words() { return lines(EDIT, "words"); }
    static void setWords(List<String> value) { EDIT.put("words", String.join("\n", value)); }
    static LineEnd lineEnd() { return constant(FILES, "lineEnd", LineEnd.LF); }
    static void setLineEnd(LineEnd value) { FILES.put("lineEnd", value.name()); }
    static String encoding() { return FILES.get("encoding", "UTF-8"); }
    static void setEncoding(String value) { FILES.put("encoding", value); }
    static boolean backup() { return FILES.getBoolean("backup", true); }
    static void setBackup(boolean value) { FILES.putBoolean("backup", value); }
    static int saveAfter() { return FILES.getInt("saveAfter", 30); }
    static void setSaveAfter(int value) { FILES.putInt("saveAfter", (int) checked(value, 0, 600)); }
    static long largest() { return FILES.getLong("largest", 1L << 30); }
    static void setLargest(long value) { FILES.putLong("largest", (long) checked(value, 1, 1e18)); }
    static List<String> recent() { return lines(FILES, "recent"); }
    static void setRecent(List<String> value) { FILES.put("recent", String.join("\n", value)); }
    static String printer() { return PRINT.get("printer", ""); }
    static void setPrinter(String value) { PRINT.put("printer", value); }
    static boolean colour() { return PRINT.getBoolean("colour", true); }
    static void setColour(boolean value) { PRINT.putBoolean("colour", value); }
    static int copies() { return PRINT.getInt("copies", 1); }
    static void setCopies(int value) { PRINT.putInt("copies", (int) checked(value, 1, 99)); }

    private static double checked(double value, double min, double max) {
        if (value >= min && value <= max)
            return value;
        throw new IllegalArgumentException(value + " is not between " + min + " and " + max);
    }

    private static String checked(String value, int min, int max) {
        checked(value.length(), min, max);
        return value;
    }

    private static List<String> lines(Preferences node, String key) {
        return node.get(key, "").lines().toList();
    }

    private static <E extends Enum<E>> E constant(Preferences node, String key, E otherwise) {
        return Enum.valueOf(otherwise.getDeclaringClass(), node.get(key, otherwise.name()));
    }
    // end

    private EditorPreferences() {}

    /** The same as {@link Editor}. */
    public static void main(String[] arguments) throws Exception {
        show();
        setFontSize(fontSize() + 2);
        setTheme(Theme.DARK);
        setRecent(List.of("notes.txt", "todo.txt"));
        try {
            setFontSize(100);
        } catch (IllegalArgumentException refused) {
            System.out.println("The font size 100 is refused");
        }
        show();
        ROOT.flush();
    }

    private static void show() {
        System.out.println("font size " + fontSize() + ", theme " + theme() + ", recent files "
                + String.join(" ", recent()));
    }
}
