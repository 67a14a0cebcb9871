import java.util.prefs.Preferences;

/** Prints a preference, puts it, and ends as if it were killed. */
final class Preferring {
    private Preferring() {}

    public static void main(String[] unused) {
        Preferences node = Preferences.userRoot().node("story");
        System.out.println(node.get("size", "none"));
        node.put("size", "14");
        Runtime.getRuntime().halt(0);
    }
}
