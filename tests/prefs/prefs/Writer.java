package prefs;

import java.util.prefs.Preferences;

/**
 * Writes preferences as one of several processes.
 *
 * <p>Writer NAME COUNT: puts COUNT values in a node that all share, and adds and removes nodes that
 * all add and remove; then ends without any further step, as if it were killed.
 */
public final class Writer {
    private Writer() {}

    public static void main(String[] arguments) throws Exception {
        Preferences shared = Preferences.userRoot().node("shared");
        int count = Integer.parseInt(arguments[1]);
        for (int i = 0; i < count; ++i) {
            shared.put(arguments[0] + i, "value " + i);
            Preferences churned = shared.node("churn" + i % 3);
            churned.put(arguments[0], "x");
            if (i % 2 == 1)
                churned.removeNode();
            shared.node("nodes/" + i).put(arguments[0], String.valueOf(i));
        }
        Runtime.getRuntime().halt(0);
    }
}
