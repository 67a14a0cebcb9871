import com.velonix.services.settings.Registration;
import com.velonix.services.settings.Setting;
import com.velonix.services.settings.SettingChangeEvent;
import com.velonix.services.settings.SettingListener;
import com.velonix.services.settings.SettingPath;
import java.util.concurrent.CountDownLatch;

/**
 * A program that ends while settings are in use; the argument names the way. It must end by itself,
 * with exit code 0 and without a message of the JVM.
 */
public final class ExitScenario implements SettingListener {
    private static final int EVENTS_BEFORE_THE_END = 20;

    private final CountDownLatch heard = new CountDownLatch(EVENTS_BEFORE_THE_END);
    private final boolean exits;

    private ExitScenario(boolean exits) {
        this.exits = exits;
    }

    @Override
    public void settingChanged(SettingChangeEvent event) {
        heard.countDown();
        if (exits && heard.getCount() == 0) {
            System.exit(0);
        }
    }

    public static void main(String[] arguments) throws Exception {
        String way = arguments[0];
        SettingPath root = SettingPath.processRoot();
        SettingPath node = root.addNode("exit" + ProcessHandle.current().pid());
        Setting<Integer> key = node.addKey("key", 0);
        ExitScenario listener = new ExitScenario(way.equals("exit-in-listener"));
        Registration registration = node.addListener(listener);
        switch (way) {
            case "active-listeners":
                for (int i = 1; i <= EVENTS_BEFORE_THE_END; i++) {
                    key.set(i);
                }
                break;
            case "native-thread-publishing":
                NativePublisher.setForEver(String.join(".", node.names()) + ".key");
                break;
            case "exit-in-listener":
                for (int i = 1; i <= EVENTS_BEFORE_THE_END; i++) {
                    key.set(i);
                }
                throw new AssertionError("System.exit returned");
            default:
                throw new IllegalArgumentException(way);
        }
        listener.heard.await();
        System.out.println("the end of " + registration);
    }
}
