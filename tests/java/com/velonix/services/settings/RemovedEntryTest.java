package com.velonix.services.settings;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNull;

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
        Registration closed = key.addListener(new Recorder());
        WeakReference<Recorder> ofClosed = listen(key);
        WeakReference<Recorder> ofRemoved = listen(node.addKey("removed", 1));
        closed.close();
        registrations.get(0).close();
        node.delete("removed");
        for (WeakReference<Recorder> gone : List.of(ofClosed, ofRemoved)) {
            for (int i = 0; i < 100 && gone.get() != null; ++i) {
                System.gc();
                Thread.sleep(10);
            }
            assertNull(gone.get());
        }
    }

    private final List<Registration> registrations = new ArrayList<>();

    private WeakReference<Recorder> listen(Setting<?> setting) throws SettingException {
        Recorder listener = new Recorder();
        registrations.add(setting.addListener(listener));
        return new WeakReference<>(listener);
    }
}
