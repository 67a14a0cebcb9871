package soak;

import com.velonix.services.settings.Registration;
import com.velonix.services.settings.Setting;
import com.velonix.services.settings.SettingChangeEvent;
import com.velonix.services.settings.SettingLevel;
import com.velonix.services.settings.SettingListener;
import com.velonix.services.settings.SettingPath;
import com.velonix.services.settings.SettingTransaction;
import com.velonix.services.settings.SettingValidationException;
import com.velonix.services.settings.ValidationContext;
import com.velonix.services.settings.ValueValidator;
import com.velonix.services.settings.validators.Range;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.Map;
import java.util.Optional;
import java.util.Random;
import java.util.TreeMap;
import java.util.concurrent.ConcurrentLinkedQueue;
import java.util.concurrent.atomic.AtomicInteger;
import java.util.concurrent.atomic.AtomicLongArray;

/**
 * Runs all operations of the API on several threads for a given time and checks the results; then
 * compares the resources of the process with those after the first tenth of the time.
 *
 * <p>Each thread changes a node of its own, whose values it knows, and reads those of the others.
 * Registrations are closed before their entries are removed, because those on removed entries are
 * kept, as is known, until the process ends.
 *
 * <p>The argument is the time in seconds; resources are compared from 60 seconds on.
 */
public final class Soak {
    /** One piece of work of one worker. */
    private interface Work {
        void run(Worker worker) throws Exception;
    }

    private static final int THREADS = 4, PARTS = 10;
    /** In less time the JVM is still compiling, and growth means nothing. */
    private static final long JUDGED_SECONDS = 60;
    /** The allowed growth between the first and the last measurement. */
    private static final Usage BOUNDS = new Usage(32 * 1024, 2, 2, 50, 200);

    private static final Map<String, Work> WORKS = new TreeMap<>();

    static {
        WORKS.put("get and set", Worker::getAndSet);
        WORKS.put("commit", Worker::commit);
        WORKS.put("add and remove", Worker::addAndRemove);
        WORKS.put("listen", Worker::listen);
        WORKS.put("validate", Worker::validate);
        WORKS.put("load files", Worker::load);
        WORKS.put("copy", Worker::copy);
        WORKS.put("read what others change", Worker::readOthers);
        WORKS.put("forget trees", Worker::forget);
    }

    private static final ConcurrentLinkedQueue<String> FAILURES = new ConcurrentLinkedQueue<>();
    private static final AtomicLongArray TIMES = new AtomicLongArray(WORKS.size());
    private static volatile boolean stopped;

    private Soak() {}

    public static void main(String[] arguments) throws Exception {
        long seconds = Long.parseLong(arguments[0]);
        Thread[] threads = new Thread[THREADS];
        try (SettingPath process = SettingPath.processRoot()) {
            for (int i = 0; i < THREADS; ++i) threads[i] = new Thread(new Worker(process, i)::work);
            for (Thread thread : threads) thread.start();
            List<Usage> usages = new ArrayList<>();
            for (int part = 0; part < PARTS && FAILURES.isEmpty(); ++part) {
                Thread.sleep(seconds * 1000 / PARTS);
                usages.add(Usage.now());
            }
            stopped = true;
            for (Thread thread : threads) thread.join();
            if (FAILURES.isEmpty())
                report(usages.get(0), usages.get(PARTS - 1), seconds >= JUDGED_SECONDS);
        }
        FAILURES.forEach(failure -> System.out.println("FAILED: " + failure));
        System.exit(FAILURES.isEmpty() ? 0 : 1);
    }

    private static void report(Usage first, Usage last, boolean judged) {
        int work = 0;
        for (String name : WORKS.keySet())
            System.out.printf("soak, %s: %,d times%n", name, TIMES.get(work++));
        if (!judged)
            return;
        compare("kilobytes resident", first.kilobytes(), last.kilobytes(), BOUNDS.kilobytes());
        compare("threads", first.threads(), last.threads(), BOUNDS.threads());
        compare("open files", first.files(), last.files(), BOUNDS.files());
        compare("global references", first.globals(), last.globals(), BOUNDS.globals());
        compare("weak global references", first.weakGlobals(), last.weakGlobals(),
                BOUNDS.weakGlobals());
    }

    private static void compare(String resource, long first, long last, long bound) {
        System.out.printf("soak, %s: first %,d, last %,d, allowed growth %,d%n", resource, first,
                last, bound);
        if (last - first > bound)
            FAILURES.add(resource + " grew from " + first + " to " + last);
    }

    private static void check(boolean holds, String fact) {
        if (!holds)
            throw new AssertionError(fact);
    }

    /** A validator that reads another setting and refuses 13. */
    public static final class Superstition implements ValueValidator {
        public Superstition(String argument) {}

        @Override
        public Optional<String> problem(ValidationContext candidate) {
            try (SettingPath process = SettingPath.processRoot()) {
                process.path(candidate.path().get(0)).exists();
            }
            return candidate.value().equals(13) ? Optional.of("unlucky") : Optional.empty();
        }
    }

    /** The work of one thread. */
    private static final class Worker {
        private static final int KEYS = 20;

        private final SettingPath node;
        private final Random random;
        private final int number;
        private int fresh;

        Worker(SettingPath process, int number) throws Exception {
            this.number = number;
            random = new Random(number);
            node = process.addNode("worker" + number);
            for (int key = 0; key < KEYS; ++key) node.addKey("k" + key, 0);
            node.addKey("text", "");
            node.addKey("numbers", new double[0]);
            node.addKey("range", 1, SettingLevel.SESSION, Range.class, "0..10");
            node.addKey("lucky", 1, SettingLevel.SESSION, Superstition.class, "");
        }

        void work() {
            List<Work> works = List.copyOf(WORKS.values());
            try {
                while (!stopped) {
                    int next = random.nextInt(works.size());
                    works.get(next).run(this);
                    TIMES.incrementAndGet(next);
                }
            } catch (Throwable failed) {
                FAILURES.add("thread " + number + ": " + failed + " at "
                        + List.of(failed.getStackTrace()));
            }
        }

        void getAndSet() throws Exception {
            Setting<Integer> key = node.setting("k0", Integer.class);
            SettingLevel level = random.nextInt(50) == 0 ? SettingLevel.USER : SettingLevel.SESSION;
            key.set(++fresh, level);
            check(key.get(level) == fresh, "a value that was set is there");
            Setting<double[]> numbers = node.setting("numbers", double[].class);
            numbers.set(new double[random.nextInt(200)], SettingLevel.SESSION);
            Setting<String> text = node.setting("text", String.class);
            text.set("\ud83d\ude00".repeat(random.nextInt(100)), SettingLevel.SESSION);
            check(text.get().length() % 2 == 0 && text.isSet(), "a text is read as it was set");
            key.unset(level);
            check(!key.isSet(level), "a value that was unset is gone");
        }

        void commit() throws Exception {
            try (SettingTransaction transaction = new SettingTransaction()) {
                ++fresh;
                for (int key = 0; key < KEYS; ++key)
                    transaction.set(node.setting("k" + key, Integer.class), fresh);
                boolean refused = random.nextBoolean();
                if (refused)
                    transaction.set(node.setting("range", Integer.class), 11);
                check(transaction.commit(SettingLevel.SESSION).isEmpty() != refused,
                        "a commit fails when one of its changes is refused");
                int found = node.setting("k1", Integer.class).get();
                check(found == fresh != refused, "a commit is applied whole or not at all");
            }
        }

        void addAndRemove() throws Exception {
            SettingPath added = node.addNode("added");
            added.addKey("key", "text");
            AtomicInteger heard = new AtomicInteger();
            try (Registration registration = node.addListener(new Counting(heard))) {
                node.delete("added");
            }
            check(heard.get() == 1, "a removal is reported once");
            check(!added.exists(), "a removed node does not exist");
        }

        void listen() throws Exception {
            Setting<Integer> key = node.setting("k2", Integer.class);
            AtomicInteger heard = new AtomicInteger();
            try (Registration above = node.addListener(new Counting(heard));
                    Registration here = key.onChanged(event -> {
                        heard.incrementAndGet();
                        throw new IllegalStateException("of the listener");
                    })) {
                key.set(++fresh, SettingLevel.SESSION);
            }
            key.set(++fresh, SettingLevel.SESSION);
            check(heard.get() == 2,
                    "each listener is called once, and not after its registration was closed");
        }

        void validate() throws Exception {
            refused("range", 11);
            refused("lucky", 13);
            node.setting("lucky", Integer.class).set(++fresh + 13, SettingLevel.SESSION);
        }

        private void refused(String key, int value) throws Exception {
            try {
                node.setting(key, Integer.class).set(value, SettingLevel.SESSION);
                check(false, "a value that the validator refuses is refused");
            } catch (SettingValidationException expected) {
                check(node.setting(key, Integer.class).get() != value,
                        "a refused value is not stored");
            }
        }

        void load() throws Exception {
            Path file = Files.createTempFile("soak", ".xml");
            boolean damaged = random.nextBoolean();
            Files.writeString(file,
                    "<settings version=\"1\"><key name=\"k\" type=\"int\"><value>" + ++fresh
                            + (damaged ? "" : "</value></key></settings>"));
            try (SettingPath tree = SettingPath.load(file)) {
                check(!damaged && tree.setting("k", int.class).get() == fresh, "a file is read");
            } catch (IOException refused) {
                check(damaged, "a file is refused: " + refused.getMessage());
            } finally {
                Files.delete(file);
            }
        }

        void copy() throws Exception {
            try (SettingPath tree = SettingPath.standalone()) {
                SettingPath copy = node.copyTo(tree, "copy");
                check(copy.keys().equals(node.keys()), "a copy has the same keys");
            }
        }

        void readOthers() throws Exception {
            try (SettingPath process = SettingPath.processRoot()) {
                for (String other : process.nodes()) {
                    SettingPath path = process.path(other);
                    int luck = path.setting("lucky", Integer.class).get();
                    int range = path.setting("range", Integer.class).get();
                    check(luck != 13 && range <= 10, "no thread reads a refused value");
                }
            }
        }

        /** Leaves a tree to the cleaner, and now and then ends a thread that has used settings. */
        void forget() throws Exception {
            SettingPath.standalone().addKey("k", ++fresh);
            if (random.nextInt(20) != 0)
                return;
            Thread brief = new Thread(() -> node.setting("k3", Integer.class).isSet());
            brief.start();
            brief.join();
        }
    }

    private record Counting(AtomicInteger heard) implements SettingListener {
        @Override
        public void settingChanged(SettingChangeEvent event) {
            heard.incrementAndGet();
        }

        @Override
        public void settingRemoved(SettingChangeEvent event) {
            heard.incrementAndGet();
        }
    }
}
