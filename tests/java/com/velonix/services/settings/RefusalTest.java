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

/** Tests of arguments and states that the Java API refuses without a native call. */
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

    private static void refusesNull(Executable call) {
        Exception refused = assertThrows(NullPointerException.class, call);
        // The argument's name, not the message that the JVM makes.
        assertTrue(refused.getMessage().matches("[a-zA-Z0-9 \\[\\]]+"), refused.getMessage());
    }

    private static void refusesWhenClosed(Executable call) {
        Exception refused = assertThrows(IllegalStateException.class, call);
        assertEquals("standalone settings has been closed", refused.getMessage());
    }

    @Test
    void nullArgumentsAreRefusedByTheirNames() throws Exception {
        try (SettingTransaction transaction = new SettingTransaction();
                SettingTransaction other = SettingTransaction.on(root)) {
            refusesNull(() -> SettingPath.load(null));
            refusesNull(() -> root.path((String[]) null));
            refusesNull(() -> root.path("a", null));
            refusesNull(() -> root.setting(null, String.class));
            refusesNull(() -> root.setting("key", (Class<?>) null));
            refusesNull(() -> root.isNode(null));
            refusesNull(() -> root.delete(null));
            refusesNull(() -> root.addNode(null));
            refusesNull(() -> root.addNode("n", null, "1..2"));
            refusesNull(() -> root.addNode("n", Range.class, null));
            refusesNull(() -> root.addKey(null, 1));
            refusesNull(() -> root.addKey("k", null));
            refusesNull(() -> root.copyTo(null, "copy"));
            refusesNull(() -> root.copyTo(root, null));
            refusesNull(() -> root.addListener(null));
            refusesNull(() -> root.onChanged(null));
            refusesNull(() -> root.onAdded(null));
            refusesNull(() -> root.onRemoved(null));
            refusesNull(() -> key.get(null));
            refusesNull(() -> key.find(null));
            refusesNull(() -> key.isSet(null));
            refusesNull(() -> key.set(null));
            refusesNull(() -> key.set(1, null));
            refusesNull(() -> key.unset(null));
            refusesNull(() -> key.addListener(null));
            refusesNull(() -> Setting.isValidName(null));
            refusesNull(() -> SettingLevel.USER.overrides(null));
            refusesNull(() -> SettingTestEnvironment.setDirectories(null, Path.of("u")));
            refusesNull(() -> SettingTestEnvironment.setDirectories(Path.of("f"), null));
            refusesNull(() -> transaction.commit(null));
            refusesNull(() -> transaction.set(null, 1));
            refusesNull(() -> other.set(key, null));
            refusesNull(() -> other.set(null, 1, SettingLevel.USER));
            refusesNull(() -> other.set(key, 1, null));
            refusesNull(() -> other.set(key, null, SettingLevel.USER));
            refusesNull(() -> other.unset(null, SettingLevel.USER));
            refusesNull(() -> other.unset(key, null));
            refusesNull(() -> other.addNode(null, "n"));
            refusesNull(() -> other.addNode(root, null));
            refusesNull(() -> other.addKey(null, "k", 1));
            refusesNull(() -> other.addKey(root, "k", null));
            refusesNull(() -> other.delete(null, "k"));
            refusesNull(() -> other.delete(root, null));
            refusesNull(() -> other.move(root, "key", null, "k"));
            refusesNull(() -> other.move(root, "key", root, null));
            refusesNull(() -> SettingTransaction.on(null));
            refusesNull(() -> SettingTransaction.run(root, null, changes -> {}));
            refusesNull(() -> SettingTransaction.run(root, SettingLevel.USER, null));
            refusesNull(() -> root.move(null, root, "k"));
            refusesNull(() -> root.move("key", null, "k"));
            refusesNull(() -> key.changeType(null));
            refusesNull(() -> Settings.forApplication(null));
            refusesNull(() -> Settings.forApplication("a").factoryFile(null));
            refusesNull(() -> Settings.forApplication("a").factoryResource(null, "f"));
            refusesNull(() -> Settings.forApplication("a").userDirectory(null));
        }
        assertEquals(1, key.get());
        assertEquals(List.of("key"), root.children());
    }

    @Test
    void aNullInsideAnArrayIsRefusedWithItsIndex() throws Exception {
        Setting<String[]> texts = root.addKey("values", new String[] {"a"});
        Setting<Integer[]> numbers = root.addNode("node").addKey("values", new Integer[] {1});
        // The second set is the first one through a bound key.
        for (int use = 0; use < 2; ++use) {
            Exception text = assertThrows(
                    NullPointerException.class, () -> texts.set(new String[] {"a", null}));
            assertEquals("element 1 of the value of values", text.getMessage());
            Exception number = assertThrows(
                    NullPointerException.class, () -> numbers.set(new Integer[] {1, null}));
            assertEquals("element 1 of the value of node.values", number.getMessage());
        }
        Exception refused =
                assertThrows(NullPointerException.class, () -> root.path("a", null, "b"));
        assertEquals("names[1]", refused.getMessage());
    }

    @Test
    void classesThatNoSettingHasAreRefused() {
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
    void invalidNamesAreRefused() {
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
    void negativeSessionNumbersAreRefused() {
        assertThrows(IllegalArgumentException.class, () -> SettingPath.sessionRoot(-1));
        assertThrows(IllegalArgumentException.class, () -> SettingPath.sessionRoot(Long.MIN_VALUE));
    }

    @Test
    void everyOperationOfAClosedTreeIsRefused() throws Exception {
        SettingPath node = root.addNode("node");
        node.close();
        assertTrue(node.exists(), "closing a path below the root has no effect");
        SettingPath copy = root.path();
        copy.close();
        root.close();
        try (SettingPath other = SettingPath.standalone()) {
            refusesWhenClosed(key::get);
            refusesWhenClosed(key::find);
            refusesWhenClosed(key::level);
            refusesWhenClosed(key::exists);
            refusesWhenClosed(key::isSet);
            refusesWhenClosed(key::declaredType);
            refusesWhenClosed(() -> key.set(1));
            refusesWhenClosed(key::unset);
            refusesWhenClosed(() -> key.onChanged(event -> {}));
            refusesWhenClosed(node::exists);
            refusesWhenClosed(node::children);
            refusesWhenClosed(root::factoryDir);
            refusesWhenClosed(() -> root.isNode("node"));
            refusesWhenClosed(() -> root.addNode("n"));
            refusesWhenClosed(() -> root.addKey("k", 1));
            refusesWhenClosed(() -> root.delete("key"));
            refusesWhenClosed(() -> node.copyTo(other, "copy"));
            refusesWhenClosed(() -> other.copyTo(root, "copy"));
            refusesWhenClosed(() -> root.addListener(new SettingListener() {}));
        }
        root.close();
    }

    @Test
    void threadsThatReadDuringACloseGetAnException() throws Exception {
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
