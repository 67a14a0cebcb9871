package soak;

import java.lang.management.ManagementFactory;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.regex.Matcher;
import java.util.regex.Pattern;
import java.util.stream.Stream;
import javax.management.ObjectName;

/**
 * The resources of the process after a garbage collection.
 *
 * @param kilobytes the resident memory
 * @param threads the number of threads, Java's and native ones
 * @param files the number of open file descriptors
 * @param globals the number of global JNI references
 * @param weakGlobals the number of weak global JNI references
 */
record Usage(long kilobytes, long threads, long files, long globals, long weakGlobals) {
    private static final Pattern REFERENCES =
            Pattern.compile("JNI global refs: (\\d+), weak refs: (\\d+)");
    private static final int COLLECTIONS = 3;
    private static final long CLEANING_MILLIS = 200;

    static Usage now() throws Exception {
        for (int i = 0; i < COLLECTIONS; ++i) {
            System.gc();
            // Gives the cleaner's thread time to close unreferenced objects.
            Thread.sleep(CLEANING_MILLIS);
        }
        Object dump = ManagementFactory.getPlatformMBeanServer().invoke(
                new ObjectName("com.sun.management:type=DiagnosticCommand"), "threadPrint",
                new Object[] {new String[0]}, new String[] {String[].class.getName()});
        Matcher references = REFERENCES.matcher((String) dump);
        if (!references.find())
            throw new IllegalStateException("The thread dump has no line with the JNI references");
        long files;
        try (Stream<Path> open = Files.list(Path.of("/proc/self/fd"))) {
            files = open.count();
        }
        return new Usage(status("VmRSS"), status("Threads"), files,
                Long.parseLong(references.group(1)), Long.parseLong(references.group(2)));
    }

    private static long status(String name) throws Exception {
        for (String line : Files.readAllLines(Path.of("/proc/self/status"))) {
            if (line.startsWith(name + ':'))
                return Long.parseLong(line.replaceAll("\\D", ""));
        }
        throw new IllegalStateException("no " + name);
    }
}
