package com.velonix.services.settings;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.velonix.services.settings.validators.Range;
import java.nio.file.Path;
import java.util.List;
import java.util.concurrent.CountDownLatch;
import java.util.concurrent.atomic.AtomicInteger;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** Tests reading and changing while the JVM runs its shutdown hooks. */
class ShutdownTest {
    /** Exits, and saves its state in a hook while another thread goes on setting. */
    public static final class Saver {
        public static void main(String[] arguments) throws Exception {
            SettingPath root = SettingPath.processRoot();
            SettingPath node = root.addNode("shutdown");
            node.addKey("set", 0);
            node.addKey("unset", 0);
            node.addKey("committed", 0);
            node.addKey("ranged", 5, SettingLevel.USER, Range.class, "1..9");
            node.addNode("deleted");
            node.addNode("template").addKey("copied", 7);
            Setting<Integer> counted = node.addKey("counted", 0);
            AtomicInteger count = new AtomicInteger();
            CountDownLatch counting = new CountDownLatch(10);
            Thread counter = new Thread(() -> countUntilClosed(counted, count, counting));
            counter.start();
            Runtime.getRuntime().addShutdownHook(new Thread(() -> {
                try {
                    int before = count.get();
                    save(node);
                    while (count.get() < before + 10) Thread.sleep(1);
                    root.close();
                    counter.join();
                    System.out.println("saved, counted " + count.get());
                } catch (Throwable failed) {
                    failed.printStackTrace(System.out);
                }
            }));
            counting.await();
            System.exit(0);
        }

        private static void countUntilClosed(
                Setting<Integer> counted, AtomicInteger count, CountDownLatch counting) {
            try {
                while (true) {
                    counted.set(count.get() + 1);
                    count.incrementAndGet();
                    counting.countDown();
                }
            } catch (IllegalStateException closed) {
                // The count has every value that was set.
            } catch (SettingException failed) {
                failed.printStackTrace(System.out);
            }
        }

        private static void save(SettingPath node) throws Exception {
            Setting<Integer> set = node.setting("set", Integer.class);
            AtomicInteger heard = new AtomicInteger();
            try (Registration listening = set.onChanged(event -> heard.incrementAndGet())) {
                for (int value = 0; value < 3; ++value) set.set(value, SettingLevel.SESSION);
                set.set(1);
            }
            node.setting("unset", Integer.class).unset();
            try (SettingTransaction transaction = new SettingTransaction()) {
                transaction.set(node.setting("committed", Integer.class), 2);
                check(transaction.commit(SettingLevel.USER).isEmpty());
            }
            try {
                node.setting("ranged", Integer.class).set(10);
                check(false);
            } catch (SettingValidationException outOfRange) {
                node.setting("ranged", Integer.class).set(9);
            }
            node.delete("deleted");
            node.path("template").copyTo(node, "copy");
            node.addKey("added", "text");
            try (SettingPath tree = SettingPath.standalone()) {
                check(tree.addKey("key", 3).get() == 3);
            }
            check(heard.get() == 4 && set.get() == 2);
        }

        private static void check(boolean holds) {
            if (!holds)
                throw new AssertionError();
        }
    }

    /** Uses the settings for the first time in a hook. */
    public static final class LateUser {
        public static void main(String[] arguments) {
            Runtime.getRuntime().addShutdownHook(new Thread(() -> {
                try (SettingPath root = SettingPath.processRoot()) {
                    root.addKey("late", 1);
                } catch (Throwable failed) {
                    failed.printStackTrace(System.out);
                }
            }));
        }
    }

    @Test
    void aShutdownHookCanSave(@TempDir Path folder) throws Exception {
        String text = ChildJvm.run(Saver.class, folder);
        String expected = "saved, counted ";
        assertTrue(text.startsWith(expected), text);
        int counted = Integer.parseInt(text.substring(expected.length()).strip());
        try (SettingPath root = SettingPath.processRoot()) {
            SettingPath node = root.path("shutdown");
            assertEquals(1, node.setting("set", Integer.class).get());
            assertFalse(node.setting("unset", Integer.class).isSet());
            assertEquals(2, node.setting("committed", Integer.class).get());
            assertEquals(9, node.setting("ranged", Integer.class).get());
            assertEquals(List.of("copy", "template"), node.nodes());
            assertEquals(7, node.path("copy").setting("copied", Integer.class).get());
            assertEquals("text", node.setting("added", String.class).get());
            assertEquals(counted, node.setting("counted", Integer.class).get());
        }
    }

    @Test
    void theFirstUseMayBeInAShutdownHook(@TempDir Path folder) throws Exception {
        assertEquals("", ChildJvm.run(LateUser.class, folder));
        try (SettingPath root = SettingPath.processRoot()) {
            assertEquals(1, root.setting("late", Integer.class).get());
        }
    }
}
