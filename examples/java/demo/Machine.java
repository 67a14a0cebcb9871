package demo;

import com.velonix.services.settings.Registration;
import com.velonix.services.settings.Setting;
import com.velonix.services.settings.SettingException;
import com.velonix.services.settings.SettingLevel;
import com.velonix.services.settings.SettingPath;
import java.io.BufferedReader;
import java.io.IOException;
import java.io.InputStreamReader;

/**
 * A program on one machine of a workgroup that shares its settings on a cluster
 * ({@code scripts/demo.sh cluster}). It prints the font size when it starts and whenever somebody
 * has changed it, and sets each number that it reads for the whole workgroup. The argument is the
 * name of the machine.
 */
public final class Machine {
    private final String name;
    private final Setting<Integer> size;

    private Machine(String name, SettingPath root) {
        this.name = name;
        this.size = root.path("editor").setting("fontSize", Integer.class);
    }

    public static void main(String[] arguments) throws Exception {
        try (SettingPath root = SettingPath.processRoot()) {
            new Machine(arguments[0], root).run();
        }
    }

    private void run() throws IOException {
        say("started, " + described());
        try (Registration heard = size.onChanged(event -> say("heard: now " + described()));
                BufferedReader input = new BufferedReader(new InputStreamReader(System.in))) {
            for (String line = input.readLine(); line != null; line = input.readLine()) {
                set(Integer.parseInt(line));
            }
        } catch (SettingException failure) {
            say(failure.toString());
        }
    }

    private void set(int value) {
        try {
            size.set(value, SettingLevel.WORKGROUP);
            say("set " + value);
        } catch (SettingException refused) {
            say("cannot set " + value + ": " + refused.getMessage());
        }
    }

    private String described() {
        try {
            return "font size " + size.get() + " from " + size.level().orElseThrow();
        } catch (SettingException failure) {
            return failure.toString();
        }
    }

    private void say(String text) {
        System.out.println(name + ": " + text);
    }
}
