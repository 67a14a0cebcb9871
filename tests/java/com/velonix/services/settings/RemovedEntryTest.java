package com.velonix.services.settings;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.lang.ref.WeakReference;
import java.util.ArrayList;
import java.util.List;
import org.junit.jupiter.api.Test;

/** Listeners of entries that are removed. What the native side keeps of them is not the user's. */
class RemovedEntryTest extends OneKeyTree {
    @Test
    void aRegistrationEndsWithItsEntryAndTheListenerCanBeUsedAgain() throws Exception {
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
    void theSameListenerMayBeRegisteredOftenEvenAfterEntriesHaveDied() throws Exception {
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
    void nothingOfAnEndedRegistrationStaysReferenced() throws Exception {
        List<WeakReference<?>> gone = new ArrayList<>();
        for (int i = 0; i < 100; ++i) listenAndClose(gone);
        listenAndRemove(gone);
        listenAndRemoveAbove(gone);
        listenWithoutEventsAndRemove(gone);
        listenAndCloseTheTree(gone);
        for (WeakReference<?> reference : gone) assertTrue(Garbage.takesAway(reference));
    }

    /** A listener that makes no event of the removal keeps nothing either. */
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

    /** A tree of its own is gone when it has been closed, and nothing can be heard of it. */
    private void listenAndCloseTheTree(List<WeakReference<?>> gone) throws SettingException {
        Recorder listener = new Recorder();
        try (SettingPath closed = SettingPath.standalone()) {
            closed.addListener(listener);
            closed.addKey("key", 1).addListener(listener);
        }
        gone.add(new WeakReference<>(listener));
    }

    /** Of a closed registration, what the native side referred to goes as well. */
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

    /** With a node further up; of the registration nobody has kept anything. */
    private void listenAndRemoveAbove(List<WeakReference<?>> gone) throws SettingException {
        Recorder listener = new Recorder();
        SettingPath source = node.addNode("above").addNode("removed");
        source.addListener(listener);
        node.delete("above");
        assertEquals(List.of("removed node node.above"), listener.heard);
        gone.addAll(List.of(new WeakReference<>(listener), new WeakReference<>(source)));
    }
}
