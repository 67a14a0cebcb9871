package com.velonix.services.settings;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import java.util.Optional;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.function.Executable;
import org.junit.jupiter.api.io.TempDir;

/** Tests of locked entries, in a tree with values at a level above the lock. */
class LockTest {
    private static final String FILE = "<settings version='1'>\n"
            + "<node name='editor' locked='true' reason='Policy 7'><key name='size' type='int'>"
            + "<value level='user'>2</value><value level='factory'>1</value></key></node>"
            + "<key name='free' type='int'><value>1</value></key></settings>";

    @TempDir Path directory;

    @Test
    void aLockHidesHigherLevelsAndRefusesTheirChanges() throws Exception {
        Path file = Files.writeString(directory.resolve("file.xml"), FILE);
        try (SettingPath root = SettingPath.load(file)) {
            SettingPath editor = root.path("editor");
            Setting<Integer> size = editor.setting("size", Integer.class);
            // More than once: first by the contract, then by the lane, then from the cache.
            for (int times = 0; times < 3; ++times) {
                assertEquals(1, size.get());
                assertEquals(2, size.get(SettingLevel.USER));
            }
            assertEquals(Optional.of(SettingLevel.FACTORY), size.level());
            SettingLock lock = new SettingLock("__STANDALONE_ROOT__.editor", SettingLevel.FACTORY,
                    Optional.of("Policy 7"), file + ":2:1");
            assertEquals(List.of(Optional.of(lock), Optional.of(lock)),
                    List.of(size.lock(), editor.lock()));
            assertFalse(size.isWritable(SettingLevel.USER));
            assertFalse(editor.isWritable(SettingLevel.SESSION));
            assertTrue(size.isWritable(SettingLevel.FACTORY));
            refuses(file, () -> size.set(3));
            refuses(file, () -> size.set(3, SettingLevel.SESSION));
            refuses(file, () -> size.unset(SettingLevel.USER));
            refuses(file, () -> editor.addKey("late", 1));
            refuses(file, () -> editor.addNode("late"));
            assertEquals(1, size.get());
            size.set(4, SettingLevel.FACTORY);
            assertEquals(4, size.get());
            Setting<Integer> free = root.setting("free", Integer.class);
            assertEquals(Optional.empty(), free.lock());
            assertTrue(free.isWritable(SettingLevel.USER));
            Setting<Integer> none = root.setting("none", Integer.class);
            assertThrows(SettingNotFoundException.class, none::lock);
            assertThrows(SettingNotFoundException.class, () -> none.isWritable(SettingLevel.USER));
        }
    }

    private static void refuses(Path file, Executable change) {
        String refusal = assertThrows(SettingAccessException.class, change).getMessage();
        assertTrue(refusal.contains(file + ":2:1: Policy 7"), refusal);
    }
}
