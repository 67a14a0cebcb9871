package demo;

import com.velonix.services.settings.Setting;
import com.velonix.services.settings.SettingException;
import com.velonix.services.settings.SettingLevel;
import com.velonix.services.settings.SettingPath;
import com.velonix.util.types.UnsignedLong;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.List;
import java.util.concurrent.Callable;
import java.util.stream.Stream;

/** Reads keys in several ways, and shows the failures. */
final class Reading {
    private Reading() {}

    static void show(SettingPath root) throws SettingException {
        Setting<String> language = root.path("application").setting("language", String.class);
        System.out.println("effective:       " + language.get());
        for (SettingLevel level : SettingLevel.values()) {
            System.out.println("  at " + level + ": " + language.find(level).orElse("nothing"));
        }
        Setting<UnsignedLong> installation =
                root.path("application").setting("installation", UnsignedLong.class);
        System.out.println("unsigned:        " + installation.get());
        Setting<double[]> curve = root.path("materials", "copper").setting("curve", double[].class);
        System.out.println("primitive array: " + Arrays.toString(curve.get()));
        Setting<Integer> limit =
                root.path("solver").path("modal").setting("stepLimit", Integer.class);
        System.out.println("with a default:  " + limit.find().orElse(1000));
        System.out.println(
                "is it set:       " + limit.isSet() + ", is it there: " + limit.exists());
    }

    static void showUserLevel(SettingPath node) throws SettingException {
        for (String key : node.keys()) {
            Setting<Object> setting = node.setting(key, Object.class);
            String value = setting.find(SettingLevel.USER).map(TreePrinter::text).orElse("nothing");
            System.out.println(setting.name() + ": " + value);
        }
    }

    static void showFailures(SettingPath root, Path badFiles) throws IOException {
        List<Path> files;
        try (Stream<Path> all = Files.list(badFiles)) {
            files = all.sorted().toList();
        }
        for (Path file : files) {
            attempt("load " + file.getFileName(), () -> SettingPath.load(file));
        }
        attempt("load missing.xml", () -> SettingPath.load(badFiles.resolve("missing.xml")));
        SettingPath solver = root.path("solver");
        attempt("missing key", () -> solver.setting("thread", String.class).get());
        attempt("missing node", () -> root.path("solvers", "modal").keys());
        attempt("key as a node", () -> solver.path("threads").keys());
        attempt("another type", () -> solver.setting("threads", Integer.class).get());
        attempt("no value", () -> solver.path("modal").setting("stepLimit", Integer.class).get());
    }

    static void attempt(String action, Callable<?> call) {
        try {
            System.out.println(action + ": unexpectedly gave " + call.call());
        } catch (Exception refused) {
            String kind = refused.getClass().getSimpleName();
            System.out.println(action + ": " + kind + ": " + refused.getMessage());
        }
    }
}
