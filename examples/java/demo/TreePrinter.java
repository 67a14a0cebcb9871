package demo;

import com.velonix.services.settings.Setting;
import com.velonix.services.settings.SettingException;
import com.velonix.services.settings.SettingLevel;
import com.velonix.services.settings.SettingPath;
import java.util.Arrays;
import java.util.Locale;
import java.util.Optional;

/** Prints a tree: each key with its type, its effective value and the level of that value. */
final class TreePrinter {
    private TreePrinter() {}

    static void print(SettingPath node) throws SettingException {
        String indent = "  ".repeat(node.names().size());
        for (String name : node.children()) {
            if (node.isNode(name)) {
                System.out.println(indent + name);
                print(node.path(name));
            } else {
                System.out.println(indent + line(node.setting(name, Object.class)));
            }
        }
    }

    static String line(Setting<Object> key) throws SettingException {
        String type = key.declaredType().map(Class::getSimpleName).orElse("no type");
        Optional<SettingLevel> level = key.level();
        String from = level.map(l -> "(" + l.name().toLowerCase(Locale.ROOT) + ")").orElse("");
        return String.format(Locale.ROOT, "%-18s %-17s %s %s", key.name(), type,
                key.find().map(TreePrinter::text).orElse("no value"), from);
    }

    static String text(Object value) {
        if (value instanceof Object[])
            return Arrays.toString((Object[]) value);
        return value instanceof String ? "\"" + value + "\"" : value.toString();
    }
}
