package soak;

import java.lang.management.ManagementFactory;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.regex.Matcher;
import java.util.regex.Pattern;
import java.util.stream.Stream;
import javax.management.ObjectName;

/**
 * What the process holds, after garbage has been collected.
 *
 * @param kilobytes of memory that is resident
 * @param threads of Java and of native code
 * @param files descriptors that are open
 * @param globals global references of native code to Java objects
 * @param weakGlobals the same, weak ones
 */
record Usage(long kilobytes, long threads, long files, long globals, long weakGlobals) {
    private static final Pattern REFERENCES =
            Pattern.compile("JNI global refs: (\\d+), weak refs: (\\d+)");
    private static final int COLLECTIONS = 3;
    private static final long CLEANING_MILLIS = 200;

    static Usage now() throws Exception {
        for (int i = 0; i < COLLECTIONS; ++i) {
            System.gc();
            // What was forgotten is closed by another thread.
            Thread.sleep(CLEANING_MILLIS);
        }
        Object dump = ManagementFactory.getPlatformMBeanServer().invoke(
                new ObjectName("com.sun.management:type=DiagnosticCommand"), "threadPrint",
                new Object[] {new String[0]}, new String[] {String[].class.getName()});
        Matcher references = REFERENCES.matcher((String) dump);
        if (!references.find())
            throw new IllegalStateException("the virtual machine does not tell its references");
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
