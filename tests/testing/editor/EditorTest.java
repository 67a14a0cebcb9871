package editor;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.velonix.services.settings.Setting;
import com.velonix.services.settings.SettingLevel;
import com.velonix.services.settings.SettingPath;
import com.velonix.services.settings.SettingTransaction;
import com.velonix.services.settings.testing.FreshProcessRoot;
import java.io.File;
import java.util.List;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.RepeatedTest;
import org.junit.jupiter.api.Test;

/** Tests of code that asks for the settings of the process. */
@FreshProcessRoot
class EditorTest {
    private SettingPath given;

    @BeforeEach
    void presetTheFactoryLevel(SettingPath root) throws Exception {
        given = root;
        assertEquals(List.of(), root.children());
        Editor.FONT_SIZE.set(root, 20);
        Setting<Integer> size = root.path("editor").setting("fontSize", Integer.class);
        size.set(30, SettingLevel.FACTORY);
        size.unset();
    }

    @Test
    void zoomBeginsAtTheFactorySize() throws Exception {
        assertEquals(31, Editor.zoomIn());
    }

    /** Others run at the same time; each begins with the value of the factory level. */
    @RepeatedTest(10)
    void zoomOfAnotherTestIsGone(SettingPath root) throws Exception {
        assertTrue(root == given, "one root for a test");
        assertEquals(31, Editor.zoomIn());
        assertEquals(32, Editor.zoomIn());
    }

    @Test
    void everyLevelAndTransactionsWorkInMemory(SettingPath root) throws Exception {
        Setting<Integer> size = root.path("editor").setting("fontSize", Integer.class);
        try (SettingTransaction changes = new SettingTransaction()) {
            changes.set(size, 40);
            for (SettingLevel level : SettingLevel.values())
                assertEquals(List.of(), changes.commit(level));
        }
        assertEquals(4, size.values().size());
        assertFalse(new File(System.getenv("SETTINGS_USERDIR")).exists(), "a database was made");
    }
}
