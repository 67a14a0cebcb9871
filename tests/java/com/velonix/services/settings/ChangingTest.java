package com.velonix.services.settings;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.util.List;
import java.util.Optional;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.function.Executable;

class ChangingTest {
    private SettingPath root;
    private SettingPath process;

    @BeforeEach
    void open() throws Exception {
        root = SettingPath.standalone();
        process = SettingPath.processRoot();
    }

    @AfterEach
    void close() {
        root.close();
        process.close();
    }

    @Test
    void eachLevelHoldsItsOwnValue() throws Exception {
        Setting<String> key = root.addKey("key", "at user");
        for (SettingLevel level : SettingLevel.values()) {
            key.set("at " + level.levelName(), level);
        }
        for (SettingLevel level : SettingLevel.values()) {
            assertEquals("at " + level.levelName(), key.get(level));
            assertEquals("at " + level.levelName(), key.get());
            assertEquals(Optional.of(level), key.level());
            key.unset(level);
            assertThrows(SettingNotFoundException.class, () -> key.unset(level));
        }
        assertFalse(key.isSet());
        assertTrue(key.exists());
    }

    @Test
    void theTypeIsFixedByTheFirstValue() throws Exception {
        root.addKey("key", 1);
        Setting<Object> key = root.setting("key", Object.class);
        for (Object other : List.of("1", 1L, new Integer[] {1})) {
            Exception refused =
                    assertThrows(SettingValidationException.class, () -> key.set(other));
            assertTrue(refused.getMessage().contains("int"), refused.getMessage());
        }
        assertEquals(1, key.get());
    }

    @Test
    void readOnlyLevelsAndEntriesOfFilesCannotBeChanged() throws Exception {
        Setting<Integer> size = process.path("editor").setting("fontSize", Integer.class);
        for (SettingLevel level : List.of(SettingLevel.FACTORY, SettingLevel.WORKGROUP)) {
            Exception refused =
                    assertThrows(SettingAccessException.class, () -> size.set(1, level));
            String start = "Cannot change \"editor.fontSize\" at the level \"" + level.levelName();
            assertTrue(refused.getMessage().startsWith(start), refused.getMessage());
            assertEquals("a", new SettingAccessException("a").getMessage());
        }
        assertThrows(SettingAccessException.class, () -> size.unset(SettingLevel.FACTORY));
        assertThrows(SettingAccessException.class, () -> process.path("editor").delete("fontSize"));
        assertThrows(SettingAccessException.class, () -> process.delete("editor"));
        assertEquals(11, size.get());
        size.set(14);
        size.set(16, SettingLevel.SESSION);
        assertEquals(16, size.get());
        size.unset(SettingLevel.SESSION);
        assertEquals(14, size.get());
        size.unset();
        assertEquals(11, size.get());
    }

    @Test
    void entriesAreAddedAndRemoved() throws Exception {
        SettingPath node = root.addNode("node");
        node.addKey("key", "x");
        node.addNode("inner").addKey("deep", 1);
        assertThrows(SettingNameDuplicationException.class, () -> root.addNode("node"));
        Exception taken =
                assertThrows(SettingNameDuplicationException.class, () -> node.addKey("inner", 2));
        assertEquals("Cannot add \"inner\" to \"node\": the name is taken.", taken.getMessage());
        assertThrows(SettingNotFoundException.class, () -> root.path("no").addNode("n"));

        node.delete("key");
        assertEquals(List.of("inner"), node.children());
        root.delete("node");
        assertFalse(node.path("inner").exists());
        Exception missing = assertThrows(SettingNotFoundException.class, () -> root.delete("node"));
        assertEquals("node", missing.getMessage());
    }

    @Test
    void aCopyHasTheEntriesAndValuesOfItsSource() throws Exception {
        SettingPath copy = process.path("editor").copyTo(root, "copy");
        assertEquals(process.path("editor").children(), copy.children());
        assertEquals("workgroup theme", copy.setting("theme", String.class).get());
        assertEquals(
                Optional.of(Double.class), copy.setting("untouched", Double.class).declaredType());
        copy.setting("theme", String.class).set("mine");
        assertEquals(
                "workgroup theme", process.path("editor").setting("theme", String.class).get());

        SettingPath inside = copy.copyTo(copy, "again");
        assertEquals(List.of("fontSize", "recent", "theme", "untouched"), inside.children());
        assertThrows(UnsupportedOperationException.class, () -> copy.copyTo(root, "copy"));
        root.addKey("key", 1);
        assertThrows(SettingNameDuplicationException.class, () -> copy.copyTo(root, "key"));
        Exception missing = assertThrows(
                SettingNotFoundException.class, () -> root.path("no").copyTo(root, "x"));
        assertEquals("no", missing.getMessage());
        missing = assertThrows(
                SettingNotFoundException.class, () -> copy.copyTo(root.path("no"), "x"));
        assertEquals("no", missing.getMessage());
    }

    /** Refuses nothing, and removes the node of the key that it validates. */
    public static final class Remover implements ValueValidator {
        static SettingPath tree;

        public Remover(String unused) {}

        @Override
        public Optional<String> problem(ValidationContext context) {
            try {
                tree.delete("node");
            } catch (SettingException failed) {
                throw new IllegalStateException(failed);
            }
            return Optional.empty();
        }
    }

    @Test
    void aRefusedAdditionSaysWhy() throws Exception {
        SettingPath node = root.addNode("node");
        Remover.tree = root;
        Exception removed = assertThrows(SettingNotFoundException.class,
                () -> node.addKey("key", 1, SettingLevel.USER, Remover.class, ""));
        assertEquals("node.key: it, or a node above it, has been removed meanwhile",
                removed.getMessage());

        SettingPath deepest = root;
        while (deepest.names().size() < 199) deepest = deepest.addNode("n");
        deepest.addKey("k", 1);
        SettingPath full = deepest.addNode("n");
        assertTooDeep(() -> full.addNode("n"));
        assertTooDeep(() -> full.addKey("k", 1));
        assertTooDeep(() -> root.path("n", "n").copyTo(root.path("n", "n", "n"), "copy"));
    }

    private static void assertTooDeep(Executable addition) {
        Exception refused = assertThrows(SettingValidationException.class, addition);
        assertTrue(refused.getMessage().endsWith("the tree would be deeper than 200 entries."),
                refused.getMessage());
    }

    @Test
    void settingsThatHaveBeenReadFromTheDiskDoNotMoveToMemory() {
        SettingPath.processRoot().close();
        Exception refused = assertThrows(
                IllegalStateException.class, () -> SettingTestEnvironment.keepInMemory());
        assertTrue(refused.getMessage().contains("have been read already"), refused.getMessage());
    }

    @Test
    void theTestEnvironmentReturnsTheDirectoryItHasSet() throws Exception {
        String factory = System.getenv("SETTINGS_FACTORYDIR");
        assertEquals(factory,
                SettingTestEnvironment.setDirectories(java.nio.file.Path.of(factory),
                        java.nio.file.Path.of(System.getenv("SETTINGS_USERDIR"))));
        SettingTestEnvironment.clear();
    }
}
