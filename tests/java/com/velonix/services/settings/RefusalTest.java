package com.velonix.services.settings;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.velonix.services.settings.validators.Range;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.Date;
import java.util.List;
import java.util.concurrent.CountDownLatch;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.function.Executable;

/** What the API refuses itself, before anything native is called. */
class RefusalTest {
    private SettingPath root;
    private Setting<Integer> key;

    @BeforeEach
    void open() throws Exception {
        root = SettingPath.standalone();
        key = root.addKey("key", 1);
    }

    @AfterEach
    void close() {
        root.close();
    }

    @Test
    void nullArguments() throws Exception {
        try (SettingTransaction transaction = new SettingTransaction()) {
            for (Executable call : List.<Executable>of(()
                                                               -> SettingPath.load(null),
                         ()
                                 -> root.path((String[]) null),
                         ()
                                 -> root.path("a", null),
                         ()
                                 -> root.setting(null, String.class),
                         ()
                                 -> root.setting("key", (Class<?>) null),
                         ()
                                 -> root.isNode(null),
                         ()
                                 -> root.delete(null),
                         ()
                                 -> root.addNode(null),
                         ()
                                 -> root.addNode("n", null, "1..2"),
                         ()
                                 -> root.addNode("n", Range.class, null),
                         ()
                                 -> root.addKey(null, 1),
                         ()
                                 -> root.addKey("k", null),
                         ()
                                 -> root.copyTo(null, "copy"),
                         ()
                                 -> root.copyTo(root, null),
                         ()
                                 -> root.addListener(null),
                         ()
                                 -> root.onChanged(null),
                         ()
                                 -> root.onAdded(null),
                         ()
                                 -> root.onRemoved(null),
                         ()
                                 -> key.get(null),
                         ()
                                 -> key.find(null),
                         ()
                                 -> key.isSet(null),
                         ()
                                 -> key.set(null),
                         ()
                                 -> key.set(1, null),
                         ()
                                 -> key.unset(null),
                         ()
                                 -> key.addListener(null),
                         ()
                                 -> Setting.isValidName(null),
                         ()
                                 -> SettingLevel.USER.overrides(null),
                         ()
                                 -> SettingTestEnvironment.setDirectories(null, Path.of("u")),
                         ()
                                 -> SettingTestEnvironment.setDirectories(Path.of("f"), null),
                         () -> transaction.commit(null), () -> transaction.set(null, 1))) {
                Exception refused = assertThrows(NullPointerException.class, call);
                // The argument's name, not the machine's own account.
                assertTrue(
                        refused.getMessage().matches("[a-zA-Z0-9 \\[\\]]+"), refused.getMessage());
            }
        }
        assertEquals(1, key.get());
        assertEquals(List.of("key"), root.children());
    }

    @Test
    void aNullInsideAnArrayIsNamedByItsPlace() throws Exception {
        Setting<String[]> texts = root.addKey("texts", new String[] {"a"});
        Exception refused =
                assertThrows(NullPointerException.class, () -> texts.set(new String[] {"a", null}));
        assertEquals("element 1 of the value of texts", refused.getMessage());
        refused = assertThrows(NullPointerException.class, () -> root.path("a", null, "b"));
        assertEquals("names[1]", refused.getMessage());
    }

    @Test
    void classesThatNoSettingHas() {
        for (Class<?> type : List.of(Date.class, Integer[][].class, char.class, Void.class)) {
            assertThrows(
                    SettingUnsupportedTypeRuntimeException.class, () -> root.setting("key", type));
        }
        for (Object value : List.of(new Date(), 'c', new Object[] {1}, new int[1][1])) {
            Exception refused = assertThrows(SettingUnsupportedTypeRuntimeException.class,
                    () -> root.setting("key", Object.class).set(value));
            assertTrue(refused.getMessage().startsWith("key: "), refused.getMessage());
            assertThrows(SettingUnsupportedTypeRuntimeException.class,
                    () -> root.addKey("other", value));
        }
        assertFalse(root.setting("other", Object.class).exists());
    }

    @Test
    void namesThatAreNoIdentifiers() {
        String longest = "a".repeat(63);
        assertTrue(Setting.isValidName(longest));
        for (String name : List.of("", "1a", "_a", "a.b", "a b", "\u00e9", "a\0", longest + "a")) {
            assertFalse(Setting.isValidName(name), name);
            assertThrows(IllegalArgumentException.class, () -> root.addKey(name, 1), name);
            assertThrows(IllegalArgumentException.class, () -> root.addNode(name), name);
            assertThrows(IllegalArgumentException.class, () -> root.copyTo(root, name), name);
            assertFalse(root.path(name).exists(), name);
        }
    }

    @Test
    void negativeSessions() {
        assertThrows(IllegalArgumentException.class, () -> SettingPath.sessionRoot(-1));
        assertThrows(IllegalArgumentException.class, () -> SettingPath.sessionRoot(Long.MIN_VALUE));
    }

    @Test
    void everythingBelowAClosedRoot() throws Exception {
        SettingPath node = root.addNode("node");
        node.close();
        assertTrue(node.exists(), "closing a place below the root has no effect");
        SettingPath copy = root.path();
        copy.close();
        root.close();
        try (SettingPath other = SettingPath.standalone()) {
            for (Executable call : List.<Executable>of(key::get, key::find, key::level, key::exists,
                         key::isSet, key::declaredType,
                         ()
                                 -> key.set(1),
                         key::unset,
                         ()
                                 -> key.onChanged(event -> {}),
                         node::exists, node::children, root::factoryDir,
                         ()
                                 -> root.isNode("node"),
                         ()
                                 -> root.addNode("n"),
                         ()
                                 -> root.addKey("k", 1),
                         ()
                                 -> root.delete("key"),
                         ()
                                 -> node.copyTo(other, "copy"),
                         ()
                                 -> other.copyTo(root, "copy"),
                         () -> root.addListener(new SettingListener() {}))) {
                Exception refused = assertThrows(IllegalStateException.class, call);
                assertEquals("standalone settings has been closed", refused.getMessage());
            }
        }
        root.close();
    }

    @Test
    void closingWhileOtherThreadsReadIsRefusedToThemAndHarmless() throws Exception {
        for (int round = 0; round < 50; ++round) {
            SettingPath tree = SettingPath.standalone();
            Setting<String> text = tree.addKey("text", "value");
            CountDownLatch reading = new CountDownLatch(3);
            Thread[] readers = new Thread[3];
            String[] failures = new String[readers.length];
            for (int i = 0; i < readers.length; ++i) {
                int reader = i;
                readers[i] = new Thread(() -> {
                    try {
                        while (text.get().equals("value")) reading.countDown();
                    } catch (IllegalStateException closed) {
                        failures[reader] = closed.getMessage();
                    } catch (SettingException unexpected) {
                        failures[reader] = unexpected.toString();
                    }
                });
                readers[i].start();
            }
            reading.await();
            tree.close();
            for (int i = 0; i < readers.length; ++i) {
                readers[i].join();
                assertEquals("standalone settings has been closed", failures[i]);
            }
        }
    }
}
