package prefs;

import java.io.ByteArrayInputStream;
import java.io.ByteArrayOutputStream;
import java.nio.charset.StandardCharsets;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.Random;
import java.util.TreeSet;
import java.util.prefs.BackingStoreException;
import java.util.prefs.NodeChangeEvent;
import java.util.prefs.NodeChangeListener;
import java.util.prefs.Preferences;

/**
 * Uses java.util.prefs at random and prints every result, so that the outputs of two back ends can
 * be compared. The names are long, strange, or those of a key and a node at once.
 *
 * <p>Story SEED STEPS: prints the whole content, changes it, and prints it again.
 */
public final class Story {
    private static final String[] NAMES = {"a", "b", "fontSize", "x_k_a", "x_name", "a b", "a.b",
            "1st", "_", "\u00fc\u4e2d\ud83d\ude00", "Long".repeat(20), "l\u00f6ng".repeat(20), "B",
            "a_0020b", "<&\"'>"};
    private static final String[] VALUES = {"", "1", "true", " text\twith\nlines ", "<&\"'>",
            "\u00fc\u4e2d\ud83d\ude00", "v".repeat(8192), "null"};

    private final Random random;
    private final Preferences root = Preferences.userRoot().node("story");
    private final List<String> events = new ArrayList<>();

    private Story(long seed) {
        random = new Random(seed);
    }

    public static void main(String[] arguments) throws Exception {
        Story story = new Story(Long.parseLong(arguments[0]));
        story.print("", story.root);
        int steps = Integer.parseInt(arguments[1]);
        for (int step = 0; step < steps; ++step) System.out.println(step + " " + story.step());
        story.print("", story.root);
        story.listen();
        Preferences.userRoot().flush();
    }

    private String step() throws Exception {
        Preferences node = node();
        String name = any(NAMES);
        try {
            switch (random.nextInt(14)) {
                case 0:
                case 1:
                case 2:
                case 3:
                    String value = any(VALUES);
                    node.put(name, value);
                    return "put " + digest(node.absolutePath() + " " + name + "=" + value);
                case 4:
                    node.remove(name);
                    return "remove " + digest(name);
                case 5:
                    return "keys " + digest(sorted(node.keys()));
                case 6:
                    return "children " + digest(sorted(node.childrenNames()));
                case 7:
                    return "exists " + node.nodeExists(name);
                case 8:
                    if (node == root || random.nextInt(3) > 0)
                        return "";
                    node.removeNode();
                    return "removed " + root.nodeExists("") + node.nodeExists("");
                case 9:
                    return "int " + node.getInt(name, -1) + node.getBoolean(name, false);
                case 10:
                    if (random.nextInt(4) > 0)
                        return "";
                    node.clear();
                    return "cleared " + node.keys().length;
                case 11:
                    return copied(node);
                case 12:
                    root.sync();
                    return "sync";
                default:
                    return "get " + digest(node.get(name, "none"));
            }
        } catch (IllegalStateException | IllegalArgumentException | BackingStoreException refused) {
            return refused.getClass().getSimpleName();
        }
    }

    /** Returns a node, which is made if it does not exist. */
    private Preferences node() {
        Preferences node = root;
        for (int depth = random.nextInt(4); depth > 0; --depth) node = node.node(any(NAMES));
        return node;
    }

    /** Exports a subtree, imports it again, and tells the size of the XML. */
    private String copied(Preferences node) throws Exception {
        ByteArrayOutputStream xml = new ByteArrayOutputStream();
        node.exportNode(xml);
        node.clear();
        Preferences.importPreferences(new ByteArrayInputStream(xml.toByteArray()));
        return "copied " + digest(sorted(node.keys()));
    }

    /** Listens to one change of each kind. */
    private void listen() throws Exception {
        Preferences node = root.node("listened");
        node.addPreferenceChangeListener(
                change -> events.add(change.getKey() + "=" + change.getNewValue()));
        node.addNodeChangeListener(new NodeChangeListener() {
            @Override
            public void childAdded(NodeChangeEvent added) {
                events.add("added " + added.getChild().name());
            }

            @Override
            public void childRemoved(NodeChangeEvent removed) {
                events.add("removed " + removed.getChild().name());
                synchronized (events) {
                    events.notify();
                }
            }
        });
        synchronized (events) {
            node.put("k", "v");
            node.remove("k");
            node.node("child").removeNode();
            events.wait(10_000);
        }
        System.out.println(events);
        node.removeNode();
    }

    private void print(String indent, Preferences node) throws Exception {
        for (String key : sorted(node.keys()))
            System.out.println(indent + digest(key + "=" + node.get(key, null)));
        for (String child : sorted(node.childrenNames())) {
            System.out.println(indent + digest(child) + ":");
            print(indent + "  ", node.node(child));
        }
    }

    private String any(String[] from) {
        return from[random.nextInt(from.length)];
    }

    private static TreeSet<String> sorted(String[] names) {
        return new TreeSet<>(Arrays.asList(names));
    }

    /** A text of ASCII characters, short also for a long one. */
    private static String digest(Object value) {
        String text = value.toString();
        StringBuilder shown = new StringBuilder();
        for (char c : text.substring(0, Math.min(60, text.length())).toCharArray())
            shown.append(c >= ' ' && c < 127 ? String.valueOf(c) : String.format("%%%x", (int) c));
        byte[] bytes = text.getBytes(StandardCharsets.UTF_16BE);
        return shown + (text.length() > 60 ? "#" + Arrays.hashCode(bytes) : "");
    }
}
