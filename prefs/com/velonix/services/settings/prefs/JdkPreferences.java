package com.velonix.services.settings.prefs;

import java.io.IOException;
import java.io.InputStream;
import java.nio.charset.StandardCharsets;
import java.nio.file.DirectoryStream;
import java.nio.file.Files;
import java.nio.file.LinkOption;
import java.nio.file.Path;
import java.util.Base64;
import javax.xml.stream.XMLInputFactory;
import javax.xml.stream.XMLStreamException;
import javax.xml.stream.XMLStreamReader;

/**
 * Reads the user's preferences that the JDK's own back end has stored, and changes nothing of them.
 *
 * <p>Each node is a directory, with its keys in the file {@code prefs.xml}: elements {@code entry}
 * with the attributes {@code key} and {@code value}. A directory has the name of its node if that
 * has only characters of ASCII, and none of {@code / . _}; otherwise {@code _} and then the name in
 * UTF-16, in a base64 of the JDK's own.
 */
final class JdkPreferences {
    /** The digits of that base64, in the order of their values. */
    private static final String DIGITS =
            "!\"#$%&'(),-.:;<>@[]^`_{|}~abcdefghijklmnopqrstuvwxyz0123456789+?";

    private static final String STANDARD_DIGITS =
            "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

    private static final System.Logger LOG =
            System.getLogger(JdkPreferences.class.getPackageName());

    private final Path directory;

    private JdkPreferences(Path directory) {
        this.directory = directory;
    }

    /** Returns those of the user of this process, where the JDK looks for them. */
    static JdkPreferences ofUser() {
        String home = System.getProperty("java.util.prefs.userRoot", System.getProperty("user.home"));
        return new JdkPreferences(Path.of(home, ".java", ".userPrefs"));
    }

    boolean exist() {
        return Files.isDirectory(directory);
    }

    /** Adds all nodes and keys that the user does not have. Logs a file that cannot be read. */
    void copyTo(SettingsPreferences root) {
        copy(directory, root);
    }

    @Override
    public String toString() {
        return directory.toString();
    }

    private static void copy(Path directory, SettingsPreferences node) {
        Path file = directory.resolve("prefs.xml");
        try {
            if (Files.exists(file))
                copyKeys(file, node);
        } catch (IOException | XMLStreamException | RuntimeException broken) {
            log(file, broken);
        }
        try (DirectoryStream<Path> below = Files.newDirectoryStream(
                     directory, path -> Files.isDirectory(path, LinkOption.NOFOLLOW_LINKS))) {
            for (Path child : below) {
                try {
                    String name = nameOf(child.getFileName().toString());
                    copy(child, (SettingsPreferences) node.node(name));
                } catch (IllegalArgumentException wrongName) {
                    log(child, wrongName);
                }
            }
        } catch (IOException | RuntimeException unreadable) {
            log(directory, unreadable);
        }
    }

    private static void copyKeys(Path file, SettingsPreferences node)
            throws IOException, XMLStreamException {
        XMLInputFactory factory = XMLInputFactory.newDefaultFactory();
        // The files name a DTD that is not needed, at an address that nobody shall ask.
        factory.setProperty(XMLInputFactory.SUPPORT_DTD, false);
        try (InputStream stream = Files.newInputStream(file)) {
            XMLStreamReader reader = factory.createXMLStreamReader(stream);
            while (reader.hasNext()) {
                if (reader.next() != XMLStreamReader.START_ELEMENT
                        || !reader.getLocalName().equals("entry"))
                    continue;
                String key = reader.getAttributeValue(null, "key");
                String value = reader.getAttributeValue(null, "value");
                if (key == null || value == null)
                    throw new XMLStreamException("an entry has no key or no value");
                node.putIfNotSet(key, value);
            }
        }
    }

    private static String nameOf(String directory) {
        if (!directory.startsWith("_"))
            return directory;
        StringBuilder standard = new StringBuilder();
        for (char digit : directory.substring(1).toCharArray()) {
            int value = DIGITS.indexOf(digit);
            standard.append(value < 0 ? digit : STANDARD_DIGITS.charAt(value));
        }
        byte[] name = Base64.getDecoder().decode(standard.toString());
        return new String(name, StandardCharsets.UTF_16BE);
    }

    private static void log(Path path, Exception failure) {
        String reason = String.valueOf(failure.getMessage()).replaceAll("\\s+", " ");
        LOG.log(System.Logger.Level.WARNING, "Not imported: " + path + ": " + reason);
    }
}
