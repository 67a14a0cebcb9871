package prefs;

import java.util.Arrays;
import java.util.prefs.Preferences;

/** Reads, puts and removes preferences that a settings file presets. */
public final class Presets {
    private Presets() {}

    public static void main(String[] arguments) throws Exception {
        Preferences node = Preferences.userRoot().node("story");
        String[][] puts = {{"preset", "mine"}, {"number", "8"}, {"number", "x"}, {"limited", "c"}};
        for (String[] put : puts) {
            String before = node.get(put[0], "none");
            node.put(put[0], put[1]);
            System.out.println(put[0] + ": " + before + ", " + node.get(put[0], "none"));
        }
        String[] keys = node.keys();
        Arrays.sort(keys);
        for (String key : keys) {
            node.remove(key);
            System.out.println(key + "=" + node.get(key, "none"));
        }
    }
}
