import com.velonix.services.settings.Setting;
import com.velonix.services.settings.SettingPath;

/** The example of README.md: reads and sets one value. */
public final class ReadmeExample {
    private ReadmeExample() {}

    public static void main(String[] arguments) throws Exception {
        try (SettingPath root = SettingPath.processRoot()) {
            Setting<Integer> size = root.path("editor").setting("fontSize", Integer.class);
            System.out.println("Font size " + size.get() + " from " + size.level().orElseThrow());
            size.set(14);
            System.out.println("Font size " + size.get() + " from " + size.level().orElseThrow());
        }
    }
}
