package com.velonix.services.settings;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.lang.ref.WeakReference;
import java.util.ArrayList;
import java.util.List;
import org.junit.jupiter.api.Test;

/** Tests of listeners on entries that are removed. */
class RemovedEntryTest extends OneKeyTree {
    @Test
    void aRegistrationEndsWithItsEntryAndTheListenerMayBeRegisteredAgain() throws Exception {
        Registration first = key.addListener(recorder);
        node.delete("key");
        assertEquals(List.of("removed key node.key"), recorder.heard);
        key = node.addKey("key", 1);
        key.set(2);
        assertEquals(1, recorder.heard.size());
        try (Registration second = key.addListener(recorder)) {
            first.close();
            key.set(3);
            first.close();
        }
        key.set(4);
        assertEquals(List.of("removed key node.key", "changed key node.key"), recorder.heard);
    }

    @Test
    void oneListenerMayBeRegisteredOnSeveralEntriesAlsoAfterRemovals() throws Exception {
        for (int i = 0; i < 3; ++i) {
            SettingPath dying = root.addNode("dying");
            dying.addListener(recorder);
            Registration below = dying.addKey("key", 1).addListener(recorder);
            root.delete("dying");
            below.close();
        }
        recorder.heard.clear();
        try (Registration one = node.addListener(recorder);
                Registration two = node.addListener(recorder)) {
            key.set(7);
        }
        assertEquals(2, recorder.heard.size());
    }

    @Test
    void anEndedRegistrationKeepsNoObjectReferenced() throws Exception {
        List<WeakReference<?>> gone = new ArrayList<>();
        for (int i = 0; i < 100; ++i) listenAndClose(gone);
        listenAndRemove(gone);
        listenAndRemoveAbove(gone);
        listenWithoutEventsAndRemove(gone);
        listenAndCloseTheTree(gone);
        for (WeakReference<?> reference : gone) assertTrue(Garbage.collects(reference));
    }

    /** Removes an entry whose listener fails to make the event. */
    private void listenWithoutEventsAndRemove(List<WeakReference<?>> gone) throws SettingException {
        SettingListener listener = new SettingListener() {
            @Override
            public SettingChangeEvent createEvent(Object source, String[] path, String name,
                    String unused, boolean isNode) {
                throw new IllegalStateException("no event");
            }
        };
        SettingPath dying = root.addNode("silent");
        dying.addListener(listener);
        root.delete("silent");
        gone.add(new WeakReference<>(listener));
    }

    /** Closes a tree in memory while listeners are registered. */
    private void listenAndCloseTheTree(List<WeakReference<?>> gone) throws SettingException {
        Recorder listener = new Recorder();
        try (SettingPath closed = SettingPath.standalone()) {
            closed.addListener(listener);
            closed.addKey("key", 1).addListener(listener);
        }
        gone.add(new WeakReference<>(listener));
    }

    /** Closes a registration; listener, source and registration must be collected. */
    private void listenAndClose(List<WeakReference<?>> gone) throws SettingException {
        Recorder listener = new Recorder();
        SettingPath source = root.path("node");
        Registration registration = source.addListener(listener);
        registration.close();
        registration.close();
        gone.addAll(List.of(new WeakReference<>(listener), new WeakReference<>(source),
                new WeakReference<>(registration)));
    }

    private void listenAndRemove(List<WeakReference<?>> gone) throws SettingException {
        Recorder listener = new Recorder();
        SettingPath source = node.addNode("removed");
        source.addListener(listener);
        node.delete("removed");
        gone.addAll(List.of(new WeakReference<>(listener), new WeakReference<>(source)));
    }

    /** Removes a node above the entry, without a reference to the registration. */
    private void listenAndRemoveAbove(List<WeakReference<?>> gone) throws SettingException {
        Recorder listener = new Recorder();
        SettingPath source = node.addNode("above").addNode("removed");
        source.addListener(listener);
        node.delete("above");
        assertEquals(List.of("removed node node.above"), listener.heard);
        gone.addAll(List.of(new WeakReference<>(listener), new WeakReference<>(source)));
    }
}
