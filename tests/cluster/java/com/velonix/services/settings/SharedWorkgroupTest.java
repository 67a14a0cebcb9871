package com.velonix.services.settings;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.nio.file.Path;
import java.util.List;
import java.util.Map;
import java.util.concurrent.CountDownLatch;
import java.util.concurrent.TimeUnit;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/**
 * Tests of a shared workgroup level that this process may only read. {@code tests/cluster/java.sh}
 * runs them on a cluster.
 */
class SharedWorkgroupTest {
    private static final String REFUSAL =
            "Cannot change \"editor.fontSize\" at the level \"workgroup\": ";

    private final SettingPath root = SettingPath.processRoot();
    private final Setting<Integer> size = root.path("editor").setting("fontSize", Integer.class);

    @TempDir
    private Path folder;

    @AfterEach
    void close() {
        root.close();
    }

    /** A program that may change the level. */
    static final class Administrator {
        public static void main(String[] arguments) throws Exception {
            try (SettingPath root = SettingPath.processRoot()) {
                root.path("editor")
                        .setting("fontSize", Integer.class)
                        .set(16, SettingLevel.WORKGROUP);
            }
        }
    }

    @Test
    void aChangeByAnotherMachineIsHeard() throws Exception {
        CountDownLatch heard = new CountDownLatch(1);
        try (Registration listening = size.onChanged(event -> heard.countDown())) {
            String output = ChildJvm.run(Administrator.class, folder,
                    Map.of("SETTINGS_WORKGROUP_CREDENTIALS", System.getProperty("test.admin"),
                            "SETTINGS_USERDIR", folder.resolve("other").toString()));
            assertEquals("", output);
            assertTrue(heard.await(60, TimeUnit.SECONDS));
        }
        assertEquals(16, size.get(SettingLevel.WORKGROUP));
    }

    @Test
    void aReaderIsRefusedWithTheReason() throws Exception {
        Exception refused = assertThrows(
                SettingAccessException.class, () -> size.set(1, SettingLevel.WORKGROUP));
        assertTrue(refused.getMessage().startsWith(REFUSAL), refused.getMessage());
        assertTrue(refused.getMessage().contains("permission denied"), refused.getMessage());
        try (SettingTransaction transaction = new SettingTransaction()) {
            transaction.set(size, 1);
            List<SettingValidity> problems = transaction.commit(SettingLevel.WORKGROUP);
            assertEquals(1, problems.size());
            assertTrue(problems.get(0).toString().contains("permission denied"),
                    problems.toString());
        }
        size.set(2, SettingLevel.USER);
        assertEquals(2, size.get());
        size.unset(SettingLevel.USER);
    }
}
