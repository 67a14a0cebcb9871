import com.velonix.services.settings.Registration;
import com.velonix.services.settings.Setting;
import com.velonix.services.settings.SettingChangeEvent;
import com.velonix.services.settings.SettingException;
import com.velonix.services.settings.SettingLevel;
import com.velonix.services.settings.SettingListener;
import com.velonix.services.settings.SettingPath;
import com.velonix.services.settings.ValidationContext;
import com.velonix.services.settings.ValueValidator;
import java.util.Arrays;
import java.util.Optional;
import java.util.concurrent.atomic.AtomicInteger;
import java.util.function.BinaryOperator;

/**
 * One of several applications in a Java machine, each in a class loader of its own that holds the
 * Java API too. It owns a node of the process's tree, with a validator and a listener of its own.
 * It runs commands: a name and an argument, both texts, as is the answer.
 */
public final class LoaderUser implements BinaryOperator<String> {
    private static final AtomicInteger asked = new AtomicInteger();

    /** Refuses negative numbers; needs another class for 13. Every loader has one of this name. */
    public static final class Own implements ValueValidator {
        public Own(String ignored) {}

        @Override
        public Optional<String> problem(ValidationContext context) {
            asked.incrementAndGet();
            if (context.value().equals(13))
                return Late.accept();
            return (Integer) context.value() < 0 ? Optional.of("negative") : Optional.empty();
        }
    }

    /** Loaded when it is needed, if the class loader has not been closed. */
    private static final class Late {
        static Optional<String> accept() {
            return Optional.empty();
        }
    }

    /** Accepts every value. The scenario hides this class from all loaders but the first. */
    public static final class Hidden implements ValueValidator {
        public Hidden(String ignored) {}

        @Override
        public Optional<String> problem(ValidationContext context) {
            asked.incrementAndGet();
            return Optional.empty();
        }
    }

    private final AtomicInteger heard = new AtomicInteger();
    private SettingPath root;
    private Registration registration;
    private Thread worker;
    private volatile boolean working;
    private volatile String failure;

    @Override
    public String apply(String command, String argument) {
        try {
            return switch (command) {
                case "open" -> open(argument);
                case "validate" -> add(argument, Hidden.class);
                case "set" -> set(argument.split("="));
                case "leave" -> leave(root.path(argument));
                case "left" -> left(root.path(argument));
                case "publish" -> publish(argument.split("="));
                case "get" -> String.valueOf(key(argument).get());
                case "asked" -> String.valueOf(asked.getAndSet(0));
                case "heard" -> String.valueOf(heard.getAndSet(0));
                case "work" -> work(argument);
                case "close" -> close(argument);
                default -> throw new IllegalArgumentException(command);
            };
        } catch (Exception failed) {
            return failed.getClass().getSimpleName() + ": " + failed.getMessage();
        }
    }

    private String open(String node) throws Exception {
        root = SettingPath.processRoot();
        if (!root.path(node).exists())
            root.addNode(node);
        registration = root.path(node).addListener(new SettingListener() {
            @Override
            public void settingChanged(SettingChangeEvent event) {
                heard.incrementAndGet();
            }
        });
        return add(node + ".size", Own.class);
    }

    private String add(String path, Class<? extends ValueValidator> validator) throws Exception {
        String[] names = path.split("\\.");
        if (!key(path).exists())
            root.path(names[0]).addKey(names[1], 1, SettingLevel.SESSION, validator, "");
        return "added";
    }

    private Setting<Integer> key(String path) {
        String[] names = path.split("\\.");
        return root.path(names[0]).setting(names[1], Integer.class);
    }

    private String set(String[] change) throws SettingException {
        key(change[0]).set(Integer.valueOf(change[1]), SettingLevel.SESSION);
        return "set";
    }

    /** Leaves values of all sorts that nobody validates: as added, and as set again and again. */
    private static String leave(SettingPath node) throws SettingException {
        node.addKey("added", "first");
        node.addKey("untouched", false);
        node.addKey("number", 0);
        node.addKey("text", "");
        node.addKey("array", new double[0]);
        for (int i = 1; i <= 3; ++i) {
            node.setting("number", Integer.class).set(i, SettingLevel.SESSION);
            node.setting("text", String.class).set("t" + i, SettingLevel.SESSION);
            node.setting("array", double[].class).set(new double[] {i}, SettingLevel.SESSION);
        }
        return "left";
    }

    private static String left(SettingPath node) throws SettingException {
        return node.setting("added", String.class).get()
                + node.setting("untouched", Boolean.class).get()
                + node.setting("number", Integer.class).get()
                + node.setting("text", String.class).get()
                + Arrays.toString(node.setting("array", double[].class).get());
    }

    /** Sets the value by C++ code in a library of the class loader. */
    private static String publish(String[] change) {
        NativePublisher.setOnce(change[0], Integer.parseInt(change[1]));
        return "set";
    }

    /** Changes and reads the key until the application is closed. */
    private String work(String path) {
        working = true;
        worker = new Thread(() -> {
            try {
                for (int i = 0; working; i = (i + 1) % 1000) {
                    key(path).set(i, SettingLevel.SESSION);
                    key(path).get();
                }
            } catch (Throwable thrown) {
                failure = thrown.toString();
            }
        });
        worker.setDaemon(true);
        worker.start();
        return "working";
    }

    private String close(String node) throws Exception {
        working = false;
        if (worker != null)
            worker.join();
        registration.close();
        if (!node.isEmpty())
            root.delete(node);
        root.close();
        return failure == null ? "closed" : failure;
    }
}
