package editor;

import static org.junit.jupiter.api.Assertions.assertEquals;

import com.velonix.services.settings.testing.FreshProcessRoot;
import org.junit.jupiter.api.RepeatedTest;

/** Uses the settings of the process at the same time as EditorTest, unless they take turns. */
class OtherEditorTest {
    @FreshProcessRoot
    @RepeatedTest(10)
    void zoomBeginsAtTheDefault() throws Exception {
        for (int size = 13; size < 100; ++size)
            assertEquals(size, Editor.zoomIn());
    }
}
