import com.velonix.services.settings.SettingChangeEvent;
import com.velonix.services.settings.SettingListener;
import java.util.ArrayList;
import java.util.List;

/** A listener that notes the events that it receives; its knobs make it fail. */
public class RecordingListener implements SettingListener {
    private final List<String> heard = new ArrayList<>();

    /** Makes createEvent return null. */
    public boolean noEvent;

    /** Makes createEvent throw. */
    public boolean createThrows;

    /** Makes the listener methods throw, after they have noted the event. */
    public boolean listenerThrows;

    @Override
    public SettingChangeEvent createEvent(
            Object source, String[] path, String name, String unused, boolean isNode) {
        if (createThrows) {
            throw new IllegalStateException("createEvent");
        }
        note("create " + source + " " + String.join(".", path) + " " + name + " " + unused + " "
                + isNode);
        return noEvent ? null
                       : SettingListener.super.createEvent(source, path, name, unused, isNode);
    }

    @Override
    public void settingChanged(SettingChangeEvent event) {
        hear("changed");
    }

    @Override
    public void settingAdded(SettingChangeEvent event) {
        hear("added");
    }

    @Override
    public void settingRemoved(SettingChangeEvent event) {
        hear("removed");
    }

    private void hear(String what) {
        note(what);
        if (listenerThrows) {
            throw new IllegalStateException("listener");
        }
    }

    private synchronized void note(String what) {
        heard.add(what);
    }

    /** Returns the events since the last call, joined by "; ". */
    public synchronized String take() {
        String all = String.join("; ", heard);
        heard.clear();
        return all;
    }

    @Override
    public boolean equals(Object other) {
        return true; // a registry must go by identity
    }

    @Override
    public int hashCode() {
        return 1;
    }
}
