import com.velonix.services.settings.SettingChangeEvent;
import com.velonix.services.settings.SettingListener;
import com.velonix.services.settings.SettingPath;
import java.util.concurrent.atomic.AtomicInteger;

/** The Java half of the program that embeds a JVM. */
public final class EmbeddedListener implements SettingListener {
    private static final AtomicInteger HEARD = new AtomicInteger();

    @Override
    public void settingChanged(SettingChangeEvent event) {
        HEARD.incrementAndGet();
    }

    /** Listens to the process's node "embedded" from now on. */
    public static void start() throws Exception {
        SettingPath.processRoot().path("embedded").addListener(new EmbeddedListener());
    }

    /** Returns how many events have been received. */
    public static int heard() {
        return HEARD.get();
    }

    private EmbeddedListener() {}
}
