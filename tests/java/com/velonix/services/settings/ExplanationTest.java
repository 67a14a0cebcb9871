package com.velonix.services.settings;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.Optional;
import java.util.Random;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** Tests of descriptions and explanations of keys. */
class ExplanationTest {
    @TempDir Path directory;

    private SettingPath load(String content) throws Exception {
        return SettingPath.load(Files.writeString(
                directory.resolve("file.xml"), "<settings version='1'>" + content + "</settings>"));
    }

    @Test
    void aDescriptionHasTheTextsOfTheFileAndTheConstraint() throws Exception {
        try (SettingPath root = load("<node name='n' title='N\u00E4\uD83D\uDE00'>"
                     + "<key name='k' type='int' unit='pt' deprecated='Old' replaced-by='n.l'"
                     + " replaces='m.k'><description>All of it</description><choices>"
                     + "<choice value='1' label='One'/></choices></key>"
                     + "<key name='l' type='int'><range min='1'/></key></node>")) {
            SettingPath node = root.path("n");
            assertEquals("N\u00E4\uD83D\uDE00", node.describe().title());
            SettingDescription.Choice one = new SettingDescription.Choice("1", "One");
            SettingDescription expected = new SettingDescription(
                    "", "All of it", "pt", "Old", "n.l", "m.k", "choices", List.of(one));
            Setting<Integer> key = node.setting("k", Integer.class);
            assertEquals(expected, key.describe());
            assertEquals(expected, key.explain().description());
            assertEquals("range 1..", node.setting("l", Integer.class).describe().constraint());
            Setting<Integer> none = node.setting("none", Integer.class);
            assertThrows(SettingNotFoundException.class, none::describe);
            assertThrows(SettingNotFoundException.class, none::explain);
            Setting<Integer> noKey = root.setting("n", Integer.class);
            assertThrows(SettingNotFoundException.class, noKey::explain);
        }
    }

    /** Trees with values at random levels, below random locks. */
    @Test
    void theExplanationIsThatOfTheValueThatIsRead() throws Exception {
        Random random = new Random(16);
        for (int times = 0; times < 300; ++times) {
            List<SettingLevel> set = new ArrayList<>();
            String values = "";
            for (SettingLevel level : SettingLevel.values()) {
                if (random.nextBoolean()) {
                    set.add(level);
                    values += "<value level='" + level.levelName() + "'><item>" + level.ordinal()
                            + "</item></value>";
                }
            }
            boolean isLocked = random.nextInt(3) == 0;
            String lock = isLocked ? " locked='true'" : "";
            boolean isOnNode = random.nextBoolean();
            String content = "<node name='n'" + (isOnNode ? lock : "")
                    + "><key name='k' type='int[]'" + (isOnNode ? "" : lock) + ">" + values
                    + "</key></node>";
            try (SettingPath root = load(content)) {
                check(root.path("n").setting("k", Integer[].class), set, isLocked, content);
            }
        }
    }

    private static void check(Setting<Integer[]> key, List<SettingLevel> set, boolean isLocked,
            String content) throws Exception {
        SettingExplanation explanation = key.explain();
        Optional<Integer> read = key.find().map(array -> array[0]);
        assertEquals(read,
                explanation.inEffect().map(level -> ((Integer[]) level.value().orElseThrow())[0]),
                content);
        assertEquals(key.level(), explanation.inEffect().map(SettingExplanation.Level::level));
        assertEquals(key.lock(), explanation.lock());
        assertEquals(isLocked, explanation.lock().isPresent());
        assertEquals("int[]", explanation.type());
        String text = explanation.toString();
        assertEquals(read.isPresent(), text.contains(" (in effect)"), text);
        assertEquals(List.of(SettingLevel.values()),
                explanation.levels().stream().map(SettingExplanation.Level::level).toList());
        for (SettingExplanation.Level level : explanation.levels()) {
            assertEquals(set.contains(level.level()), level.value().isPresent(), text);
            assertEquals(level.value().isPresent(), !level.source().isEmpty(), text);
            assertEquals(isLocked && level.level() != SettingLevel.FACTORY, level.isLocked(), text);
            assertEquals(!level.isLocked(), key.isWritable(level.level()), text);
            assertEquals(level.value().isPresent(), key.isSet(level.level()), text);
            assertTrue(text.contains("  " + level.level().levelName() + ": "), text);
        }
    }
}
