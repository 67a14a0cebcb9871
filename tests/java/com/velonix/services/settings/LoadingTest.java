package com.velonix.services.settings;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.IOException;
import java.lang.ref.WeakReference;
import java.lang.reflect.Method;
import java.net.URL;
import java.net.URLClassLoader;
import java.nio.ByteBuffer;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.regex.Pattern;
import java.util.stream.Stream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** Tests of loading and unloading the native libraries, and of the shutdown hook. */
class LoadingTest {
    /** The program of the child processes. */
    public static final class Child {
        public static void main(String[] arguments) throws Exception {
            // From many threads at once, through different classes.
            List<Thread> threads = new ArrayList<>();
            for (int i = 0; i < 8; ++i) {
                Runnable tree = () -> SettingPath.standalone().close();
                threads.add(new Thread(i % 2 == 0 ? tree : SettingLevel::defaultLevel));
            }
            threads.forEach(Thread::start);
            for (Thread thread : threads) thread.join();
            try (SettingPath root = SettingPath.standalone()) {
                System.out.println("value " + root.addKey("key", 42).get());
            } catch (UnsatisfiedLinkError failed) {
                System.out.println(failed.getMessage());
            }
        }
    }

    /** Uses the API in a class loader of its own and drops the loader. */
    public static final class Unloading {
        public static void main(String[] arguments) throws Exception {
            String bundle = System.getProperty("test.bundle");
            WeakReference<ClassLoader> loader = use(Path.of(bundle).toUri().toURL());
            boolean gone = Garbage.collects(loader);
            boolean unmapped = Garbage.collectedUntil(() -> !isMapped());
            System.out.println("loader gone " + gone + ", unmapped " + unmapped);
        }

        private static WeakReference<ClassLoader> use(URL bundle) throws Exception {
            try (URLClassLoader loader = new URLClassLoader(new URL[] {bundle}, null)) {
                Class<?> path = loader.loadClass(SettingPath.class.getName());
                Object root = path.getMethod("standalone").invoke(null);
                path.getMethod("addKey", String.class, Object.class).invoke(root, "key", 42);
                path.getMethod("close").invoke(root);
                return new WeakReference<>(loader);
            }
        }

        private static boolean isMapped() throws IOException {
            return Files.readString(Path.of("/proc/self/maps")).contains("libnativesettings");
        }
    }

    private static final String BUNDLE = System.getProperty("test.bundle");

    private static List<Path> filesIn(Path folder) throws IOException {
        try (Stream<Path> files = Files.list(folder)) {
            return files.filter(file -> !file.getFileName().toString().startsWith("hsperf"))
                    .toList();
        }
    }

    @Test
    void theJarLoadsItsLibrariesAndLeavesNoFilesBehind(@TempDir Path folder) throws Exception {
        assertEquals("value 42\n",
                ChildJvm.run(Child.class, folder, BUNDLE, "-Djava.library.path=/nowhere"));
        assertEquals(List.of(), filesIn(folder));
    }

    @Test
    void aPropertyNamesTheDirectoryOfTheLibraries(@TempDir Path folder) throws Exception {
        String directory = System.getProperty("java.library.path");
        assertEquals("value 42\n",
                ChildJvm.run(Child.class, folder, ChildJvm.apiClasses(),
                        "-Djava.library.path=/nowhere",
                        "-D" + LibrarySearch.DIRECTORY_PROPERTY + "=" + directory));
    }

    @Test
    void theMessageOfAFailureHasEveryAttempt(@TempDir Path folder) throws Exception {
        String text = ChildJvm.run(Child.class, folder, ChildJvm.apiClasses(),
                "-Djava.library.path=/nowhere",
                "-D" + LibrarySearch.DIRECTORY_PROPERTY + "=/not/there");
        for (String part : List.of("/not/there/libsettingshost.so", "java.library.path=/nowhere",
                     "from the jar: it has no /native/linux-")) {
            assertTrue(text.contains(part), text);
        }
        assertEquals(List.of(), filesIn(folder));
    }

    @Test
    void onAnotherPlatformTheMessageNamesBoth(@TempDir Path folder) throws Exception {
        String text = ChildJvm.run(
                Child.class, folder, BUNDLE, "-Djava.library.path=/nowhere", "-Dos.arch=sparc");
        assertTrue(text.contains("it has libraries for " + LibraryFiles.PLATFORM
                           + ", and this JVM runs on linux-sparc"),
                text);
    }

    @Test
    void librariesWithAnotherInterfaceAreRefused() {
        assertNull(LibrarySearch.versionProblem(LibraryFiles.INTERFACE + ".9"));
        String problem = LibrarySearch.versionProblem(LibraryFiles.INTERFACE + "9.0");
        assertTrue(problem.contains("of version " + LibraryFiles.INTERFACE + "9.0"), problem);
    }

    @Test
    void theJarTellsItsVersionAndCommit(@TempDir Path folder) throws Exception {
        String text =
                ChildJvm.run(SettingsVersion.class, folder, BUNDLE, "-Djava.library.path=/nowhere");
        String version = Pattern.quote(LibraryFiles.VERSION);
        Pattern expected = Pattern.compile("nativesettings " + version
                + ", commit (unknown|[0-9a-f]{40}(-dirty)?)\\nnative libraries " + version + "\\n");
        // A leak checker adds lines.
        assertTrue(expected.matcher(text).lookingAt(), text);
    }

    @Test
    void theLibraryIsUnmappedWithItsClassLoader(@TempDir Path folder) throws Exception {
        String text = ChildJvm.run(
                Unloading.class, folder, ChildJvm.apiClasses(), "-Dtest.bundle=" + BUNDLE);
        // A leak checker adds lines about the objects that the library leaks on purpose.
        assertTrue(text.startsWith("loader gone true, unmapped true\n"), text);
    }

    @Test
    void theShutdownHookKeepsNoClassLoaderAlive() throws Exception {
        WeakReference<ClassLoader> loader = installInLoaderOfItsOwn();
        assertTrue(Garbage.collects(loader));
    }

    private static WeakReference<ClassLoader> installInLoaderOfItsOwn() throws Exception {
        URL classes = Path.of(ChildJvm.apiClasses()).toUri().toURL();
        ClassLoader own = Thread.currentThread().getContextClassLoader();
        try (URLClassLoader loader = new URLClassLoader(new URL[] {classes}, null)) {
            Thread.currentThread().setContextClassLoader(loader);
            Method install = Class.forName(VmShutdown.class.getName(), true, loader)
                                     .getDeclaredMethod("install", ByteBuffer.class);
            install.setAccessible(true);
            install.invoke(null, ByteBuffer.allocateDirect(1));
            return new WeakReference<>(loader);
        } finally {
            Thread.currentThread().setContextClassLoader(own);
        }
    }
}
