package com.velonix.services.settings;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.FileNotFoundException;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Map;
import java.util.Optional;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

/** Tests applications that say where their settings come from. */
class ApplicationTest {
    private static final SettingKey<Integer> SIZE = SettingKey.of("editor.size", 10);

    @TempDir Path folder;

    /** Prints the value that the process has, and sets another one. */
    public static final class OfProcess {
        public static void main(String[] arguments) throws Exception {
            try (SettingPath root = SettingPath.processRoot();
                    SettingPath application = Settings.forApplication("child").open()) {
                System.out.println(SIZE.get(root) + " " + SIZE.get(application));
                SIZE.set(root, 77);
                SIZE.set(application, 78);
            }
        }
    }

    private Path file(String name, String content) throws IOException {
        Path file = folder.resolve(name);
        Files.createDirectories(file.getParent());
        return Files.writeString(file, "<settings version=\"1\">\n" + content + "</settings>");
    }

    private static String size(int value) {
        return "<node name=\"editor\">\n<key name=\"size\" type=\"int\"><value>" + value
                + "</value></key>\n</node>\n";
    }

    @Test
    void theNameSeparatesAnApplicationFromOthersAndFromTheProcess() throws Exception {
        Path user = Path.of(System.getenv("SETTINGS_USERDIR"));
        try (SettingPath process = SettingPath.processRoot();
                SettingPath one = Settings.forApplication("app.one").open();
                SettingPath two = Settings.forApplication("app-2").open()) {
            SIZE.set(one, 1);
            SIZE.set(two, 2);
            assertEquals(1, SIZE.get(one));
            assertEquals(2, SIZE.get(two));
            assertEquals(10, SIZE.get(process));
            assertFalse(process.path("editor", "size").exists());
            assertTrue(one.toString().contains("\"app.one\""), one.toString());
        }
        assertTrue(Files.isDirectory(user.resolve("app.one")));
        try (SettingPath one = Settings.forApplication("app.one").open()) {
            assertEquals(1, SIZE.get(one));
        }
    }

    @Test
    void theSameSourcesHaveTheSameTreeUntilItIsClosed() throws Exception {
        Settings sources = Settings.forApplication("same").userDirectory(folder.resolve("user"));
        Path factory = file("factory.xml", size(20));
        try (SettingPath one = sources.open(); SettingPath two = sources.open();
                SettingPath other = sources.factoryFile(factory).open()) {
            assertEquals(one, two);
            SIZE.set(one, 5);
            Setting<Integer> size = one.path("editor").setting("size", Integer.class);
            size.set(6, SettingLevel.SESSION);
            assertEquals(6, SIZE.get(two));
            // Another tree on the same user directory: the user level is shared, no other.
            other.sync();
            assertEquals(5, SIZE.get(other));
            assertEquals(20, SIZE.in(other).get(SettingLevel.FACTORY));
        }
        sources.factoryFile(factory);
        try (SettingPath again = sources.open()) {
            assertEquals(5, SIZE.get(again));
        }
        assertTrue(Files.exists(folder.resolve("user/settings-1.db")));
    }

    @Test
    void filesResourcesAndDirectoriesAreTheLowerLevels() throws Exception {
        Settings sources = Settings.forApplication("levels")
                                   .userDirectory(folder.resolve("user"))
                                   .factoryResource(ApplicationTest.class, "10_editor.xml")
                                   .factoryFile(file("later.xml", size(20)))
                                   .factoryFile(file("last.xml", size(21)));
        try (SettingPath root = sources.open()) {
            SettingPath editor = root.path("editor");
            assertEquals("factory theme", editor.setting("theme", String.class).get());
            assertEquals(Optional.of(SettingLevel.FACTORY), SIZE.in(root).level());
            assertEquals(21, SIZE.get(root));
        }
        file("workgroup/w.xml", "<node name=\"editor\" locked=\"true\">" + size(30).substring(21));
        sources.workgroupDirectory(folder.resolve("workgroup")).factoryDirectory(folder);
        try (SettingPath root = sources.open()) {
            assertEquals(30, SIZE.get(root));
            assertEquals(20, SIZE.in(root).get(SettingLevel.FACTORY));
            assertTrue(SIZE.in(root).lock().isPresent());
            assertThrows(SettingAccessException.class, () -> SIZE.set(root, 1));
        }
        Settings locked = Settings.forApplication("locked").factoryFile(
                file("locked.xml", "<key name=\"k\" type=\"int\" locked=\"true\"/>"));
        try (SettingPath root = locked.open()) {
            String source = root.setting("k", Integer.class).lock().orElseThrow().source();
            assertEquals(folder.resolve("locked.xml") + ":2:1", source);
        }
    }

    @Test
    void aSourceThatIsMissingOrWrongIsNamed() throws Exception {
        Path absent = folder.resolve("absent");
        fails(absent.toString(), application().factoryFile(absent));
        fails(absent.toString(), application().factoryDirectory(absent));
        fails(absent.toString(), application().workgroupDirectory(absent));
        fails(folder.toString(), application().factoryFile(folder));
        Path wrong = file("wrong.xml", "<key name=\"size\" type=\"int\"><value>x</value></key>");
        fails(wrong + ":2:", application().factoryFile(wrong));
        fails("ApplicationTest.class:1:",
                application().factoryResource(ApplicationTest.class, "ApplicationTest.class"));
        String message = assertThrows(FileNotFoundException.class,
                () -> application().factoryResource(ApplicationTest.class, "absent.xml"))
                                 .getMessage();
        assertTrue(message.contains("\"absent.xml\""), message);
        // Nothing of it is left: the same application can be opened without that source.
        try (SettingPath root = application().open()) {
            assertEquals(10, SIZE.get(root));
        }
    }

    private Settings application() {
        return Settings.forApplication("missing").userDirectory(folder.resolve("user"));
    }

    private static void fails(String name, Settings sources) {
        String message = assertThrows(IOException.class, sources::open).getMessage();
        assertTrue(message.contains(name), message);
    }

    @ParameterizedTest
    @ValueSource(strings = {"", ".hidden", "a/b", "..", "-x", "\u00e4", "a b"})
    void otherNamesAreRefused(String name) {
        assertThrows(IllegalArgumentException.class, () -> Settings.forApplication(name));
    }

    @Test
    void aSystemPropertyHasPrecedenceOverItsVariable() throws Exception {
        Path user = folder.resolve("of-property");
        String option = "-Dsettings.userdir=" + user;
        for (String expected : new String[] {"10 10", "77 78"}) {
            assertEquals(expected,
                    ChildJvm.run(OfProcess.class, folder, ChildJvm.apiClasses(),
                                    ChildJvm.librariesOption(), option)
                            .strip());
        }
        assertTrue(Files.isDirectory(user.resolve("child")));
        Map<String, String> variable = Map.of("SETTINGS_USERDIR", user.toString());
        assertEquals("77 78", ChildJvm.run(OfProcess.class, folder, variable).strip());
    }
}
