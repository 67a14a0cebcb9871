package com.velonix.services.settings;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertSame;
import static org.junit.jupiter.api.Assertions.assertThrows;

import java.util.ArrayList;
import java.util.List;
import org.junit.jupiter.api.Test;

class ListenerTest extends OneKeyTree {
    @Test
    void aNodesListenerHearsEverythingBelowIt() throws Exception {
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
    void aKeysListenerHearsOnlyOfTheKey() throws Exception {
        Setting<Integer> other = node.addKey("other", 1);
        List<SettingChangeEvent> events = new ArrayList<>();
        try (Registration r = key.addListener(events::add)) {
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
    void aListenerThatThrowsStopsNobody() throws Exception {
        try (Registration bad = root.addListener(new SettingListener() {
            @Override
            public void settingChanged(SettingChangeEvent event) {
                throw new IllegalStateException("dropped");
            }
        });
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
    void everythingIsAllowedInACall() throws Exception {
        Registration[] own = new Registration[1];
        own[0] = key.addListener(event -> {
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
    }

    @Test
    void aRegistrationOutlivesThePathItWasMadeThrough() throws Exception {
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
