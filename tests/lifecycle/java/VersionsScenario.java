import java.lang.reflect.InvocationTargetException;
import java.net.URL;
import java.net.URLClassLoader;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.zip.ZipEntry;
import java.util.zip.ZipInputStream;

/**
 * A second class loader with another version of the jar is refused with a reason. Arguments:
 * the jar, and the folder to unpack another version to.
 */
public final class VersionsScenario {
    private static final String VERSION = "SETTINGSHOST_", OTHER_VERSION = VERSION + "X";

    public static void main(String[] arguments) throws Exception {
        Path jar = Path.of(arguments[0]), other = Path.of(arguments[1]);
        unpackInAnotherVersion(jar, other);
        openTree(jar);
        try {
            openTree(other);
            throw new AssertionError("two versions have been loaded");
        } catch (InvocationTargetException refused) {
            String message = refused.getCause().toString();
            if (!message.contains("`" + OTHER_VERSION)
                    || !message.contains("There are two versions of nativesettings.jar"))
                throw new AssertionError(message);
        }
        openTree(jar);
        System.out.println("versions scenario done");
    }

    private static void openTree(Path classes) throws Exception {
        URL[] where = {classes.toUri().toURL()};
        Class<?> path = new URLClassLoader(where, ClassLoader.getPlatformClassLoader())
                                .loadClass("com.velonix.services.settings.SettingPath");
        ((AutoCloseable) path.getMethod("standalone").invoke(null)).close();
    }

    private static void unpackInAnotherVersion(Path jar, Path folder) throws Exception {
        try (ZipInputStream entries = new ZipInputStream(Files.newInputStream(jar))) {
            for (ZipEntry entry; (entry = entries.getNextEntry()) != null;) {
                if (entry.isDirectory())
                    continue;
                Path file = folder.resolve(entry.getName());
                Files.createDirectories(file.getParent());
                byte[] content = entries.readAllBytes();
                Files.write(file,
                        entry.getName().endsWith(".so") ? inAnotherVersion(content) : content);
            }
        }
    }

    /** Replaces the version by one of the same length, in an encoding that keeps every byte. */
    private static byte[] inAnotherVersion(byte[] library) {
        return new String(library, StandardCharsets.ISO_8859_1)
                .replaceAll(VERSION + ".", OTHER_VERSION)
                .getBytes(StandardCharsets.ISO_8859_1);
    }

    private VersionsScenario() {}
}
