package story;

import com.velonix.services.settings.Setting;
import com.velonix.services.settings.SettingLevel;
import com.velonix.services.settings.SettingPath;
import com.velonix.services.settings.SettingValidationException;

/**
 * An application of its own, which the tests build and run in every way that the documents name.
 */
public final class Story {
    private Story() {}

    public static void main(String[] arguments) throws Exception {
        try (SettingPath root = SettingPath.processRoot()) {
            Setting<Integer> size = root.addNode("editor").addKey(
                    "fontSize", 12, SettingLevel.USER, EvenNumber.class, "");
            size.set(14);
            try {
                size.set(13);
            } catch (SettingValidationException refused) {
                System.out.println("Refused: " + refused.getMessage());
            }
            System.out.println("Font size " + size.get() + " from " + size.level().orElseThrow());
        }
    }
}
