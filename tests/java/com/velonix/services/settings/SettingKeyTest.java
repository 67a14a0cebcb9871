package com.velonix.services.settings;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.velonix.services.settings.validators.Range;
import java.io.IOException;
import java.nio.file.Path;
import java.util.List;
import java.util.Map;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** Tests settings that are declared in code, and what programs do with settings every day. */
class SettingKeyTest extends OneKeyTree {
    enum Mode { PLAIN, RICH }

    private static final SettingKey<Integer> SIZE =
            SettingKey.of("view.text.size", 12, Range.class, "6..72");
    private static final SettingKey<Mode> MODE = SettingKey.of("view.mode", Mode.PLAIN);
    private static final SettingKey<List<String>> RECENT =
            SettingKey.ofList("view.recent", String.class, List.of("a.txt"));

    @Test
    void aDeclaredSettingHasItsDefaultAndAddsItsKeyWithTheFirstValue() throws Exception {
        assertEquals(12, SIZE.get(root));
        assertEquals(Mode.PLAIN, MODE.get(root));
        assertEquals(List.of("a.txt"), RECENT.get(root));
        assertFalse(SIZE.reset(root));
        assertEquals(List.of("node"), root.nodes());

        SIZE.set(root, 14);
        MODE.set(root, Mode.RICH);
        RECENT.set(root, List.of());
        assertEquals(14, SIZE.get(root));
        assertEquals(Mode.RICH, MODE.get(root));
        assertEquals(List.of(), RECENT.get(root));
        assertEquals("RICH", root.path("view").setting("mode", String.class).get());
        assertArrayEquals(new String[0], root.path("view").setting("recent", String[].class).get());
        RECENT.set(root, List.of("b", "c"));
        assertEquals(List.of("b", "c"), RECENT.get(root));

        assertTrue(SIZE.reset(root));
        assertFalse(SIZE.reset(root));
        assertEquals(12, SIZE.get(root));
        // A value of a lower level counts before the default.
        root.path("view", "text").setting("size", Integer.class).set(20, SettingLevel.FACTORY);
        assertEquals(20, SIZE.get(root));
    }

    @Test
    void aDeclaredSettingRefusesWhatItDoesNotAllow() throws Exception {
        assertEquals("100 is outside 6..72",
                assertThrows(SettingValidationException.class, () -> SIZE.set(root, 100))
                        .getMessage());
        assertFalse(root.path("view").exists());
        SIZE.set(root, 6);
        // Also for those that set the key without the declaration.
        Setting<Integer> plain = root.path("view", "text").setting("size", Integer.class);
        assertThrows(SettingValidationException.class, () -> plain.set(5));
        MODE.set(root, Mode.RICH);
        Setting<String> mode = root.path("view").setting("mode", String.class);
        assertThrows(SettingValidationException.class, () -> mode.set("POOR"));

        // A key that a file has defined without a validator, with another value or type.
        SettingPath other = root.addNode("other");
        other.getOrAddNode("view", "text").addKey("size", 1);
        assertThrows(SettingValidationException.class, () -> SIZE.set(other, 100));
        other.path("view").addKey("mode", "POOR");
        assertEquals("view.mode: \"POOR\" is none of PLAIN, RICH",
                assertThrows(SettingValidationException.class, () -> MODE.get(other)).getMessage());
        other.path("view").addKey("recent", 1);
        String message =
                assertThrows(SettingUnsupportedTypeRuntimeException.class, () -> RECENT.get(other))
                        .getMessage();
        assertTrue(message.contains("other.view.recent is of type java.lang.Integer"), message);
        assertThrows(SettingValidationException.class, () -> RECENT.set(other, List.of("x")));
        assertThrows(SettingNameDuplicationException.class,
                () -> SettingKey.of("view.recent.below", 1).set(other, 1));

        assertThrows(IllegalArgumentException.class, () -> SettingKey.of("view..size", 1));
        assertThrows(
                IllegalArgumentException.class, () -> SettingKey.of("a", 73, Range.class, "6..72"));
        assertThrows(IllegalArgumentException.class, () -> SettingKey.of("a", 6, Range.class, "6"));
        assertThrows(SettingUnsupportedTypeRuntimeException.class,
                () -> SettingKey.of("a", new StringBuilder()));
    }

    @Test
    void getOrAddReturnsWhatIsThere() throws Exception {
        Setting<Integer> again = node.getOrAddKey("key", 5);
        assertEquals(1, again.get());
        assertEquals(5, node.getOrAddKey("fresh", 5).get());
        assertThrows(SettingUnsupportedTypeRuntimeException.class,
                () -> node.getOrAddKey("key", "text"));
        assertThrows(SettingNameDuplicationException.class, () -> root.getOrAddKey("node", 1));
        assertThrows(SettingNameDuplicationException.class,
                () -> root.getOrAddNode("node", "key", "below"));
        assertEquals(root.path("node"), root.getOrAddNode("node"));
        assertTrue(root.getOrAddNode("node", "a", "b").exists());
    }

    @Test
    void aSavedTreeIsLoadedAsItWas(@TempDir Path folder) throws Exception {
        key.set(2, SettingLevel.FACTORY);
        node.getOrAddNode("below").addKey("text", "\u00fc \ud83d\ude00");
        Path file = folder.resolve("saved \u00fc.xml");
        root.save(file);
        try (SettingPath loaded = SettingPath.load(file)) {
            assertEquals(Map.of(SettingLevel.USER, 1, SettingLevel.FACTORY, 2),
                    loaded.path("node").setting("key", Integer.class).values());
            assertEquals("\u00fc \ud83d\ude00",
                    loaded.path("node", "below").setting("text", String.class).get());
        }
        node.save(file, SettingLevel.FACTORY);
        try (SettingPath loaded = SettingPath.load(file)) {
            assertEquals(
                    Map.of(SettingLevel.FACTORY, 2), loaded.setting("key", Integer.class).values());
        }
        assertThrows(SettingNotFoundException.class, () -> root.path("none").save(file));
        Path missing = folder.resolve("none").resolve("file.xml");
        String message = assertThrows(IOException.class, () -> root.save(missing)).getMessage();
        assertEquals("Cannot write " + missing + ": No such file or directory", message);
        node.addKey("nul", "\0");
        message = assertThrows(IOException.class, () -> root.save(file)).getMessage();
        assertTrue(message.contains("node.nul"), message);
        SettingPath.load(file).close();
    }

    @Test
    void allValuesOfANodeAndOfAKeyComeInOneCall() throws Exception {
        key.set(2, SettingLevel.FACTORY);
        key.set(3, SettingLevel.SESSION);
        assertEquals(Map.of(SettingLevel.SESSION, 3, SettingLevel.USER, 1, SettingLevel.FACTORY, 2),
                key.values());
        assertEquals("[SESSION, USER, FACTORY]", key.values().keySet().toString());
        node.addKey("text", "t").unset();
        node.addKey("flag", true);
        assertEquals(Map.of("key", 3, "flag", true), node.values());
        assertEquals(3, key.getOr(9));
        for (SettingLevel level : key.values().keySet()) assertTrue(key.reset(level));
        assertFalse(key.reset());
        assertEquals(9, key.getOr(9));
        assertEquals(Map.of(), key.values());
        node.delete("key");
        assertEquals(9, key.getOr(9));
        assertEquals(Map.of(), key.values());
        assertFalse(key.reset());
    }
}
