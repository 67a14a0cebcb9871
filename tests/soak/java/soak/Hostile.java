package soak;

import com.velonix.services.settings.SettingChangeEvent;
import com.velonix.services.settings.SettingException;
import com.velonix.services.settings.SettingLevel;
import com.velonix.services.settings.SettingListener;
import com.velonix.services.settings.SettingPath;
import com.velonix.services.settings.ValidationContext;
import com.velonix.services.settings.ValueValidator;
import com.velonix.services.settings.validators.Choice;
import com.velonix.services.settings.validators.Length;
import com.velonix.services.settings.validators.Pattern;
import com.velonix.services.settings.validators.Range;
import com.velonix.util.types.UnsignedByte;
import com.velonix.util.types.UnsignedInteger;
import com.velonix.util.types.UnsignedLong;
import com.velonix.util.types.UnsignedShort;
import java.lang.reflect.Array;
import java.util.Arrays;
import java.util.Date;
import java.util.List;
import java.util.Optional;
import java.util.Random;
import java.util.concurrent.atomic.AtomicInteger;
import java.util.function.Consumer;

/**
 * Makes invalid and valid arguments for calls of the API, at random from a seed. For one thread.
 */
final class Hostile {
    private static final int HUGE = 20_000;
    private static final String[] NAMES = {"a", "b", "c", "n", "k", "key0"};
    private static final String[] STRINGS = {"", " ", "a.b", ".", "1a", "_", "a\0b", "\0", "\ud800",
            "\udc00x", "\ud83d\ude00", "\uffff", "caf\u00e9", "%s%n%d", "\r\n", "a".repeat(63),
            "a".repeat(64), "x".repeat(HUGE), "\udbff".repeat(HUGE), "1..5", "..", "[",
            "java.lang"};
    private static final Object[] SCALARS = {"", "text", "\ud800", "a\0b", "x".repeat(HUGE), true,
            (byte) -128, (short) 1, Integer.MIN_VALUE, 3, Long.MAX_VALUE, Float.NaN, -0.0f,
            Double.NEGATIVE_INFINITY, Double.NaN, 0.1, UnsignedByte.MAX_VALUE,
            UnsignedShort.MAX_VALUE, UnsignedInteger.MAX_VALUE, UnsignedLong.MAX_VALUE};
    private static final Object[] OTHERS = {new Date(0), 'c', List.of(1), new Object(),
            new Object[] {1}, new int[1][1], new char[] {'c'}, new Integer[] {1, null},
            Thread.class, new String[] {null}, new Number[] {1}};
    private static final List<Class<?>> TYPES = List.of(String.class, Boolean.class, Integer.class,
            int.class, Long.class, Double.class, UnsignedLong.class, int[].class, Integer[].class,
            String[].class, Object.class, Number.class, Comparable.class, Object[].class,
            double[].class, void.class, char.class, Date.class, int[][].class, Thread[].class);
    private static final List<Class<? extends ValueValidator>> VALIDATORS = List.of(Range.class,
            Choice.class, Length.class, Pattern.class, Throwing.class, Silent.class, Fatal.class,
            Unmakeable.class, Unloadable.class, Hidden.class, ValueValidator.class);

    private final Random random;
    private boolean gaveNull;

    Hostile(long seed) {
        random = new Random(seed);
    }

    /** Tells whether a null, or a value with a null in it, was made since the last call. */
    boolean gaveNull() {
        boolean gave = gaveNull;
        gaveNull = false;
        return gave;
    }

    int number(int bound) {
        return random.nextInt(bound);
    }

    long anyLong() {
        return random.nextBoolean() ? random.nextLong() : random.nextInt(5) - 2;
    }

    String name() {
        return orNull(oneIn(4) ? oneOf(STRINGS) : oneOf(NAMES));
    }

    String string() {
        return orNull(oneIn(3) ? oneOf(NAMES) : oneOf(STRINGS));
    }

    String[] names() {
        String[] names = new String[oneIn(50) ? 300 : random.nextInt(4)];
        for (int i = 0; i < names.length; ++i) names[i] = name();
        return orNull(names);
    }

    SettingLevel level() {
        return orNull(oneIn(4) ? oneOf(SettingLevel.values()) : SettingLevel.SESSION);
    }

    Class<?> type() {
        return orNull(oneIn(3) ? TYPES.get(random.nextInt(TYPES.size())) : Object.class);
    }

    Class<? extends ValueValidator> validator() {
        return orNull(VALIDATORS.get(random.nextInt(VALIDATORS.size())));
    }

    Object value() {
        if (oneIn(6)) {
            Object other = oneOf(OTHERS);
            gaveNull |= other instanceof Object[] items && Arrays.asList(items).contains(null);
            return orNull(other);
        }
        Object scalar = oneOf(SCALARS);
        if (oneIn(2))
            return orNull(scalar);
        // Many long texts would only use up the memory.
        boolean huge = oneIn(20) && !(scalar instanceof String text && text.length() == HUGE);
        Object array = Array.newInstance(scalar.getClass(), huge ? HUGE : random.nextInt(4));
        for (int i = 0; i < Array.getLength(array); ++i) Array.set(array, i, scalar);
        return scalar instanceof Integer && oneIn(2) ? new int[random.nextInt(3)] : array;
    }

    /** Returns the text of a damaged settings file. */
    String fileText() {
        StringBuilder text = new StringBuilder("<settings version=\"1\"><node name=\"n\">"
                + "<key name=\"k\" type=\"int\"><value>3</value></key></node></settings>");
        for (int i = random.nextInt(4); i > 0; --i) {
            int position = random.nextInt(text.length());
            switch (random.nextInt(3)) {
                case 0 -> text.deleteCharAt(position);
                case 1 -> text.insert(position, (char) random.nextInt(128));
                default -> text.insert(position, text.substring(position / 2, position));
            }
        }
        return text.toString();
    }

    SettingListener listener(SettingPath root) {
        return orNull(switch (random.nextInt(5)) {
            case 0 -> new SettingListener() {};
            case 1 -> new Failing(new IllegalStateException("of the listener"));
            case 2 -> new Failing(new StackOverflowError("of the listener"));
            case 3 -> new SettingListener() {
                @Override
                public SettingChangeEvent createEvent(Object source, String[] path, String name,
                        String unused, boolean isNode) {
                    return null;
                }
            };
            default -> new Meddling(root, random.nextInt());
        });
    }

    Consumer<SettingChangeEvent> action() {
        return orNull(event -> {
            throw new IllegalStateException("of the action");
        });
    }

    boolean oneIn(int count) {
        return random.nextInt(count) == 0;
    }

    private <T> T oneOf(T[] all) {
        return all[random.nextInt(all.length)];
    }

    private <T> T orNull(T value) {
        if (value != null && !oneIn(30))
            return value;
        gaveNull = true;
        return null;
    }

    private record Failing(Throwable failure) implements SettingListener {
        @Override
        public SettingChangeEvent createEvent(
                Object source, String[] path, String name, String unused, boolean isNode) {
            throw Failing.<RuntimeException>unchecked(failure);
        }

        @SuppressWarnings("unchecked")
        private static <E extends Throwable> E unchecked(Throwable failure) throws E {
            throw (E) failure;
        }
    }

    /**
     * Sets the key of each event, which calls it again, until the stack is full. The number of calls
     * is limited, because two such listeners double the calls at every depth.
     */
    private static final class Meddling implements SettingListener {
        private static final int CALLS = 1000;

        private final SettingPath root;
        private final int number;
        private final AtomicInteger calls = new AtomicInteger();

        Meddling(SettingPath root, int number) {
            this.root = root;
            this.number = number;
        }

        @Override
        public void settingChanged(SettingChangeEvent event) {
            if (calls.incrementAndGet() > CALLS)
                return;
            try {
                root.path(event.path().toArray(new String[0]))
                        .setting(event.name(), Object.class)
                        .set((int) System.nanoTime() ^ number, SettingLevel.SESSION);
            } catch (SettingException refused) {
                // Another thread has removed the key, or it has values of another type.
            }
        }
    }

    /** The base of validators that break the rules for validators. */
    static class Throwing implements ValueValidator {
        public Throwing(String argument) {}

        @Override
        public Optional<String> problem(ValidationContext candidate) {
            throw new IllegalStateException("of the validator");
        }
    }

    static final class Fatal extends Throwing {
        public Fatal(String argument) {
            super(argument);
        }

        @Override
        public Optional<String> problem(ValidationContext candidate) {
            throw new AssertionError("of the validator");
        }
    }

    public static final class Silent implements ValueValidator {
        public Silent(String argument) {}

        @Override
        public Optional<String> problem(ValidationContext candidate) {
            return null;
        }
    }

    public static final class Unmakeable implements ValueValidator {
        public Unmakeable(String argument) {
            throw new IllegalArgumentException("never made");
        }

        @Override
        public Optional<String> problem(ValidationContext candidate) {
            return Optional.empty();
        }
    }

    public static final class Unloadable extends Throwing {
        private static final int NUMBER = Integer.parseInt("none");

        public Unloadable(String argument) {
            super(argument + NUMBER);
        }
    }

    private static final class Hidden implements ValueValidator {
        @Override
        public Optional<String> problem(ValidationContext candidate) {
            return Optional.empty();
        }
    }
}
