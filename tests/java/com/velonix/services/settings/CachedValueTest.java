package com.velonix.services.settings;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNotSame;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertSame;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.velonix.services.settings.validators.Length;
import java.lang.ref.WeakReference;
import java.util.ArrayList;
import java.util.List;
import java.util.Optional;
import java.util.concurrent.atomic.AtomicInteger;
import java.util.concurrent.atomic.AtomicReference;
import org.junit.jupiter.api.Test;

/**
 * Cached values of settings. Each native call makes a new String, so the same String again shows
 * that there was no native call.
 */
class CachedValueTest extends OneKeyTree {
    private static final int READERS = 3;
    private static final int CHANGES = 20_000;

    @Test
    void anUnchangedValueIsReadFromTheCache() throws Exception {
        Setting<String> text = node.addKey("text", "value");
        String first = text.get();
        assertSame(first, text.get());
        key.set(2);
        key.unset();
        node.addNode("more").addKey("text", "elsewhere");
        text.set("value");
        assertSame(first, text.get());
        assertSame(first, text.find().orElseThrow());
        assertSame(first, root.path("node").setting("text", String.class).get());
        for (int i = 0; i < 5000; ++i) node.setting("other" + i, String.class);
        assertNotSame(
                first, node.setting("text", String.class).get(), "a tree caches a bounded number");
    }

    @Test
    void changesAreReadAtOnceForAllLengthsOfNames() throws Exception {
        String longest = "n".repeat(63);
        for (String nodeName : new String[] {"", "a", "ab", "abc", "abcd", "abcde", longest}) {
            SettingPath parent = nodeName.isEmpty() ? root : root.addNode(nodeName);
            for (String keyName :
                    new String[] {"k", "kl", "klm", "klmn", "klmno", "K" + longest.substring(1)}) {
                Setting<Integer> one = parent.addKey(keyName, 0);
                // Changes through another object than the one that reads.
                Setting<Number> other = parent.setting(keyName, Number.class);
                assertEquals(0, one.get());
                other.set(1);
                assertEquals(1, one.get());
                other.set(2, SettingLevel.SESSION);
                assertEquals(2, one.get());
                other.unset(SettingLevel.SESSION);
                assertEquals(1, one.get());
                other.unset();
                assertEquals(Optional.empty(), one.find());
                assertThrows(SettingNotFoundException.class, one::get);
                other.set(3, SettingLevel.FACTORY);
                assertEquals(3, one.get());
            }
        }
    }

    @Test
    void removedKeysAreNotReadAndTheirReplacementsAre() throws Exception {
        SettingPath above = root.addNode("above");
        Setting<String> deep = above.addNode("node").addKey("deep", "first");
        SettingPath template = root.addNode("template");
        template.addNode("node").addKey("deep", "copied");
        assertEquals("first", deep.get());
        above.path("node").delete("deep");
        assertThrows(SettingNotFoundException.class, deep::get);
        above.path("node").addKey("deep", "second");
        assertEquals("second", deep.get());
        root.delete("above");
        assertThrows(SettingNotFoundException.class, deep::get);
        template.copyTo(root, "above");
        assertEquals("copied", deep.get());
        above.delete("node");
        above.addKey("node", "a key in the node's place");
        assertThrows(SettingNotFoundException.class, deep::get);
    }

    @Test
    void namesOfChildrenAreListedAgainAfterAnAdditionOrRemoval() throws Exception {
        SettingPath above = root.addNode("above"), list = above.addNode("list");
        assertEquals(List.of(), list.children());
        list.addKey("b", 1);
        assertEquals(List.of("b"), list.children());
        Setting<Integer> a = list.addKey("a", 1);
        list.addNode("node").addKey("deeper", 1);
        assertEquals(List.of("a", "b"), list.keys());
        assertEquals(List.of("node"), list.nodes());
        a.set(2);
        assertSame(list.keys(), list.keys());
        list.delete("b");
        assertEquals(List.of("a"), list.keys());
        assertEquals(List.of("a", "node"), list.children());
        list.path("node").copyTo(list, "copy");
        assertEquals(List.of("copy", "node"), list.nodes());
        assertEquals(List.of("list"), above.nodes());
        root.delete("above");
        assertThrows(SettingNotFoundException.class, list::keys);
        root.addNode("above").addNode("list");
        assertEquals(List.of(), list.keys());
        assertTrue(root.nodes().contains("above"));
    }

    @Test
    void changesByTransactionsAndOtherRootsAreRead() throws Exception {
        try (SettingPath one = SettingPath.processRoot();
                SettingPath two = SettingPath.processRoot();
                SettingTransaction transaction = new SettingTransaction()) {
            Setting<String> read = one.path("editor").setting("theme", String.class);
            Setting<String> changed = two.path("editor").setting("theme", String.class);
            String before = read.get();
            transaction.set(changed, "committed");
            transaction.validate();
            assertSame(before, read.get());
            transaction.commit(SettingLevel.SESSION);
            assertEquals("committed", read.get());
            changed.unset(SettingLevel.SESSION);
            assertEquals(before, read.get());
        }
    }

    @Test
    void aListenerReadsTheNewValueAndARefusedSetChangesNothing() throws Exception {
        Setting<String> text = node.addKey("text", "old", SettingLevel.USER, Length.class, "1..10");
        String old = text.get();
        assertThrows(SettingValidationException.class, () -> text.set("much too long for it"));
        assertSame(old, text.get());
        List<String> heard = new ArrayList<>();
        try (Registration r = root.onChanged(event -> {
            try {
                heard.add(text.get());
            } catch (SettingException failed) {
                heard.add(failed.toString());
            }
        })) {
            text.set("new");
        }
        assertEquals(List.of("new"), heard);
    }

    @Test
    void eachReadReturnsACopyOfAnArray() throws Exception {
        Setting<Double[]> boxed = node.addKey("array", new Double[] {1.0, 2.0});
        Setting<double[]> bare = node.setting("array", double[].class);
        Setting<Object> any = node.setting("array", Object.class);
        for (int round = 0; round < 3; ++round) {
            assertArrayEquals(new Double[] {1.0, 2.0}, boxed.get());
            assertArrayEquals(new double[] {1.0, 2.0}, bare.get());
            assertArrayEquals(new Double[] {1.0, 2.0}, (Double[]) any.get());
            boxed.get()[0] = 7.0;
            bare.get()[0] = 7.0;
            ((Double[]) any.find().orElseThrow())[0] = 7.0;
        }
    }

    @Test
    void aClosedTreeReturnsNoCachedValue() throws Exception {
        assertEquals(1, key.get());
        root.close();
        assertThrows(IllegalStateException.class, key::get);
        assertThrows(IllegalStateException.class, key::find);
    }

    @Test
    void noThreadReadsAnOldValueAfterASetHasReturned() throws Exception {
        Setting<Number> session = node.setting("key", Number.class);
        neverStale(value -> {
            if (value % 3 == 0) {
                session.set(value, SettingLevel.SESSION);
            } else {
                // The session value hides this one until it is unset.
                key.set(value);
                if (session.isSet(SettingLevel.SESSION))
                    session.unset(SettingLevel.SESSION);
            }
        });
    }

    @Test
    void noThreadReadsWhatARemovalThatHasReturnedTookAway() throws Exception {
        neverStale(value -> {
            if (value % 2 == 0) {
                node.delete("key");
                node.addKey("key", value);
            } else {
                root.delete("node");
                root.addNode("node").addKey("key", value);
            }
        });
    }

    private interface Change {
        void to(int value) throws SettingException;
    }

    /**
     * Changes the key to growing values; each reader looks which change has returned, and must not
     * read an older value then.
     */
    private void neverStale(Change change) throws Exception {
        AtomicInteger returned = new AtomicInteger(1);
        AtomicReference<String> fault = new AtomicReference<>();
        List<Thread> readers = new ArrayList<>();
        for (int i = 0; i < READERS; ++i) {
            // Two of them share an object, and so what it keeps.
            Setting<? extends Number> read = i == 0 ? node.setting("key", Number.class) : key;
            readers.add(new Thread(() -> {
                for (int known = 1; known < CHANGES && fault.get() == null;) {
                    known = returned.get();
                    try {
                        int value = read.get().intValue();
                        if (value < known)
                            fault.set("read " + value + " after " + known + " was set");
                    } catch (SettingNotFoundException removedJustNow) {
                        continue;
                    } catch (Exception failed) {
                        fault.set(failed.toString());
                    }
                }
            }));
        }
        readers.forEach(Thread::start);
        for (int value = 2; value <= CHANGES && fault.get() == null; ++value) {
            change.to(value);
            returned.set(value);
        }
        for (Thread reader : readers) reader.join();
        assertNull(fault.get());
        assertEquals(CHANGES, key.get());
    }

    @Test
    void anUnreferencedTreeIsCollectedWithItsCache() throws Exception {
        WeakReference<String> cached = readAndForget("warm up");
        long before = Garbage.residentBytes();
        for (int i = 0; i < 60; ++i) {
            cached = readAndForget("x".repeat(8 << 20));
            System.gc();
        }
        assertTrue(Garbage.collects(cached));
        // Together the trees held twice that.
        assertTrue(Garbage.collectedUntil(() -> Garbage.residentBytes() - before < 250L << 20),
                "the trees are still there");
    }

    @Test
    void aClosedTreeReleasesItsCache() throws Exception {
        root.addKey("text", "x".repeat(100));
        WeakReference<String> cached = readByPath();
        root.close();
        assertTrue(Garbage.collects(cached));
        assertThrows(IllegalStateException.class, () -> root.setting("text", String.class).get());
    }

    private WeakReference<String> readByPath() throws SettingException {
        return new WeakReference<>(root.setting("text", String.class).get());
    }

    private static WeakReference<String> readAndForget(String value) throws SettingException {
        Setting<String> text = SettingPath.standalone().addNode("node").addKey("text", value);
        return new WeakReference<>(text.get());
    }
}
