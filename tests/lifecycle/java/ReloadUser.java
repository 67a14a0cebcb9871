import com.velonix.services.settings.Registration;
import com.velonix.services.settings.Setting;
import com.velonix.services.settings.SettingChangeEvent;
import com.velonix.services.settings.SettingLevel;
import com.velonix.services.settings.SettingListener;
import com.velonix.services.settings.SettingPath;
import com.velonix.services.settings.SettingValidationException;
import com.velonix.services.settings.validators.Range;
import java.util.concurrent.Callable;
import java.util.concurrent.atomic.AtomicInteger;

/** Uses values, validators and listeners once; the answer describes the results. */
public final class ReloadUser implements Callable<String> {
    @Override
    public String call() throws Exception {
        AtomicInteger heard = new AtomicInteger();
        try (SettingPath root = SettingPath.processRoot()) {
            SettingPath editor = root.addNode("reload");
            Setting<Integer> size =
                    editor.addKey("size", 12, SettingLevel.USER, Range.class, "1..72");
            SettingListener counter = new SettingListener() {
                @Override
                public void settingChanged(SettingChangeEvent event) {
                    heard.incrementAndGet();
                }
            };
            try (Registration registration = editor.addListener(counter)) {
                size.set(14);
                int kept = size.get();
                NativePublisher.setOnce("reload.size", kept + 1);
                if (size.get() != kept + 1)
                    throw new AssertionError("the change of a native thread was not read");
            }
            size.set(16);
            String refusal = "accepted";
            try {
                size.set(100);
            } catch (SettingValidationException e) {
                refusal = "refused";
            }
            int last = size.get();
            root.delete("reload");
            return "size " + last + ", heard " + heard + ", 100 " + refusal;
        }
    }
}
