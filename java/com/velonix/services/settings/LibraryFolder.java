package com.velonix.services.settings;

import java.io.IOException;
import java.io.InputStream;
import java.io.OutputStream;
import java.nio.channels.FileChannel;
import java.nio.channels.OverlappingFileLockException;
import java.nio.channels.SeekableByteChannel;
import java.nio.file.DirectoryIteratorException;
import java.nio.file.DirectoryStream;
import java.nio.file.FileAlreadyExistsException;
import java.nio.file.FileSystemException;
import java.nio.file.Files;
import java.nio.file.LinkOption;
import java.nio.file.NoSuchFileException;
import java.nio.file.Path;
import java.nio.file.SecureDirectoryStream;
import java.nio.file.StandardOpenOption;
import java.nio.file.attribute.FileAttribute;
import java.nio.file.attribute.PosixFileAttributeView;
import java.nio.file.attribute.PosixFileAttributes;
import java.nio.file.attribute.PosixFilePermission;
import java.nio.file.attribute.PosixFilePermissions;
import java.nio.file.attribute.UserPrincipal;
import java.util.Set;

/**
 * A folder of this process alone for the libraries of the jar, which is removed when it is closed:
 * a library that is mapped needs its file no longer. It is made in the folder that the property
 * {@value #PARENT_PROPERTY} names, else in that for temporary files, which other users may share.
 *
 * <p>Its process holds a lock on a file in it. So a folder whose lock is free belonged to a process
 * that was killed; making a folder removes those of the same user. A process may have one folder at
 * a time, because closing a file gives up all locks of the process on it.
 */
final class LibraryFolder implements AutoCloseable {
    static final String PARENT_PROPERTY = "com.velonix.services.settings.extraction.path";

    static final String PREFIX = "nativesettings-", LOCK = "lock";
    private static final Set<PosixFilePermission> PRIVATE =
            PosixFilePermissions.fromString("rwx------");
    private static final FileAttribute<?> AS_PRIVATE =
            PosixFilePermissions.asFileAttribute(PRIVATE);

    /** The bits of a file's mode: group or others may write; only owners may rename and delete. */
    private static final int WRITTEN_BY_OTHERS = 0022, STICKY = 01000;

    private final Path path;
    private final FileChannel lock;

    private LibraryFolder(Path path, FileChannel lock) {
        this.path = path;
        this.lock = lock;
    }

    /**
     * Makes a folder, and removes those that killed processes have left beside it.
     *
     * @throws IOException if there can be no folder that is safe from other users. One with a
     *     sticky bit is taken to be the system's
     */
    static LibraryFolder make() throws IOException {
        Path parent = parent();
        try {
            while (true) {
                Path path = Files.createTempDirectory(parent, PREFIX, AS_PRIVATE);
                FileChannel lock;
                try {
                    checkOnlyOwnersReplace(parent, Files.getAttribute(path, "unix:uid"));
                    lock = lock(path.resolve(LOCK));
                } catch (IOException failed) {
                    remove(path);
                    throw failed;
                }
                if (lock != null) {
                    removeAbandoned(parent, path);
                    return new LibraryFolder(path, lock);
                }
            }
        } catch (IOException failed) {
            throw cannotUse(parent, reasonOf(failed));
        }
    }

    /** Throws an IOException if another user but the superuser may replace files in the folder. */
    private static void checkOnlyOwnersReplace(Path parent, Object self) throws IOException {
        int mode = (Integer) Files.getAttribute(parent, "unix:mode");
        if ((mode & STICKY) != 0)
            return;
        Object owner = Files.getAttribute(parent, "unix:uid");
        if ((mode & WRITTEN_BY_OTHERS) != 0 || !owner.equals(0) && !owner.equals(self))
            throw new IOException("others may replace files there (it has no sticky bit)");
    }

    private static void remove(Path folder) throws IOException {
        Files.deleteIfExists(folder.resolve(LOCK));
        Files.delete(folder);
    }

    Path path() {
        return path;
    }

    /**
     * Copies a file to the folder.
     *
     * @return false if it is there already
     */
    boolean add(String name, InputStream content) throws IOException {
        Path file = path.resolve(name);
        try {
            Files.createFile(file, AS_PRIVATE);
        } catch (FileAlreadyExistsException there) {
            return false;
        }
        try (OutputStream copy = Files.newOutputStream(file)) {
            content.transferTo(copy);
        } catch (IOException failed) {
            throw cannotUse(path.getParent(), reasonOf(failed));
        }
        return true;
    }

    /**
     * Throws an IOException if a file of the folder cannot be loaded because of its file system.
     */
    void checkLoadable(String name) throws IOException {
        if (!Files.isExecutable(path.resolve(name)))
            throw cannotUse(path.getParent(), "it may not hold programs (it is mounted noexec)");
    }

    /** Removes the folder. If that fails, a later run of any program with the jar tries again. */
    @Override
    public void close() {
        try (lock; DirectoryStream<Path> files = Files.newDirectoryStream(path)) {
            for (Path file : files) {
                if (!file.endsWith(LOCK))
                    Files.delete(file);
            }
            Files.delete(path.resolve(LOCK));
            Files.delete(path);
        } catch (IOException | DirectoryIteratorException leftBehind) {
            // The libraries are loaded, so the caller has what it needs.
        }
    }

    private static IOException cannotUse(Path parent, String reason) {
        return new IOException("its libraries cannot be copied to the folder \"" + parent
                + "\": " + reason + ". Name another folder by -D" + PARENT_PROPERTY + "=FOLDER.");
    }

    private static String reasonOf(IOException failed) {
        if (failed instanceof NoSuchFileException)
            return "there is no such folder";
        if (failed instanceof FileSystemException file && file.getReason() != null)
            return file.getReason();
        return failed.getMessage();
    }

    private static Path parent() {
        String chosen = System.getProperty(PARENT_PROPERTY);
        return Path.of(chosen != null ? chosen : System.getProperty("java.io.tmpdir"))
                .toAbsolutePath();
    }

    /** Returns null if another process has taken the new folder for an abandoned one. */
    private static FileChannel lock(Path file) throws IOException {
        FileChannel channel;
        try {
            channel = FileChannel.open(file,
                    Set.of(StandardOpenOption.WRITE, StandardOpenOption.CREATE_NEW), AS_PRIVATE);
        } catch (NoSuchFileException removed) {
            return null;
        }
        boolean locked = false;
        try {
            locked = channel.tryLock() != null && Files.exists(file);
            return locked ? channel : null;
        } finally {
            if (!locked)
                channel.close();
        }
    }

    private static void removeAbandoned(Path parent, Path own) {
        try (DirectoryStream<Path> entries = Files.newDirectoryStream(parent)) {
            if (!(entries instanceof SecureDirectoryStream<Path> folders))
                return;
            UserPrincipal owner = Files.getOwner(own);
            for (Path entry : folders) {
                Path name = entry.getFileName();
                if (name.toString().startsWith(PREFIX) && !name.equals(own.getFileName()))
                    removeIfAbandoned(folders, name, owner);
            }
        } catch (IOException | DirectoryIteratorException unreadable) {
            // Tidying up is not worth a failure.
        }
    }

    /** Works on the opened folder, never on its name, which may come to stand for another one. */
    private static void removeIfAbandoned(
            SecureDirectoryStream<Path> parent, Path name, UserPrincipal owner) {
        try (SecureDirectoryStream<Path> folder =
                        parent.newDirectoryStream(name, LinkOption.NOFOLLOW_LINKS)) {
            PosixFileAttributes attributes =
                    folder.getFileAttributeView(PosixFileAttributeView.class).readAttributes();
            if (!attributes.owner().equals(owner) || !attributes.permissions().equals(PRIVATE))
                return;
            if (emptyIfUnlocked(folder))
                parent.deleteDirectory(name);
        } catch (IOException | DirectoryIteratorException | OverlappingFileLockException inUse) {
            // Somebody else's, or in use.
        }
    }

    private static boolean emptyIfUnlocked(SecureDirectoryStream<Path> folder) throws IOException {
        Path lock = Path.of(LOCK);
        try (SeekableByteChannel channel = folder.newByteChannel(
                     lock, Set.of(StandardOpenOption.WRITE, LinkOption.NOFOLLOW_LINKS))) {
            if (!(channel instanceof FileChannel file) || file.tryLock() == null)
                return false;
            for (Path entry : folder) {
                if (!entry.endsWith(LOCK))
                    folder.deleteFile(entry.getFileName());
            }
            folder.deleteFile(lock);
        } catch (NoSuchFileException withoutLock) {
            // Empty, or not one of ours: only an empty folder can be removed.
        }
        return true;
    }
}
