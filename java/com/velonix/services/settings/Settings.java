package com.velonix.services.settings;

import java.io.FileNotFoundException;
import java.io.IOException;
import java.io.InputStream;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.Objects;

/**
 * The settings of an application that says where they come from. Begins with {@link
 * #forApplication}, names the sources, and ends with {@link #open}:
 *
 * <pre>{@code
 * try (SettingPath root = Settings.forApplication("drawing")
 *         .factoryResource(Drawing.class, "factory.xml")
 *         .open()) { ... }
 * }</pre>
 *
 * <p>A source that the application names is used as it is. Where it names none, that of the process
 * counts, and there the part with the application's name: a folder of this name in the directories
 * of the user, the workgroup and the factory, and this name below the prefix of a cluster. Those
 * are named by system properties or else by variables of the environment: {@code settings.userdir}
 * or {@code SETTINGS_USERDIR}, {@code settings.workgroupdir} or {@code SETTINGS_WORKGROUPDIR},
 * {@code settings.workgroup} or {@code SETTINGS_WORKGROUP}, {@code settings.factorydir} or {@code
 * SETTINGS_FACTORYDIR}. Without them, the user's settings are in a folder of that name in {@code
 * velonix/settings} of the user's configuration directory, and the other levels are empty.
 *
 * <p>For one thread at a time, until the tree is open.
 */
public final class Settings {
    private static final java.util.regex.Pattern NAME =
            java.util.regex.Pattern.compile("[A-Za-z0-9][A-Za-z0-9._-]{0,62}");

    private final String name;
    private Path userDirectory;
    private Path workgroupDirectory;
    private String workgroupCluster;
    private Path factoryDirectory;
    private final List<String> files = new ArrayList<>();
    private final List<byte[]> contents = new ArrayList<>();

    private Settings(String name) {
        this.name = name;
    }

    /**
     * Begins the settings of an application. The name separates them from those of others.
     *
     * @param name the application's name: at most 63 ASCII letters, digits, "_", "-" and ".", first
     *     a letter or a digit
     * @return the settings, to be opened
     * @throws IllegalArgumentException if the name has other characters
     */
    public static Settings forApplication(String name) {
        if (!NAME.matcher(Objects.requireNonNull(name, "name")).matches()) {
            throw new IllegalArgumentException("\"" + name
                    + "\" is not the name of an application. Use at most 63 ASCII letters, digits,"
                    + " \"_\", \"-\" and \".\", first a letter or a digit.");
        }
        return new Settings(name);
    }

    /**
     * Names the directory of the user level, which is made if it does not exist. It has this
     * application's settings only: the application's name is not added.
     *
     * @param directory the directory
     * @return this
     */
    public Settings userDirectory(Path directory) {
        userDirectory = Objects.requireNonNull(directory, "directory");
        return this;
    }

    /**
     * Names the directory with the settings files of the workgroup level.
     *
     * @param directory the directory, which must exist
     * @return this
     */
    public Settings workgroupDirectory(Path directory) {
        workgroupDirectory = Objects.requireNonNull(directory, "directory");
        workgroupCluster = null;
        return this;
    }

    /**
     * Names the cluster of the workgroup level.
     *
     * @param address the addresses of its members and the prefix, such as {@code
     *     https://a:2379,https://b:2379/drawing}
     * @return this
     */
    public Settings workgroupCluster(String address) {
        workgroupCluster = Objects.requireNonNull(address, "address");
        workgroupDirectory = null;
        return this;
    }

    /**
     * Names the directory with the settings files of the factory level, in place of single files.
     *
     * @param directory the directory, which must exist
     * @return this
     */
    public Settings factoryDirectory(Path directory) {
        factoryDirectory = Objects.requireNonNull(directory, "directory");
        files.clear();
        contents.clear();
        return this;
    }

    /**
     * Adds a settings file of the factory level, in place of a directory. A later file has the last
     * word.
     *
     * @param file the file, which must exist when the tree is opened
     * @return this
     */
    public Settings factoryFile(Path file) {
        return addFile(Objects.requireNonNull(file, "file").toFile().getPath(), null);
    }

    /**
     * Adds a settings file of the factory level that is a resource on the class path or in a
     * module, in place of a directory. A later file has the last word.
     *
     * @param owner the class whose loader has the resource
     * @param resource its name, as for {@link Class#getResourceAsStream}
     * @return this
     * @throws FileNotFoundException if there is no such resource
     * @throws IOException if it cannot be read
     */
    public Settings factoryResource(Class<?> owner, String resource) throws IOException {
        Objects.requireNonNull(owner, "owner");
        Objects.requireNonNull(resource, "resource");
        try (InputStream stream = owner.getResourceAsStream(resource)) {
            if (stream == null) {
                throw new FileNotFoundException("The factory settings \"" + resource
                        + "\" are not beside the class " + owner.getName()
                        + ", or its module does not open them");
            }
            return addFile(resource, stream.readAllBytes());
        }
    }

    /**
     * Opens the application's tree. Whoever opens the same sources again in this process has the
     * same tree, until the last one has closed it; the values of the session level end with it.
     *
     * @return the root, which the caller closes
     * @throws IOException if a source that was named is missing or cannot be read, or a factory
     *     file is wrong; the message has the file and the reason, with line and column
     */
    public SettingPath open() throws IOException {
        NativeLibrary.load();
        String[] sources = {name, nameOf(userDirectory), nameOf(workgroupDirectory),
                workgroupCluster, nameOf(factoryDirectory)};
        long[] handle = new long[1];
        String reason = NativeLane.openApplication(
                sources, files.toArray(String[] ::new), contents.toArray(byte[][] ::new), handle);
        NativeCall.check(this);
        if (reason != null)
            throw new IOException(this + " cannot be opened: " + reason);
        return SettingPath.open(handle[0], false, toString());
    }

    /** Returns a text with the application's name. */
    @Override
    public String toString() {
        return "the settings of the application \"" + name + "\"";
    }

    private Settings addFile(String file, byte[] content) {
        files.add(file);
        contents.add(content);
        factoryDirectory = null;
        return this;
    }

    private static String nameOf(Path path) {
        return path == null ? null : path.toFile().getPath();
    }
}
