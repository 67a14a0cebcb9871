package com.velonix.services.settings;

import java.util.Arrays;
import java.util.List;
import java.util.concurrent.atomic.AtomicReference;

/**
 * One registration of a user's listener, and the object that the native side knows in the
 * listener's place. The native side may keep it for the life of the process (once its entry has
 * been removed it cannot be taken out again), so when the registration ends it forgets everything
 * that is the user's.
 */
final class ListenerRegistration implements SettingListener, Registration {
    /** What is the user's, and the tree that is held open for it. */
    private record Target(SettingListener listener, Object source, TreeHandle tree) {}

    private final String[] path;
    private final String key;
    private final long address;
    private final AtomicReference<Target> current;

    private ListenerRegistration(Target target, long address, String[] path, String key) {
        this.path = path;
        this.key = key;
        this.address = address;
        this.current = new AtomicReference<>(target);
    }

    /** Registers on the node at the path or, with a key's name, on that child of it. */
    static Registration start(SettingListener listener, Object source, TreeHandle tree,
            String[] path, String key) throws SettingException {
        long address = tree.hold();
        ListenerRegistration registration =
                new ListenerRegistration(new Target(listener, source, tree), address, path, key);
        boolean registered = false;
        try {
            // Itself as the source too: the native side must not keep the user's object.
            Setting.addRemoveListener(registration, address, path, key, registration);
            registered = true;
        } finally {
            if (!registered)
                registration.end();
        }
        return registration;
    }

    @Override
    public void close() {
        Target ended = current.getAndSet(null);
        if (ended == null)
            return;
        try {
            Setting.addRemoveListener(null, address, path, key, this);
        } catch (SettingException | RuntimeException entryGone) {
            // The entry has been removed, or another has taken its place: nothing to take out.
        } finally {
            ended.tree().letGo();
        }
    }

    @Override
    public void settingChanged(SettingChangeEvent event) {
        Target target = current.get();
        SettingChangeEvent forUser = ((Delivery) event).forUser;
        if (target != null && forUser != null)
            target.listener().settingChanged(forUser);
    }

    @Override
    public void settingAdded(SettingChangeEvent event) {
        Target target = current.get();
        SettingChangeEvent forUser = ((Delivery) event).forUser;
        if (target != null && forUser != null)
            target.listener().settingAdded(forUser);
    }

    @Override
    public void settingRemoved(SettingChangeEvent event) {
        Target target = current.get();
        SettingChangeEvent forUser = ((Delivery) event).forUser;
        if (leadsHere(event))
            end();
        if (target != null && forUser != null)
            target.listener().settingRemoved(forUser);
    }

    @Override
    public SettingChangeEvent createEvent(
            Object source, String[] eventPath, String name, String unused, boolean isNode) {
        Target target = current.get();
        if (target == null)
            return null;
        SettingChangeEvent forUser = null;
        try {
            forUser = target.listener().createEvent(
                    target.source(), eventPath, name, unused, isNode);
        } catch (RuntimeException | Error dropped) {
            // The listener hears nothing, but the registration has to: it may be its end.
        }
        return new Delivery(this, List.of(eventPath), name, isNode, forUser);
    }

    private void end() {
        Target ended = current.getAndSet(null);
        if (ended != null)
            ended.tree().letGo();
    }

    /** Whether the removed entry is the one registered on, or holds it. */
    private boolean leadsHere(SettingChangeEvent removed) {
        List<String> here = Arrays.asList(path);
        int depth = removed.path().size();
        if (depth > path.length || !here.subList(0, depth).equals(removed.path()))
            return false;
        return removed.name().equals(depth < path.length ? path[depth] : key);
    }

    /** An event with the one that the user's listener made of it, which may say anything. */
    private static final class Delivery extends SettingChangeEvent {
        final SettingChangeEvent forUser;

        Delivery(Object source, List<String> path, String name, boolean node,
                SettingChangeEvent forUser) {
            super(source, path, name, node);
            this.forUser = forUser;
        }
    }
}
