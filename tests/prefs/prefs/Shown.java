package prefs;

import java.util.prefs.Preferences;

/** Shown NODE: prints the keys of a node, and those of the nodes below it. */
public final class Shown {
    private Shown() {}

    public static void main(String[] arguments) throws Exception {
        Preferences node = Preferences.userRoot().node(arguments[0]);
        for (String key : node.keys()) System.out.println(key + "=" + node.get(key, null));
        for (String child : node.node("nodes").childrenNames()) {
            System.out.print("nodes/" + child + ":");
            Preferences below = node.node("nodes").node(child);
            for (String key : below.keys())
                System.out.print(" " + key + "=" + below.get(key, null));
            System.out.println();
        }
    }
}
