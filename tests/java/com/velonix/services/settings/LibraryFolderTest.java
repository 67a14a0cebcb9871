package com.velonix.services.settings;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.IOException;
import java.io.InputStream;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.attribute.PosixFilePermissions;
import java.util.List;
import java.util.Map;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** Tests of the temporary folders for the libraries of the jar. */
class LibraryFolderTest {
    /** Makes a folder, prints its path, and keeps it until the process is killed. */
    public static final class Holder {
        public static void main(String[] arguments) throws Exception {
            LibraryFolder folder = LibraryFolder.make();
            folder.add("library", InputStream.nullInputStream());
            System.out.println(folder.path());
            Thread.sleep(Long.MAX_VALUE);
        }
    }

    @TempDir private Path parent;

    @BeforeEach
    void choose() {
        System.setProperty(LibraryFolder.PARENT_PROPERTY, parent.toString());
    }

    @AfterEach
    void forget() {
        System.clearProperty(LibraryFolder.PARENT_PROPERTY);
    }

    private void makeAndClose() throws IOException {
        LibraryFolder.make().close();
    }

    private Path folder(String name, String permissions) throws IOException {
        return Files.createDirectory(parent.resolve(LibraryFolder.PREFIX + name),
                PosixFilePermissions.asFileAttribute(PosixFilePermissions.fromString(permissions)));
    }

    @Test
    void aFolderIsPrivateAndRemovedWhenItIsClosed() throws Exception {
        LibraryFolder folder = LibraryFolder.make();
        assertTrue(folder.add("library", InputStream.nullInputStream()));
        assertFalse(folder.add("library", InputStream.nullInputStream()));
        assertEquals("rwx------",
                PosixFilePermissions.toString(Files.getPosixFilePermissions(folder.path())));
        folder.close();
        assertFalse(Files.exists(folder.path()));
    }

    @Test
    void foldersOfKilledProcessesAreRemovedAndThoseOfLivingOnesStay() throws Exception {
        Process process = ChildJvm.start(Holder.class, parent);
        Path held = Path.of(process.inputReader().readLine());
        try {
            makeAndClose();
            assertTrue(Files.exists(held.resolve("library")));
        } finally {
            process.destroyForcibly().waitFor();
        }
        Path withoutLock = folder("1", "rwx------");
        makeAndClose();
        assertFalse(Files.exists(held));
        assertFalse(Files.exists(withoutLock));
    }

    @Test
    void whatIsNotSuchAFolderStays() throws Exception {
        Path elsewhere = Files.move(folder("moved", "rwx------"), parent.resolve("elsewhere"));
        Path link =
                Files.createSymbolicLink(parent.resolve(LibraryFolder.PREFIX + "link"), elsewhere);
        List<Path> folders = List.of(folder("open", "rwxr-xr-x"), folder("linked", "rwx------"),
                folder("unlocked", "rwx------"), elsewhere);
        for (Path folder : folders) Files.createFile(folder.resolve("file"));
        for (Path folder : List.of(folders.get(0), elsewhere))
            Files.createFile(folder.resolve(LibraryFolder.LOCK));
        Files.createSymbolicLink(
                folders.get(1).resolve(LibraryFolder.LOCK), elsewhere.resolve(LibraryFolder.LOCK));
        makeAndClose();
        for (Path folder : folders) assertTrue(Files.exists(folder.resolve("file")), folder + "");
        assertTrue(Files.isSymbolicLink(link));
    }

    @Test
    void aParentThatCannotBeUsedIsRefusedWithTheReason() throws Exception {
        Path writtenByAll = Files.createDirectory(parent.resolve("all"));
        Files.setPosixFilePermissions(writtenByAll, PosixFilePermissions.fromString("rwxrwxrwx"));
        Map<Path, String> reasons = Map.of(writtenByAll, "others may replace files there",
                parent.resolve("missing"), "there is no such folder",
                Files.createFile(parent.resolve("file")), "Not a directory");
        for (Path unusable : reasons.keySet()) {
            System.setProperty(LibraryFolder.PARENT_PROPERTY, unusable.toString());
            String message = assertThrows(IOException.class, LibraryFolder::make).getMessage();
            for (String part : List.of("\"" + unusable + "\"", reasons.get(unusable),
                         "by -D" + LibraryFolder.PARENT_PROPERTY)) {
                assertTrue(message.contains(part), message);
            }
        }
        assertEquals(0, writtenByAll.toFile().list().length);
    }
}
