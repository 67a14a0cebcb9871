package com.velonix.services.settings;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.velonix.services.settings.validators.Choice;
import com.velonix.services.settings.validators.Length;
import com.velonix.services.settings.validators.Pattern;
import com.velonix.services.settings.validators.Range;
import com.velonix.util.types.UnsignedLong;
import java.io.IOException;
import java.io.InputStream;
import java.lang.reflect.Field;
import java.nio.charset.StandardCharsets;
import java.nio.file.Path;
import java.util.List;
import java.util.Optional;
import java.util.concurrent.CountDownLatch;
import java.util.function.Function;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;

class ValidatorTest {
    /** A validator that runs the script of the current test. */
    public static final class Scripted implements ValueValidator {
        static volatile Function<ValidationContext, Optional<String>> script;

        public Scripted(String argument) throws Exception {
            if (argument.equals("bad"))
                throw new IllegalArgumentException("bad argument");
            if (argument.equals("worse"))
                throw new Exception("worse argument");
        }

        @Override
        public Optional<String> problem(ValidationContext candidate) {
            return script.apply(candidate);
        }
    }

    static volatile boolean strangerInitialised;

    public static final class Stranger {
        static {
            strangerInitialised = true;
        }

        public Stranger(String argument) {}
    }

    private SettingPath root;

    @BeforeEach
    void open() {
        root = SettingPath.standalone();
        Scripted.script = candidate -> Optional.empty();
    }

    @AfterEach
    void close() {
        root.close();
    }

    private Setting<Integer> scriptedKey() throws SettingException {
        return root.addNode("node").addKey("key", 1, SettingLevel.USER, Scripted.class, "argument");
    }

    @Test
    void theValidatorReceivesTheKeyAndTheValue() throws Exception {
        Setting<Integer> key = scriptedKey();
        Scripted.script = candidate -> Optional.of(candidate + " := " + candidate.value());
        Exception refused = assertThrows(SettingValidationException.class, () -> key.set(7));
        assertEquals("node.key := 7", refused.getMessage());
        assertEquals(1, key.get());
        Scripted.script = candidate -> Optional.of("");
        refused = assertThrows(SettingValidationException.class, () -> key.set(8));
        assertEquals("", refused.getMessage());
    }

    @Test
    void aValidatorThatThrowsRefusesWithItsMessage() throws Exception {
        Setting<Integer> key = scriptedKey();
        Scripted.script = candidate -> {
            throw new UnsupportedOperationException("no opinion");
        };
        Exception refused = assertThrows(SettingValidationException.class, () -> key.set(7));
        assertTrue(refused.getMessage().contains("no opinion"), refused.getMessage());
        assertTrue(refused.getMessage().contains(Scripted.class.getName()));
        Scripted.script = candidate -> null;
        assertThrows(SettingValidationException.class, () -> key.set(7));
        assertEquals(1, key.get());
    }

    @Test
    void aValidatorMayReadAndChangeSettings() throws Exception {
        Setting<Integer> key = scriptedKey();
        Setting<Integer> other = root.addKey("other", 0);
        Scripted.script = candidate -> {
            try {
                other.set(key.get() + 1);
            } catch (SettingException failed) {
                return Optional.of(failed.toString());
            }
            return Optional.empty();
        };
        key.set(7);
        assertEquals(7, key.get());
        assertEquals(2, other.get());
    }

    @Test
    void readersDoNotWaitForASlowValidator() throws Exception {
        Setting<Integer> key = scriptedKey();
        CountDownLatch entered = new CountDownLatch(1);
        CountDownLatch leave = new CountDownLatch(1);
        Scripted.script = candidate -> {
            entered.countDown();
            try {
                leave.await();
            } catch (InterruptedException interrupted) {
                return Optional.of("interrupted");
            }
            return Optional.empty();
        };
        Thread writer = new Thread(() -> {
            try {
                key.set(7);
            } catch (SettingException failed) {
                throw new AssertionError(failed);
            }
        });
        writer.start();
        entered.await();
        assertEquals(1, key.get());
        leave.countDown();
        writer.join();
        assertEquals(7, key.get());
    }

    @Test
    void aNodesValidatorValidatesTheKeysThatHaveNone() throws Exception {
        SettingPath node = root.addNode("validated", Range.class, "1..5");
        Setting<Integer> inherited = node.addNode("inner").addKey("key", 3);
        assertThrows(SettingValidationException.class, () -> inherited.set(6));
        Setting<Integer> own = node.addKey("own", 50, SettingLevel.USER, Range.class, "..100");
        own.set(99);
        assertThrows(SettingValidationException.class, () -> node.addKey("late", 7));
        Setting<Integer> late = node.setting("late", Integer.class);
        assertTrue(late.exists());
        assertFalse(late.isSet());
    }

    @Test
    void anArgumentThatTheValidatorDoesNotAcceptIsRefusedWhenTheEntryIsAdded() {
        Exception refused = assertThrows(
                IllegalArgumentException.class, () -> root.addNode("n", Scripted.class, "bad"));
        assertTrue(refused.getMessage().endsWith("bad argument"), refused.getMessage());
        refused = assertThrows(
                IllegalArgumentException.class, () -> root.addNode("n", Scripted.class, "worse"));
        assertTrue(refused.getMessage().endsWith("worse argument"), refused.getMessage());
        assertFalse(root.path("n").exists());
    }

    /** A class loader with a copy of Scripted under a name that only it knows. */
    private static final class Application extends ClassLoader {
        static final String NAME = Scripted.class.getName().replace("Scripted", "Deployed");

        Application() {
            super(Scripted.class.getClassLoader());
        }

        @Override
        protected Class<?> findClass(String name) throws ClassNotFoundException {
            if (!name.equals(NAME))
                throw new ClassNotFoundException(name);
            String file = Scripted.class.getName().replace('.', '/') + ".class";
            try (InputStream in = getResourceAsStream(file)) {
                String bytes = new String(in.readAllBytes(), StandardCharsets.ISO_8859_1);
                byte[] renamed =
                        bytes.replace("Scripted", "Deployed").getBytes(StandardCharsets.ISO_8859_1);
                return defineClass(name, renamed, 0, renamed.length);
            } catch (IOException failed) {
                throw new ClassNotFoundException(name, failed);
            }
        }
    }

    @Test
    void aValidatorIsFoundByTheLoaderOfTheThreadThatSets() throws Exception {
        Application application = new Application();
        Class<?> deployed = application.loadClass(Application.NAME);
        Function<ValidationContext, Optional<String>> script = candidate -> Optional.of("deployed");
        Field field = deployed.getDeclaredField("script");
        field.setAccessible(true);
        field.set(null, script);
        Setting<Integer> key = root.addNode("node", deployed.asSubclass(ValueValidator.class), "")
                                       .setting("key", Integer.class);
        Thread thread = Thread.currentThread();
        ClassLoader usual = thread.getContextClassLoader();
        Exception refused =
                assertThrows(SettingValidationException.class, () -> key.parent().addKey("key", 1));
        assertTrue(refused.getMessage().contains("there is no class"), refused.getMessage());
        thread.setContextClassLoader(application);
        try {
            refused = assertThrows(SettingValidationException.class, () -> key.set(2));
            assertEquals("deployed", refused.getMessage());
        } finally {
            thread.setContextClassLoader(usual);
        }
    }

    /** A validator whose class cannot be initialised. */
    public static final class Unloadable implements ValueValidator {
        private static final int NUMBER = Integer.parseInt("none");

        public Unloadable(String argument) {}

        @Override
        public Optional<String> problem(ValidationContext candidate) {
            return candidate.value().equals(NUMBER) ? Optional.empty() : Optional.of("no");
        }
    }

    @Test
    void aValidatorThatCannotBeLoadedIsRefusedWhenTheEntryIsAdded() {
        Exception refused = assertThrows(
                IllegalArgumentException.class, () -> root.addNode("n", Unloadable.class, ""));
        assertTrue(refused.getMessage().contains("Initializer"), refused.getMessage());
        assertFalse(root.path("n").exists());
    }

    @ParameterizedTest
    @CsvSource({
            "inRange, 6 is outside 1..5",
            "badRange, is not of the form min..max",
            "noClass, there is no class com.velonix.NoSuchClass",
            "noValidator, does not implement com.velonix.services.settings.ValueValidator",
    })
    void
    aBadValidatorOfAFileRefusesWithTheReason(String key, String reason) throws Exception {
        Path file = Path.of(System.getProperty("test.data"), "files", "validators.xml");
        try (SettingPath tree = SettingPath.load(file)) {
            Setting<Integer> setting = tree.setting(key, Integer.class);
            Exception refused =
                    assertThrows(SettingValidationException.class, () -> setting.set(6));
            assertTrue(refused.getMessage().contains(reason), refused.getMessage());
            assertEquals(3, setting.get());
        }
        assertFalse(strangerInitialised);
    }

    @ParameterizedTest
    @CsvSource({
            "1..72, 1, 72, 0, 73",
            "0.5..2, 0.5, 2.0, 0.49, 2.01",
            "..-3, -3, -Infinity, -2, NaN",
            "18446744073709551615.., 18446744073709551615, 1e30, 18446744073709551614, -1",
    })
    void rangesIncludeTheirBounds(
            String range, String low, String high, String below, String above) {
        ValueValidator validator = new Range(range);
        for (String accepted : List.of(low, high)) {
            assertEquals(Optional.empty(), problem(validator, number(accepted)), accepted);
        }
        for (String refused : List.of(below, above)) {
            assertEquals(Optional.of(number(refused) + " is outside " + range),
                    problem(validator, number(refused)));
        }
    }

    private static Number number(String text) {
        return text.matches("\\d+") ? UnsignedLong.parse(text) : Double.valueOf(text);
    }

    private static Optional<String> problem(ValueValidator validator, Object value) {
        return validator.problem(new ValidationContext(List.of(), "key", 0, value));
    }

    @Test
    void theOtherValidatorsValidateTextsAndArrays() {
        assertEquals(Optional.empty(), problem(new Choice("left|right|"), ""));
        assertEquals(Optional.of("element 1: \"up\" is none of left, right"),
                problem(new Choice("left|right"), new String[] {"left", "up"}));
        assertEquals(Optional.empty(), problem(new Choice("1|2"), 2));
        assertEquals(Optional.empty(), problem(new Pattern("[a-z]+"), "abc"));
        assertTrue(problem(new Pattern("[a-z]+"), "abc1").isPresent());
        assertEquals(Optional.of("1 is not a text"), problem(new Pattern(".*"), 1));
        assertEquals(Optional.empty(), problem(new Length("1..1"), "\ud83d\ude00"));
        assertEquals(Optional.of("the length 3 is outside ..2"),
                problem(new Length("..2"), new Integer[3]));
        assertTrue(problem(new Length(".."), 1).isPresent());
        assertEquals(Optional.of("element 1: 9 is outside 1..5"),
                problem(new Range("1..5"), new Integer[] {5, 9}));
        assertEquals(Optional.empty(), problem(new Range("4.9e-324..1.8e308"), Double.MIN_VALUE));
        for (String wrong : List.of("", "5", "5..1", "a..b", "1-2", "1e999999999..",
                "..-1e-999999999", "1" + "0".repeat(2000) + "..")) {
            assertThrows(IllegalArgumentException.class, () -> new Range(wrong), wrong);
        }
    }
}
