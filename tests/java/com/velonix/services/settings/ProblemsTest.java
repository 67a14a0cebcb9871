package com.velonix.services.settings;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.HashMap;
import java.util.List;
import java.util.Map;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** Tests the problems that no call reports. */
class ProblemsTest {
    /** Prints what a handler receives, unless it is to have none. */
    public static final class Starter {
        public static void main(String[] arguments) throws Exception {
            if (System.getenv("HANDLED") != null)
                SettingProblems.setHandler(Starter::handle);
            try (SettingPath root = SettingPath.processRoot()) {
                System.out.println("noticed: " + SettingProblems.noticed());
            }
        }

        private static boolean isHandling, hasCausedOne;

        /** Causes the first problem again, which must wait until this call has ended. */
        private static void handle(SettingProblem problem) {
            System.out.println((isHandling ? "nested: " : "handled: ") + problem.text());
            isHandling = true;
            Path factory = Path.of(System.getenv("SETTINGS_FACTORYDIR"));
            if (!hasCausedOne) {
                hasCausedOne = true;
                try {
                    Settings.forApplication("editor").factoryDirectory(factory).open().close();
                } catch (IOException unexpected) {
                    unexpected.printStackTrace();
                }
            }
            isHandling = false;
        }
    }

    @TempDir
    Path folder;

    @Test
    void aFileThatIsLeftOutIsReported() throws Exception {
        Path broken = Files.writeString(folder.resolve("broken.xml"), "<settings version=\"1\">");
        Map<String, String> factory = Map.of("SETTINGS_FACTORYDIR", folder.toString(),
                "SETTINGS_USERDIR", folder.resolve("user").toString());
        String logged = ChildJvm.run(Starter.class, folder, factory);
        Map<String, String> handled = new HashMap<>(factory);
        handled.put("HANDLED", "");
        String[] lines = ChildJvm.run(Starter.class, folder, handled).split("\n");

        assertEquals(3, lines.length, String.join("\n", lines));
        String problem = lines[0].substring("handled: ".length());
        assertTrue(problem.startsWith(broken + ":1:"), problem);
        assertEquals(lines[0], lines[1]);
        assertEquals("noticed: [" + problem + ", " + problem + "]", lines[2]);

        assertTrue(logged.contains("noticed: [" + problem + "]"), logged);
        assertTrue(logged.contains("WARNING: " + problem), logged);
        assertEquals(3, logged.split(problem, -1).length, logged);
    }

    @Test
    void anExceptionOfAListenerIsReported() throws Exception {
        List<SettingProblem> problems = new ArrayList<>();
        SettingProblems.setHandler(problems::add);
        RuntimeException thrown = new RuntimeException("planned");
        try (SettingPath root = SettingPath.standalone()) {
            Setting<Integer> key = root.addNode("node").addKey("key", 1);
            List<Object> heard = new ArrayList<>();
            key.onChanged(event -> {
                throw thrown;
            });
            key.onChanged(event -> heard.add(event.name()));
            key.set(2);
            assertEquals(List.of("key"), heard);
        } finally {
            SettingProblems.setHandler(null);
        }
        assertEquals(1, problems.size());
        assertEquals(thrown, problems.get(0).exception().orElseThrow());
        assertTrue(problems.get(0).text().startsWith("A listener on node.key in standalone"),
                problems.get(0).text());
    }
}
