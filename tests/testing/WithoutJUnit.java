import com.velonix.services.settings.SettingKey;
import com.velonix.services.settings.SettingPath;
import com.velonix.services.settings.testing.TestSettings;

/** A test of a program that uses no JUnit. */
final class WithoutJUnit {
    public static void main(String[] arguments) throws Exception {
        SettingKey<Integer> fontSize = SettingKey.of("editor.fontSize", 12);
        try (SettingPath root = TestSettings.freshProcessRoot()) {
            fontSize.set(root, 14);
            System.out.println("Font size " + fontSize.get(root));
        }
        try (SettingPath root = TestSettings.freshProcessRoot()) {
            System.out.println("empty: " + root.children());
        }
    }
}
