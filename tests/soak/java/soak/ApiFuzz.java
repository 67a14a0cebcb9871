package soak;

import com.velonix.services.settings.Registration;
import com.velonix.services.settings.Setting;
import com.velonix.services.settings.SettingException;
import com.velonix.services.settings.SettingLevel;
import com.velonix.services.settings.SettingPath;
import com.velonix.services.settings.SettingTransaction;
import com.velonix.services.settings.SettingUnsupportedTypeRuntimeException;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import java.util.concurrent.ConcurrentLinkedQueue;

/**
 * Calls the public API with random hostile arguments, on one thread and on several, and fails if
 * any but the documented exceptions are thrown. Each round has a seed, which is printed if the
 * round fails. The seed repeats the round, exactly if the round has one thread.
 *
 * <p>Arguments: seconds to run; or seconds, seed and threads of one round.
 */
public final class ApiFuzz {
    /** One call of the API. */
    private interface Call {
        void make() throws Exception;
    }

    /** A call, with the exceptions that it may throw beside those that every call may. */
    private record Operation(Call call, List<Class<? extends Exception>> allowed) {}

    private static final int CALLS = 400, THREADS = 4, KEPT = 24;

    private final Map<String, Operation> operations = new LinkedHashMap<>();
    private final List<SettingPath> paths = new ArrayList<>();
    private final List<Setting<?>> settings = new ArrayList<>();
    private final List<Registration> registrations = new ArrayList<>();
    private final List<SettingTransaction> transactions = new ArrayList<>();
    private final SettingPath[] roots;
    private final Hostile random;
    private final Path file;

    private ApiFuzz(long seed, SettingPath[] roots, Path file) {
        this.random = new Hostile(seed);
        this.roots = roots;
        this.file = file;
        declare();
    }

    public static void main(String[] arguments) throws Exception {
        long end = System.nanoTime() + Long.parseLong(arguments[0]) * 1_000_000_000;
        boolean again = arguments.length > 1;
        long seed = again ? Long.parseLong(arguments[1]) : System.nanoTime();
        int threads = again ? Integer.parseInt(arguments[2]) : 1;
        System.out.println("first seed " + seed);
        long rounds = 0;
        do {
            List<String> failures = round(seed, threads);
            if (!failures.isEmpty()) {
                failures.forEach(System.out::println);
                System.out.printf("FAILED: repeat with the arguments 1 %d %d%n", seed, threads);
                System.exit(1);
            }
            ++rounds;
            ++seed;
            threads = again ? threads : 1 + (int) (rounds % 2) * (THREADS - 1);
        } while (!again && System.nanoTime() < end);
        System.out.printf("API fuzzing: %,d rounds of %d calls on 1 and %d threads, 0 failures%n",
                rounds, CALLS, THREADS);
    }

    /** Runs one round and returns its failures. */
    private static List<String> round(long seed, int threads) throws Exception {
        ConcurrentLinkedQueue<String> failures = new ConcurrentLinkedQueue<>();
        SettingPath[] roots = {
                SettingPath.standalone(), SettingPath.standalone(), SettingPath.processRoot()};
        Thread[] workers = new Thread[threads];
        for (int i = 0; i < threads; ++i) {
            Path file = Files.createTempFile("fuzz", ".xml");
            ApiFuzz fuzz = new ApiFuzz(seed * THREADS + i, roots, file);
            workers[i] = new Thread(() -> {
                for (int call = 0; call < CALLS && failures.isEmpty(); ++call) {
                    fuzz.callOne(failures);
                }
                fuzz.clean(failures);
            });
        }
        for (Thread worker : workers) worker.start();
        for (Thread worker : workers) worker.join();
        // The next round must not find settings of this one in the process.
        try (SettingPath process = SettingPath.processRoot()) {
            for (String child : process.children()) process.delete(child);
        }
        for (SettingPath root : roots) root.close();
        return List.copyOf(failures);
    }

    private void callOne(ConcurrentLinkedQueue<String> failures) {
        List<String> names = List.copyOf(operations.keySet());
        String name = names.get(random.number(names.size()));
        Operation operation = operations.get(name);
        try {
            random.gaveNull();
            operation.call().make();
        } catch (Throwable thrown) {
            if (!isDocumented(thrown, operation.allowed()))
                failures.add(name + ": " + thrown + " at " + List.of(thrown.getStackTrace()));
        }
    }

    private boolean isDocumented(Throwable thrown, List<Class<? extends Exception>> allowed) {
        if (thrown instanceof NullPointerException)
            return random.gaveNull() && !isMadeByJvm(thrown.getMessage());
        if (thrown instanceof IllegalStateException)
            return String.valueOf(thrown.getMessage()).matches(".*(closed|in use).*");
        return allowed.stream().anyMatch(each -> each.isInstance(thrown));
    }

    /** Tells whether the JVM made the message; the API's own are names of arguments. */
    private static boolean isMadeByJvm(String message) {
        return message == null || message.startsWith("Cannot ");
    }

    private void clean(ConcurrentLinkedQueue<String> failures) {
        try {
            registrations.forEach(Registration::close);
            transactions.forEach(SettingTransaction::close);
            Files.delete(file);
        } catch (IOException | RuntimeException failed) {
            failures.add("closing: " + failed);
        }
    }

    @SafeVarargs
    @SuppressWarnings("varargs")
    private void operation(String name, Call call, Class<? extends Exception>... allowed) {
        operations.put(name, new Operation(call, List.of(allowed)));
    }

    private SettingPath addValidatedNode() throws SettingException {
        return path().addNode(random.name(), random.validator(), random.string());
    }

    private Setting<?> addKey() throws SettingException {
        return path().addKey(random.name(), random.value());
    }

    private Setting<?> addValidatedKey() throws SettingException {
        return path().addKey(random.name(), random.value(), random.level(), random.validator(),
                random.string());
    }

    private void copy() throws SettingException {
        path().copyTo(path(), random.name());
    }

    private void declare() {
        Class<SettingException> service = SettingException.class;
        Class<SettingUnsupportedTypeRuntimeException> type =
                SettingUnsupportedTypeRuntimeException.class;
        Class<IllegalArgumentException> argument = IllegalArgumentException.class;
        operation("path", () -> keep(paths, path().path(random.names())));
        operation("setting",
                () -> keep(settings, path().setting(random.name(), random.type())), type);
        operation("names", () -> path().names());
        operation("nodes", () -> path().nodes(), service);
        operation("keys", () -> path().keys(), service);
        operation("children", () -> path().children(), service);
        operation("exists", () -> path().exists());
        operation("isNode", () -> path().isNode(random.string()), service);
        operation("addNode", () -> keep(paths, path().addNode(random.name())), service, argument);
        operation("addNode validated", () -> keep(paths, addValidatedNode()), service, argument);
        operation("addKey", () -> keep(settings, addKey()), service, argument, type);
        operation("addKey validated",
                () -> keep(settings, addValidatedKey()), service, argument, type);
        operation("delete", () -> path().delete(random.name()), service);
        operation("copyTo", this::copy, service, argument, UnsupportedOperationException.class);
        operation("listen to a node",
                () -> keep(registrations, path().addListener(random.listener(root()))), service);
        operation("factoryDir", () -> path().factoryDir());
        operation("compare paths", () -> path().equals(path()));
        operation("text of a path", () -> (path().toString() + path().hashCode()).length());
        operation("get", () -> setting().get(), service, type);
        operation("get at a level", () -> setting().get(random.level()), service, type);
        operation("find", () -> setting().find(), service, type);
        operation("find at a level", () -> setting().find(random.level()), service, type);
        operation("level", () -> setting().level(), service);
        operation("declaredType", () -> setting().declaredType(), service);
        operation("isSet", () -> setting().isSet(random.level()));
        operation("exists as a key", () -> existsAndIsSet(setting()));
        operation("set", () -> set(setting(), random.value(), random.level()), service, type);
        operation("unset", () -> setting().unset(random.level()), service);
        operation("listen to a key",
                () -> keep(registrations, setting().addListener(random.listener(root()))), service);
        operation("act on changes",
                () -> keep(registrations, setting().onChanged(random.action())), service);
        operation("act on additions",
                () -> keep(registrations, path().onAdded(random.action())), service);
        operation("act on removals",
                () -> keep(registrations, path().onRemoved(random.action())), service);
        operation("stop listening", () -> {
            if (!registrations.isEmpty())
                registrations.get(random.number(registrations.size())).close();
        });
        operation("isValidName", () -> Setting.isValidName(random.string()));
        operation("compare levels", () -> SettingLevel.USER.overrides(random.level()));
        operation("begin", () -> keep(transactions, new SettingTransaction()));
        operation("record",
                () -> record(transaction(), setting(), random.value()), service, type, argument);
        operation("commit", () -> transaction().commit(random.level()));
        operation("validate", () -> transaction().validate());
        operation("close a transaction", () -> transaction().close());
        operation("close a tree", () -> {
            if (random.oneIn(10))
                root().close();
        });
        operation("open a session",
                () -> SettingPath.sessionRoot(random.anyLong()).close(), argument);
        operation("open a tree", () -> keep(paths, SettingPath.standalone()));
        operation("load", () -> {
            Files.writeString(file, random.fileText());
            keep(paths, SettingPath.load(random.oneIn(20) ? file.getParent() : file));
        }, IOException.class);
    }

    private <T> void keep(List<T> all, T one) {
        if (all.size() < KEPT) {
            all.add(one);
        } else {
            T dropped = all.set(random.number(KEPT), one);
            // A cleaner closes an unreferenced tree; these must be closed here.
            if (dropped instanceof Registration registration)
                registration.close();
            if (dropped instanceof SettingTransaction transaction)
                transaction.close();
        }
    }

    private SettingPath root() {
        return roots[random.number(roots.length)];
    }

    private SettingPath path() {
        return paths.isEmpty() || random.oneIn(3) ? root() : paths.get(random.number(paths.size()));
    }

    private Setting<?> setting() {
        return settings.isEmpty() ? root().setting("k", Object.class)
                                  : settings.get(random.number(settings.size()));
    }

    private SettingTransaction transaction() {
        if (transactions.isEmpty())
            transactions.add(new SettingTransaction());
        return transactions.get(random.number(transactions.size()));
    }

    private static boolean existsAndIsSet(Setting<?> setting) {
        return setting.exists() && setting.isSet();
    }

    /** Sets a value of any class, also of another one than the setting's. */
    @SuppressWarnings("unchecked")
    private static void set(Setting<?> setting, Object value, SettingLevel level)
            throws SettingException {
        ((Setting<Object>) setting).set(value, level);
    }

    @SuppressWarnings("unchecked")
    private static void record(SettingTransaction transaction, Setting<?> setting, Object value)
            throws SettingException {
        transaction.set((Setting<Object>) setting, value);
    }
}
