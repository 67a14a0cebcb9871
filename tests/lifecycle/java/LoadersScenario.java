import java.io.File;
import java.lang.ref.WeakReference;
import java.net.URL;
import java.net.URLClassLoader;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.Callable;
import java.util.function.BinaryOperator;
import java.util.stream.Stream;

/**
 * Several class loaders of one Java machine hold the jar, each with a bridge of its own, and share
 * the process's tree. They are closed in any order while others work. Arguments: the class path of
 * the loaders, and how many come and go at last.
 */
public final class LoadersScenario {
    private static final long PATIENCE_MILLIS = 30_000;

    /** An application. Once it is closed, nothing here refers to its loader any more. */
    private static final class Application {
        private final WeakReference<ClassLoader> loader;
        private BinaryOperator<String> user;

        Application(String classPath, boolean hidesOne) throws Exception {
            List<URL> urls = new ArrayList<>();
            for (String part : classPath.split(File.pathSeparator)) {
                urls.add(Path.of(part).toUri().toURL());
            }
            ClassLoader made = new URLClassLoader(
                    urls.toArray(new URL[0]), ClassLoader.getPlatformClassLoader()) {
                @Override
                protected Class<?> findClass(String name) throws ClassNotFoundException {
                    if (hidesOne && name.equals("LoaderUser$Hidden"))
                        throw new ClassNotFoundException(name);
                    return super.findClass(name);
                }
            };
            @SuppressWarnings("unchecked")
            Class<BinaryOperator<String>> type =
                    (Class<BinaryOperator<String>>) made.loadClass("LoaderUser");
            user = type.getDeclaredConstructor().newInstance();
            loader = new WeakReference<>(made);
        }

        String tell(String command, String argument) {
            return user.apply(command, argument);
        }

        void expect(String answer, String command, String argument) {
            String given = tell(command, argument);
            if (!given.equals(answer) && !(answer.endsWith("*")
                        && given.contains(answer.substring(0, answer.length() - 1))))
                throw new AssertionError(command + " " + argument + ": " + given);
        }

        /** Closes the application, with or without its node, and its class loader; keeps both. */
        void stop(String node) throws Exception {
            expect("closed", "close", node);
            ((URLClassLoader) loader.get()).close();
        }

        /** Waits until its class loader and its bridge are gone. */
        void vanish() throws Exception {
            long before = bridges();
            user = null;
            await("the loader is collected", () -> loader.get() == null);
            await("the bridge is unmapped", () -> bridges() == before - 1);
        }

        void end(String node) throws Exception {
            stop(node);
            vanish();
        }
    }

    public static void main(String[] arguments) throws Exception {
        String classPath = arguments[0];
        int rounds = Integer.parseInt(arguments[1]);
        Application first = new Application(classPath, false);
        Application second = new Application(classPath, true);
        Application third = new Application(classPath, true);
        first.expect("added", "open", "one");
        second.expect("added", "open", "two");
        third.expect("added", "open", "three");
        check("three bridges, one host", bridges() == 3 && hosts() == 1);

        everyoneHasOwnClasses(first, second, third);
        third.expect("working", "work", "three.size");
        first.end("");
        afterAnEnd(second, third);
        Application fourth = new Application(classPath, false);
        fourth.expect("added", "open", "four");
        fourth.tell("asked", "");
        second.expect("set", "set", "one.hidden=7");
        fourth.expect("1", "asked", "");
        third.end("three");
        second.expect("set", "set", "four.size=8");
        fourth.expect("2", "heard", "");  // with its own
        fourth.stop("");  // the class that its validator needs for 13 can no longer be loaded
        second.expect("set", "set", "four.size=13");
        fourth.vanish();
        System.out.println("any order done");

        second.expect("working", "work", "two.size");
        comeAndGo(classPath, 3);
        String before = resources();
        comeAndGo(classPath, rounds);
        await("as before: " + before, () -> resources().equals(before));
        second.end("two");
        check("no bridge, one host", bridges() == 0 && hosts() == 1);
        System.out.println("loaders scenario done");
    }

    private static void everyoneHasOwnClasses(
            Application first, Application second, Application third) {
        first.expect("added", "validate", "one.hidden");
        for (Application each : List.of(first, second, third)) {
            each.tell("asked", "");
            each.tell("heard", "");
        }
        second.expect("set", "set", "one.size=5");
        second.expect("SettingValidationException: negative*", "set", "one.size=-5");
        first.expect("2", "asked", "");
        second.expect("0", "asked", "");
        second.expect("set", "set", "one.hidden=5");
        first.expect("1", "asked", "");
        first.expect("2", "heard", "");
        second.expect("0", "heard", "");
        third.expect("set", "set", "two.size=5");
        first.expect("0", "asked", "");
        second.expect("1", "asked", "");
        first.expect("set", "publish", "one.size=4");
        third.expect("4", "get", "one.size");
        first.expect("left", "leave", "one");
    }

    /** The first one has gone, with the class of one validator; all know the class of the other. */
    private static void afterAnEnd(Application second, Application third) {
        second.expect("4", "get", "one.size");
        second.expect("5", "get", "one.hidden");
        second.expect("firstfalse3t3[3.0]", "left", "one");
        second.expect("there is no class LoaderUser$Hidden*", "set", "one.hidden=6");
        second.tell("asked", "");
        second.expect("set", "set", "one.size=6");
        second.expect("SettingValidationException: negative*", "set", "one.size=-6");
        second.expect("2", "asked", "");
    }

    private static void comeAndGo(String classPath, int rounds) throws Exception {
        for (int round = 0; round < rounds; round++) {
            Application one = new Application(classPath, false);
            one.expect("added", "open", "guest");
            one.expect("working", "work", "guest.size");
            one.expect("set", "set", "two.size=7");
            one.end("guest");
        }
    }

    /** Describes the resources of the process that must not grow. */
    private static String resources() throws Exception {
        Path temporary = Path.of(System.getProperty("java.io.tmpdir"));
        return "libraries " + count(mapped(".so")) + ", descriptors "
                + count(Files.list(Path.of("/proc/self/fd"))) + ", threads "
                + count(Files.list(Path.of("/proc/self/task"))) + ", temporary files "
                + count(Files.list(temporary).filter(file -> !isOfTheJvm(file)));
    }

    private static boolean isOfTheJvm(Path file) {
        return file.getFileName().toString().startsWith("hsperf");
    }

    private static long count(Stream<?> things) {
        try (things) {
            return things.count();
        }
    }

    private static Stream<String> mapped(String name) throws Exception {
        return Files.readString(Path.of("/proc/self/maps"), StandardCharsets.ISO_8859_1)
                .lines()
                .filter(line -> line.contains(name))
                .map(line -> line.substring(line.indexOf('/')))
                .distinct();
    }

    private static long bridges() throws Exception {
        return count(mapped("libnativesettings.so"));
    }

    private static long hosts() throws Exception {
        return count(mapped("libsettingshost.so"));
    }

    private static void check(String what, boolean holds) throws Exception {
        if (!holds)
            throw new AssertionError("not so: " + what + "; " + mapped("settings").toList());
    }

    private static void await(String what, Callable<Boolean> state) throws Exception {
        long end = System.currentTimeMillis() + PATIENCE_MILLIS;
        while (!state.call()) {
            if (System.currentTimeMillis() > end)
                throw new AssertionError("not so: " + what + "; now " + resources());
            System.gc();
            Thread.sleep(10);
        }
    }

    private LoadersScenario() {}
}
