package com.velonix.services.settings;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNotEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.velonix.util.types.UnsignedLong;
import com.velonix.util.types.UnsignedShort;
import java.io.FileNotFoundException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import java.util.Optional;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.EnumSource;

class ReadingTest {
    private static final Path FILES = Path.of(System.getProperty("test.data"), "files");

    private SettingPath file;
    private SettingPath process;

    @BeforeEach
    void open() throws Exception {
        file = SettingPath.load(FILES.resolve("levels.xml"));
        process = SettingPath.processRoot();
    }

    @AfterEach
    void close() {
        file.close();
        process.close();
    }

    @Test
    void theEffectiveValueIsThatOfTheHighestLevel() throws Exception {
        Setting<String> colour = file.path("view").setting("colour", String.class);
        assertEquals("user colour", colour.get());
        assertEquals("factory colour", colour.get(SettingLevel.FACTORY));
        assertEquals(Optional.of(SettingLevel.USER), colour.level());
        assertEquals(Optional.empty(), colour.find(SettingLevel.SESSION));
        assertTrue(colour.isSet(SettingLevel.FACTORY));
        assertFalse(colour.isSet(SettingLevel.WORKGROUP));
    }

    @Test
    void theProcessReadsItsDirectories() throws Exception {
        SettingPath editor = process.path("editor");
        Setting<String> theme = editor.setting("theme", String.class);
        assertEquals("workgroup theme", theme.get());
        assertEquals("factory theme", theme.get(SettingLevel.FACTORY));
        assertEquals(Optional.of(SettingLevel.WORKGROUP), theme.level());
        assertArrayEquals(new String[] {"a", "b"}, editor.setting("recent", String[].class).get());
        assertEquals(UnsignedShort.valueOf(4),
                process.path("solver").setting("threads", UnsignedShort.class).get());
        assertEquals(Path.of(System.getenv("SETTINGS_FACTORYDIR")), process.factoryDir());
    }

    @Test
    void aKeyWithoutValueHasATypeAndNoLevel() throws Exception {
        Setting<Integer[]> empty = file.path("view").setting("empty", Integer[].class);
        assertTrue(empty.exists());
        assertFalse(empty.isSet());
        assertEquals(Optional.empty(), empty.find());
        assertEquals(Optional.empty(), empty.level());
        assertEquals(Optional.of(Integer[].class), empty.declaredType());
        Exception none = assertThrows(SettingNotFoundException.class, empty::get);
        assertTrue(none.getMessage().startsWith("view.empty "), none.getMessage());
        none = assertThrows(SettingNotFoundException.class, () -> empty.get(SettingLevel.USER));
        assertTrue(none.getMessage().endsWith("user"), none.getMessage());
    }

    @Test
    void childrenNodesAndKeysAreListedInOrder() throws Exception {
        SettingPath view = file.path("view");
        assertEquals(List.of("big", "colour", "empty", "grid"), view.children());
        assertEquals(List.of("big", "colour", "empty"), view.keys());
        assertEquals(List.of("grid"), view.nodes());
        assertTrue(view.isNode("grid"));
        assertFalse(view.isNode("big"));
        assertTrue(view.path("grid").exists());
        assertFalse(view.path("big").exists());
        assertFalse(view.setting("grid", Object.class).exists());
    }

    @Test
    void theMessageForAMissingEntryIsItsDottedPath() {
        SettingPath view = file.path("view");
        assertMissing("view.nothing", () -> view.setting("nothing", String.class).get());
        assertMissing("view.no.key", () -> view.path("no").setting("key", String.class).get());
        assertMissing("view.grid", () -> view.setting("grid", String.class).get());
        assertMissing("view.no", () -> view.path("no").children());
        assertMissing("view.no", () -> view.isNode("no"));
        assertFalse(view.setting("nothing", String.class).isSet());
        assertFalse(view.path("no").setting("key", String.class).exists());
    }

    private static void assertMissing(String path, org.junit.jupiter.api.function.Executable call) {
        Exception missing = assertThrows(Exception.class, call);
        // Listing throws RuntimeException for every failure of the service.
        assertEquals(path, missing.getMessage(), missing.toString());
    }

    @Test
    void readingAsAnotherTypeIsRefusedWithPathAndBothTypes() throws Exception {
        SettingPath view = file.path("view");
        for (Class<?> wrong : List.of(String.class, Long.class, UnsignedLong[].class)) {
            Exception refused = assertThrows(SettingUnsupportedTypeRuntimeException.class,
                    () -> view.setting("big", wrong).get());
            assertEquals("view.big is of type com.velonix.util.types.UnsignedLong and was read as "
                            + wrong.getTypeName(),
                    refused.getMessage());
        }
        assertThrows(SettingUnsupportedTypeRuntimeException.class,
                () -> view.setting("empty", String.class).find());
        assertEquals(UnsignedLong.MAX_VALUE, view.setting("big", Object.class).get());
        assertEquals(-1L, view.setting("big", Number.class).get().longValue());
        assertEquals(0.5f, view.path("grid").setting("step", float.class).get());
    }

    @Test
    void theMessageForABadFileHasTheFileAndThePosition(@TempDir Path folder) throws Exception {
        Path missing = folder.resolve("n\u00e4mlich.xml");
        assertBadFile(missing, "Settings file could not be loaded for \"" + missing + "\": ");
        assertBadFile(folder, folder.toString());
        Path truncated = folder.resolve("truncated.xml");
        Files.writeString(truncated, "<settings version=\"1\">\n<node name=\"a\">");
        assertBadFile(truncated, truncated + ":2:");
        Path bad = FILES.resolve("bad_number.xml");
        assertBadFile(bad, bad + ":3:");
    }

    private static void assertBadFile(Path path, String text) {
        Exception refused = assertThrows(FileNotFoundException.class, () -> SettingPath.load(path));
        assertTrue(refused.getMessage().contains(text), refused.getMessage());
    }

    @Test
    void pathsAreEqualIfNamesAndTreeAreTheSame() throws Exception {
        try (SettingPath again = SettingPath.processRoot();
                SettingPath session = SettingPath.sessionRoot(12345);
                SettingPath reloaded = SettingPath.load(FILES.resolve("levels.xml"))) {
            assertEquals(process.path("editor"), again.path("editor"));
            assertEquals(process.path("editor").hashCode(), again.path("editor").hashCode());
            assertEquals(process, session);
            assertNotEquals(process, process.path("editor"));
            assertNotEquals(file, reloaded);
            assertEquals(process.path("a", "b"), process.path("a").path("b"));
        }
        assertEquals("view.big in the settings of " + FILES.resolve("levels.xml"),
                file.path("view").setting("big", Object.class).toString());
    }

    @ParameterizedTest
    @EnumSource
    void higherLevelsOverrideLowerOnes(SettingLevel level) {
        for (SettingLevel other : SettingLevel.values()) {
            assertEquals(level.compareTo(other) < 0, level.overrides(other), level + " " + other);
        }
        assertEquals(level.name().toLowerCase(java.util.Locale.ROOT), level.levelName());
        assertEquals(SettingLevel.USER, SettingLevel.defaultLevel());
    }
}
