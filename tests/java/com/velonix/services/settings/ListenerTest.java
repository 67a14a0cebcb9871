package com.velonix.services.settings;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertSame;
import static org.junit.jupiter.api.Assertions.assertThrows;

import com.velonix.services.settings.validators.Range;
import java.util.ArrayList;
import java.util.List;
import java.util.Optional;
import org.junit.jupiter.api.Test;

class ListenerTest extends OneKeyTree {
    @Test
    void aNodesListenerReceivesTheEventsOfAllEntriesBelowIt() throws Exception {
        try (Registration r = root.addListener(recorder)) {
            key.set(2);
            key.set(2);
            node.addNode("inner").addKey("deep", "x");
            node.delete("inner");
            key.unset();
        }
        key.set(3);
        assertEquals(List.of("changed key node.key", "added node node.inner",
                             "added key node.inner.deep", "changed key node.inner.deep",
                             "removed node node.inner", "changed key node.key"),
                recorder.heard);
        assertSame(root, recorder.source);
    }

    @Test
    void aNewKeyHasItsValueWhenItsAdditionIsReported() throws Exception {
        List<Object> found = new ArrayList<>();
        SettingListener reader = new SettingListener() {
            @Override
            public void settingAdded(SettingChangeEvent event) {
                try {
                    found.add(node.setting(event.name(), Integer.class).find());
                } catch (SettingException failed) {
                    found.add(failed);
                }
            }
        };
        try (Registration r = node.addListener(reader)) {
            node.addKey("fresh", 7);
        }
        assertEquals(List.of(Optional.of(7)), found);
        // If the value is refused, the key is added without one and reported.
        try (Registration r = node.addListener(reader)) {
            assertThrows(SettingValidationException.class,
                    () -> node.addKey("refused", 0, SettingLevel.USER, Range.class, "1..2"));
        }
        assertEquals(List.of(Optional.of(7), Optional.empty()), found);
    }

    @Test
    void listenersOfOneKeyAreAddedAndClosedSeparately() throws Exception {
        List<String> heard = new ArrayList<>();
        Registration first = key.onChanged(event -> heard.add("first"));
        Registration second = key.onChanged(event -> {
            heard.add("second");
            event.path().size();
            first.close();
            throw new IllegalStateException("of the second listener");
        });
        Registration third = key.onChanged(event -> heard.add("third"));
        key.set(2);
        key.set(3);
        second.close();
        key.set(4);
        third.close();
        key.set(5);
        try (Registration again = key.onChanged(event -> heard.add("again"))) {
            key.set(6);
        }
        assertEquals(
                List.of("first", "second", "third", "second", "third", "third", "again"), heard);
    }

    @Test
    void aKeysListenerReceivesOnlyEventsOfTheKey() throws Exception {
        Setting<Integer> other = node.addKey("other", 1);
        List<SettingChangeEvent> events = new ArrayList<>();
        try (Registration r = key.onChanged(events::add)) {
            other.set(2);
            key.set(2, SettingLevel.SESSION);
            key.set(3);
        }
        assertEquals(2, events.size());
        assertEquals(List.of("node"), events.get(0).path());
        assertEquals("key", events.get(0).name());
        assertSame(key, events.get(0).source());
    }

    @Test
    void anActionRunsOnlyForItsKindOfEvent() throws Exception {
        List<String> changed = new ArrayList<>();
        List<String> added = new ArrayList<>();
        List<String> removed = new ArrayList<>();
        for (Listenable where : List.of(root, key)) {
            try (Registration onChanged = where.onChanged(event -> changed.add(event.toString()));
                    Registration onAdded = where.onAdded(event -> added.add(event.toString()));
                    Registration onRemoved = where.onRemoved(
                            event -> removed.add(event + " of " + event.source()))) {
                key.set(2);
                node.addNode("inner");
                node.delete("inner");
                node.delete("key");
            }
            node.addKey("key", 1);
        }
        assertEquals(List.of("node.key", "node.key"), changed);
        assertEquals(List.of("node.inner"), added, "nothing is added below a key");
        assertEquals(List.of("node.inner of " + root, "node.key of " + root, "node.key of " + key),
                removed);
    }

    @Test
    void changesOfOneThreadAndOfATransactionAreReportedInOrder() throws Exception {
        try (SettingPath process = SettingPath.processRoot();
                SettingTransaction transaction = new SettingTransaction()) {
            SettingPath editor = process.path("editor");
            Setting<Integer> size = editor.setting("fontSize", Integer.class);
            Setting<String> theme = editor.setting("theme", String.class);
            List<String> heard = new ArrayList<>();
            try (Registration r = editor.onChanged(
                         event -> heard.add(event.name() + " " + value(editor, event.name())))) {
                theme.set("first", SettingLevel.SESSION);
                transaction.set(size, 7);
                transaction.set(theme, "second");
                transaction.set(size, 8);
                assertEquals(List.of(), transaction.commit(SettingLevel.SESSION));
            }
            size.unset(SettingLevel.SESSION);
            theme.unset(SettingLevel.SESSION);
            assertEquals(List.of("theme first", "fontSize 8", "theme second"), heard);
        }
    }

    private static Object value(SettingPath path, String name) {
        try {
            return path.setting(name, Object.class).get();
        } catch (SettingException failed) {
            return failed;
        }
    }

    @Test
    void registrationsOfTheSameListenerEndSeparately() throws Exception {
        Registration first = key.onChanged(recorder::settingChanged);
        Registration second = key.onChanged(recorder::settingChanged);
        key.set(2);
        first.close();
        first.close();
        key.set(3);
        second.close();
        key.set(4);
        assertEquals(3, recorder.heard.size());
    }

    @Test
    void anUnreferencedRegistrationStaysInForce() throws Exception {
        key.addListener(recorder);
        for (int i = 0; i < 5; ++i) {
            System.gc();
            key.set(10 + i);
        }
        node.delete("key"); // ends the registration
        assertEquals(6, recorder.heard.size());
    }

    @Test
    void aListenerThatThrowsStopsNoOtherListener() throws Exception {
        try (Registration bad = root.addListener(new SettingListener() {
            @Override
            public void settingChanged(SettingChangeEvent event) {
                throw new IllegalStateException("dropped");
            }
        });
                Registration worse = key.onChanged(event -> { throw new AssertionError(); });
                Registration silent = root.addListener(new SettingListener() {
                    @Override
                    public SettingChangeEvent createEvent(Object source, String[] path, String name,
                            String unused, boolean isNode) {
                        return null;
                    }

                    @Override
                    public void settingChanged(SettingChangeEvent event) {
                        recorder.heard.add("not dropped");
                    }
                });
                Registration good = root.addListener(recorder)) {
            key.set(2);
        }
        assertEquals(List.of("changed key node.key"), recorder.heard);
        assertEquals(2, key.get());
    }

    @Test
    void aListenerMayCloseItselfAndChangeSettings() throws Exception {
        Registration[] own = new Registration[1];
        own[0] = key.onChanged(event -> {
            try {
                own[0].close();
                key.set(key.get() + 1);
                node.addKey("added", "by a listener");
            } catch (SettingException failed) {
                throw new AssertionError(failed);
            }
        });
        key.set(5);
        assertEquals(6, key.get());
        assertEquals(List.of("added", "key"), node.children());
    }

    @Test
    void aMissingEntryCannotBeListenedTo() {
        assertThrows(SettingNotFoundException.class, () -> root.path("no").addListener(recorder));
        assertThrows(SettingNotFoundException.class,
                () -> node.setting("no", String.class).addListener(recorder));
        assertThrows(SettingNotFoundException.class,
                () -> node.setting("no", String.class).onChanged(event -> {}));
    }

    @Test
    void aRegistrationOutlivesTheRootItWasMadeThrough() throws Exception {
        try (SettingPath process = SettingPath.processRoot()) {
            Registration r;
            try (SettingPath other = SettingPath.processRoot()) {
                r = other.path("solver").addListener(recorder);
            }
            Setting<Double> tolerance = process.path("solver").setting("tolerance", Double.class);
            tolerance.set(0.5, SettingLevel.SESSION);
            assertEquals(List.of("changed key solver.tolerance"), recorder.heard);
            r.close();
            tolerance.unset(SettingLevel.SESSION);
            assertEquals(1, recorder.heard.size());
        }
    }
}
