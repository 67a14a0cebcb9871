package com.velonix.services.settings;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.nio.file.Path;
import java.util.List;
import java.util.Map;
import java.util.concurrent.ConcurrentHashMap;
import java.util.concurrent.CountDownLatch;
import java.util.regex.Matcher;
import java.util.regex.Pattern;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/**
 * Tests changes during the shutdown of the JVM: a call that returns has changed, one that throws
 * not.
 */
class ShutdownTest {
    private interface Change {
        void make(int number) throws SettingException;
    }

    /** Exits while its threads make changes, and prints how many of each kind returned. */
    public static final class Child {
        private static final long PATIENCE_NANOS = 60_000_000_000L;
        private static final int BEFORE_THE_END = 10;

        private final Map<String, Change> changes = new ConcurrentHashMap<>();
        private final Map<String, String> outcomes = new ConcurrentHashMap<>();

        public static void main(String[] arguments) throws Exception {
            new Child(SettingPath.processRoot().addNode("shutdown")).run();
        }

        private Child(SettingPath node) throws SettingException {
            Setting<Integer> set = node.addKey("set", 0);
            Setting<Integer> unset = node.addKey("unset", 0);
            Setting<Integer> committed = node.addKey("committed", 0);
            SettingPath nodes = node.addNode("nodes");
            SettingPath keys = node.addNode("keys");
            SettingPath deleted = node.addNode("deleted");
            SettingPath copies = node.addNode("copies");
            SettingPath template = node.addNode("template");
            changes.put("set", set::set);
            changes.put("unset", number -> {
                if (number % 2 == 1) {
                    unset.set(number);
                } else {
                    unset.unset();
                }
            });
            changes.put("committed", number -> commit(committed, number));
            changes.put("nodes", number -> nodes.addNode("n" + number));
            changes.put("keys", number -> keys.addKey("k" + number, number));
            changes.put("deleted", number -> {
                if (number % 2 == 1) {
                    deleted.addNode("child");
                } else {
                    deleted.delete("child");
                }
            });
            changes.put("copies", number -> template.copyTo(copies, "c" + number));
            changes.put("listening", number -> nodes.onRemoved(event -> {}));
        }

        private static void commit(Setting<Integer> key, int number) throws SettingException {
            try (SettingTransaction transaction = new SettingTransaction()) {
                transaction.set(key, number);
                List<SettingValidity> problems = transaction.commit(SettingLevel.USER);
                if (!problems.isEmpty())
                    throw new AssertionError(problems);
            }
        }

        private void run() throws InterruptedException {
            CountDownLatch underWay = new CountDownLatch(changes.size());
            List<Thread> threads =
                    changes.keySet()
                            .stream()
                            .map(name -> new Thread(() -> changeToTheEnd(name, underWay)))
                            .toList();
            threads.forEach(Thread::start);
            // The JVM waits for this hook, which waits for all threads.
            Runtime.getRuntime().addShutdownHook(new Thread(() -> report(threads)));
            underWay.await();
            System.exit(0);
        }

        private void changeToTheEnd(String name, CountDownLatch underWay) {
            long end = System.nanoTime() + PATIENCE_NANOS;
            int made = 0;
            try {
                while (System.nanoTime() < end) {
                    changes.get(name).make(made + 1);
                    if (++made == BEFORE_THE_END)
                        underWay.countDown();
                }
                outcomes.put(name, "never refused");
            } catch (IllegalStateException refused) {
                outcomes.put(name, made + " until " + refused.getMessage());
            } catch (Throwable failed) {
                outcomes.put(name, "failed with " + failed);
                underWay.countDown();
            }
        }

        private void report(List<Thread> threads) {
            try {
                for (Thread thread : threads) thread.join();
            } catch (InterruptedException unexpected) {
                throw new AssertionError(unexpected);
            }
            outcomes.forEach((name, outcome) -> System.out.println(name + ": " + outcome));
        }
    }

    @Test
    void changesThatReturnAreMadeAndThoseThatThrowAreNot(@TempDir Path folder) throws Exception {
        String text = ChildJvm.run(Child.class, folder);
        try (SettingPath root = SettingPath.processRoot()) {
            SettingPath node = root.path("shutdown");
            assertEquals(made(text, "set"), node.setting("set", Integer.class).get());
            assertEquals(made(text, "committed"), node.setting("committed", Integer.class).get());
            assertEquals(
                    made(text, "unset") % 2 == 1, node.setting("unset", Integer.class).isSet());
            assertEquals(made(text, "nodes"), node.path("nodes").nodes().size());
            assertEquals(made(text, "copies"), node.path("copies").nodes().size());
            assertEquals(made(text, "deleted") % 2, node.path("deleted").nodes().size());
            List<String> keys = node.path("keys").keys();
            assertEquals(made(text, "keys"), keys.size());
            for (String key : keys) {
                assertTrue(node.path("keys").setting(key, Integer.class).isSet(), key);
            }
        }
        made(text, "listening");
    }

    /** Returns how many changes were made before one was refused because of the shutdown. */
    private static int made(String text, String name) {
        Matcher found =
                Pattern.compile("^" + name + ": (\\d+) until .*shutting down$", Pattern.MULTILINE)
                        .matcher(text);
        assertTrue(found.find(), text);
        return Integer.parseInt(found.group(1));
    }
}
