package com.velonix.services.settings;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.velonix.services.settings.validators.Range;
import java.io.BufferedReader;
import java.io.InputStreamReader;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import java.util.stream.IntStream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.function.Executable;
import org.junit.jupiter.api.io.TempDir;

/** Tests two processes of one user: what one has set, the other reads, and adds at once. */
class SyncTest {
    private static final int ROUNDS = 100;

    /** Sets a number for each line that it reads, and then reports it. */
    public static final class Setter {
        public static void main(String[] arguments) throws Exception {
            try (SettingPath root = SettingPath.processRoot();
                    BufferedReader requests =
                            new BufferedReader(new InputStreamReader(System.in))) {
                SettingPath node = root.getOrAddNode("sync", "values");
                Setting<Integer> set = node.getOrAddKey("number", 0);
                System.out.println("ready");
                for (String line = requests.readLine(); line != null; line = requests.readLine()) {
                    set.set(Integer.parseInt(line));
                    node.getOrAddNode("both" + line).getOrAddKey("key", line);
                    System.out.println(line);
                }
            }
        }
    }

    @Test
    void afterSyncEverythingThatAnotherProcessHasSetIsRead(@TempDir Path folder) throws Exception {
        Process other = ChildJvm.start(Setter.class, folder, ChildJvm.librariesOption());
        try (SettingPath root = SettingPath.processRoot();
                BufferedReader answers = other.inputReader()) {
            assertEquals("ready", answers.readLine());
            root.sync();
            SettingPath node = root.path("sync", "values");
            Setting<Integer> number = node.setting("number", Integer.class);
            assertEquals(0, number.get());
            for (int round = 1; round <= ROUNDS; ++round) {
                other.outputWriter().write(round + "\n");
                other.outputWriter().flush();
                // Both processes add the same node and key; one of them is first.
                Setting<String> both =
                        node.getOrAddNode("both" + round).getOrAddKey("key", "mine" + round);
                assertEquals(String.valueOf(round), answers.readLine());
                root.sync();
                assertEquals(round, number.get());
                assertTrue(List.of("mine" + round, String.valueOf(round)).contains(both.get()));
            }
            assertEquals(
                    IntStream.rangeClosed(1, ROUNDS).mapToObj(i -> "both" + i).sorted().toList(),
                    node.nodes());
        } finally {
            other.outputWriter().close();
            other.waitFor();
        }
    }

    @Test
    void aDatabaseThatIsGoneIsAFailureOfTheStoreInEveryCall() throws Exception {
        Path directory = Path.of(System.getenv("SETTINGS_USERDIR"));
        Path elsewhere = directory.resolveSibling(directory.getFileName() + ".elsewhere");
        try (SettingPath root = SettingPath.processRoot()) {
            SettingPath node = root.getOrAddNode("store");
            Setting<Integer> key = node.getOrAddNode("below").addKey(
                    "key", 1, SettingLevel.USER, Range.class, "1..9");
            Files.move(directory, elsewhere);
            try {
                fails("cannot be synchronized: Cannot read " + directory, root::sync);
                String write = "Cannot write " + directory;
                for (Executable change : List.<Executable>of(()
                                                                     -> key.set(2),
                             key::unset, key::reset,
                             ()
                                     -> node.delete("below"),
                             ()
                                     -> node.addNode("fresh"),
                             ()
                                     -> node.addKey("fresh", 1),
                             ()
                                     -> node.getOrAddKey("fresh", 1),
                             ()
                                     -> node.path("below").copyTo(node, "copy"),
                             () -> SettingKey.of("store.fresh", 1).set(root, 2))) {
                    fails(write, change);
                }
                assertThrows(SettingValidationException.class, () -> key.set(10));
                assertEquals(1, key.get());
                assertEquals(List.of("below"), node.children());
            } finally {
                Files.move(elsewhere, directory);
            }
        }
    }

    private static void fails(String reason, Executable call) {
        String message = assertThrows(SettingStoreException.class, call).getMessage();
        assertTrue(message.contains(reason), message);
    }
}
