package com.velonix.services.settings;

import static org.junit.jupiter.api.Assertions.assertTrue;

import com.velonix.util.types.UnsignedLong;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** The first use of the API on a stack that is nearly full must not break later uses. */
class FullStackTest {
    private interface Use {
        void run() throws Exception;
    }

    /** Uses the settings with every length of stack; afterwards every use must succeed. */
    public static final class Child {
        private static final long STACK = 512 << 10;

        private SettingPath root;
        private final List<Use> uses = new ArrayList<>();

        Child() {
            uses.add(() -> root = SettingPath.standalone());
            uses.add(() -> check(SettingLevel.USER, SettingLevel.defaultLevel()));
            uses.add(() -> keep("number", 1, 2));
            uses.add(() -> keep("text", "one", "two"));
            uses.add(() -> keep("unsigned", new UnsignedLong(1), new UnsignedLong(2)));
            uses.add(() -> keep("texts", new String[] {"one"}, new String[] {"two", "three"}));
        }

        public static void main(String[] arguments) throws Exception {
            // A full stack also breaks the initialisation of the JVM's own classes, so those for
            // class loading and messages are initialised here.
            System.out.println("starts with " + new SettingInfo(arguments.length));
            Child child = new Child();
            Thread deep = new Thread(null, child::dive, "deep", STACK);
            deep.start();
            deep.join();
            for (Use use : child.uses) use.run();
            System.out.println("all works");
        }

        private void dive() {
            try {
                dive();
            } catch (StackOverflowError bottom) {
                // Each return of dive() leaves a little more stack for the uses below.
            }
            for (Use use : uses) {
                try {
                    use.run();
                } catch (Exception | Error noRoom) {
                    // Only the state afterwards matters.
                }
            }
        }

        private <T> void keep(String name, T first, T second) throws SettingException {
            SettingPath path = root.path();
            Setting<T> key = path.setting(name, typeOf(first));
            if (!key.exists())
                path.addKey(name, first);
            key.set(first);
            check(first, key.get(SettingLevel.USER));
            key.set(second);
            check(second, key.get());
            check(second, key.get());
        }

        @SuppressWarnings("unchecked")
        private static <T> Class<T> typeOf(T value) {
            return (Class<T>) value.getClass();
        }

        private static void check(Object expected, Object found) {
            if (!Arrays.deepEquals(new Object[] {expected}, new Object[] {found}))
                throw new AssertionError(expected + " expected, found " + found);
        }
    }

    @Test
    void firstUsesWithTooLittleStackBreakNoLaterUse(@TempDir Path folder) throws Exception {
        String text = ChildJvm.run(Child.class, folder);
        assertTrue(text.startsWith("starts with 0\nall works\n"), text);
    }
}
