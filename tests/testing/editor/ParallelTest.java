package editor;

import static org.junit.jupiter.api.Assertions.assertEquals;

import com.velonix.services.settings.SettingPath;
import com.velonix.services.settings.testing.FreshTree;
import java.util.List;
import java.util.concurrent.CyclicBarrier;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.Test;

/** Two tests that run at the same time, each on a tree of its own. */
@FreshTree
class ParallelTest {
    private static final CyclicBarrier BOTH = new CyclicBarrier(2);

    @Test
    void one(SettingPath root) throws Exception {
        meetTheOther(root, 1);
    }

    @Test
    void another(SettingPath root) throws Exception {
        meetTheOther(root, 2);
    }

    @AfterEach
    void hasTheTreeOfTheTest(SettingPath root) throws Exception {
        assertEquals(List.of("own"), root.keys());
    }

    private static void meetTheOther(SettingPath root, int value) throws Exception {
        root.addKey("own", value);
        BOTH.await();
        assertEquals(value, root.setting("own", Integer.class).get());
        BOTH.await();
    }
}
