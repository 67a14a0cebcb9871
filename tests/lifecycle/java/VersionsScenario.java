import java.lang.reflect.InvocationTargetException;
import java.net.URL;
import java.net.URLClassLoader;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import java.util.regex.Pattern;
import java.util.zip.ZipEntry;
import java.util.zip.ZipInputStream;

/**
 * A second class loader with another version of the jar is refused with a reason, whether the name
 * of the host differs or only its symbols. Arguments: the jar, and the folder to unpack other
 * versions to.
 */
public final class VersionsScenario {
    public static void main(String[] arguments) throws Exception {
        Path jar = Path.of(arguments[0]), folder = Path.of(arguments[1]);
        openTree(jar);
        for (String version : List.of("SETTINGSHOST_", "libsettingshost.so.")) {
            Path other = folder.resolve(version);
            unpackInAnotherVersion(jar, version, other);
            try {
                openTree(other);
                throw new AssertionError("two versions have been loaded");
            } catch (InvocationTargetException refused) {
                String message = refused.getCause().toString();
                if (!message.contains("There are two versions of nativesettings.jar"))
                    throw new AssertionError(message);
            }
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

    /** Unpacks the jar with X in place of the first digit of the version. */
    private static void unpackInAnotherVersion(Path jar, String version, Path folder)
            throws Exception {
        try (ZipInputStream entries = new ZipInputStream(Files.newInputStream(jar))) {
            for (ZipEntry entry; (entry = entries.getNextEntry()) != null;) {
                if (entry.isDirectory())
                    continue;
                Path file = folder.resolve(changed(entry.getName(), version));
                Files.createDirectories(file.getParent());
                // An encoding that keeps every byte.
                String content = new String(entries.readAllBytes(), StandardCharsets.ISO_8859_1);
                Files.write(file, changed(content, version).getBytes(StandardCharsets.ISO_8859_1));
            }
        }
    }

    private static String changed(String text, String version) {
        return text.replaceAll(Pattern.quote(version) + "[0-9]", version + "X");
    }

    private VersionsScenario() {}
}
