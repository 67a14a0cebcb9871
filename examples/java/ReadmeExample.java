import com.velonix.services.settings.SettingKey;
import com.velonix.services.settings.SettingPath;

/** The first example of README.md: declares, reads and sets one setting. */
public final class ReadmeExample {
    static final SettingKey<Integer> FONT_SIZE = SettingKey.of("editor.fontSize", 12);

    private ReadmeExample() {}

    public static void main(String[] arguments) throws Exception {
        try (SettingPath root = SettingPath.processRoot()) {
            System.out.println("Font size " + FONT_SIZE.get(root));
            FONT_SIZE.set(root, 14);
            System.out.println("Font size " + FONT_SIZE.get(root) + " from "
                    + FONT_SIZE.in(root).level().orElseThrow());
        }
    }
}
