import java.io.File;
import java.net.URL;
import java.net.URLClassLoader;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.concurrent.Callable;

/**
 * Uses the settings through a class loader that then goes away, several times. Each time the bridge
 * must be unloaded, with its statics, and the next class loader must be able to load it anew.
 * Arguments: the class path of the inner loader, and the number of rounds.
 */
public final class ReloadScenario {
    private static final long PATIENCE_MILLIS = 20_000;

    public static void main(String[] arguments) throws Exception {
        int rounds = Integer.parseInt(arguments[1]);
        for (int round = 1; round <= rounds; round++) {
            System.out.println("round " + round + ": " + use(arguments[0]));
            awaitUnload();
            System.out.println("round " + round + ": unloaded");
        }
        System.out.println("reload scenario done");
    }

    private static String use(String classPath) throws Exception {
        String[] parts = classPath.split(File.pathSeparator);
        URL[] urls = new URL[parts.length];
        for (int i = 0; i < parts.length; i++) {
            urls[i] = Path.of(parts[i]).toUri().toURL();
        }
        ClassLoader above = ClassLoader.getPlatformClassLoader();
        try (URLClassLoader loader = new URLClassLoader(urls, above)) {
            Callable<?> user = (Callable<?>) loader.loadClass("ReloadUser")
                                       .getDeclaredConstructor()
                                       .newInstance();
            return (String) user.call();
        }
    }

    private static void awaitUnload() throws Exception {
        long end = System.currentTimeMillis() + PATIENCE_MILLIS;
        while (Files.readString(Path.of("/proc/self/maps")).contains("libnativesettings.so")) {
            if (System.currentTimeMillis() > end) {
                throw new AssertionError("the bridge is still mapped");
            }
            System.gc();
            Thread.sleep(20);
        }
    }

    private ReloadScenario() {}
}
