package com.velonix.services.settings;

import java.util.ArrayList;
import java.util.List;

/** The changes of a transaction that the contract's natives cannot record. For one thread. */
final class RecordedChanges {
    /** The kinds of change, in the order of their numbers in {@link NativeLane}. */
    enum What { SET, UNSET, ADD_NODE, ADD_KEY, REMOVE, MOVE }

    private final List<Change> list = new ArrayList<>();

    /**
     * One change.
     *
     * @param target the path that an entry is moved to, or null
     * @param value a value as it is stored, or null
     * @param level null for the level of the commit
     */
    private record Change(What what, String path, String target, Object value, String level,
            String[] validator) {}

    boolean isEmpty() {
        return list.isEmpty();
    }

    void set(Setting<?> key, Object value, SettingLevel level) {
        add(What.SET, key.dotted(), null, ValueTypes.toStored(value, key.parent(), key.name()),
                level, ValidatorName.NONE);
    }

    void unset(Setting<?> key, SettingLevel level) {
        add(What.UNSET, key.dotted(), null, null, level, ValidatorName.NONE);
    }

    void addNode(SettingPath parent, String name, ValidatorName validator) {
        add(What.ADD_NODE, parent.dotted(name), null, null, null, validator);
    }

    void addKey(SettingPath parent, String name, Object value, SettingLevel level,
            ValidatorName validator) {
        add(What.ADD_KEY, parent.dotted(name), null, ValueTypes.toStored(value, parent, name),
                level, validator);
    }

    void remove(String path) {
        add(What.REMOVE, path, null, null, null, ValidatorName.NONE);
    }

    void move(String path, String target) {
        add(What.MOVE, path, target, null, null, ValidatorName.NONE);
    }

    /** Makes the changes after those of the context; the result is that of the native. */
    String[] apply(long root, long context, SettingLevel level, boolean isTrial) {
        int count = list.size();
        int[] what = new int[count];
        String[] paths = new String[count], targets = new String[count], levels = new String[count];
        Object[] values = new Object[count];
        String[][] validators = new String[count][];
        for (int i = 0; i < count; ++i) {
            Change change = list.get(i);
            what[i] = change.what().ordinal();
            paths[i] = change.path();
            targets[i] = change.target();
            values[i] = change.value();
            levels[i] = change.level();
            validators[i] = change.validator();
        }
        return NativeLane.applyChanges(root, context, level.levelName(), isTrial, what, paths,
                targets, values, levels, validators);
    }

    private void add(What what, String path, String target, Object value, SettingLevel level,
            ValidatorName validator) {
        String[] named = validator.className() == null
                ? null
                : new String[] {validator.className(), validator.argument()};
        list.add(new Change(
                what, path, target, value, level == null ? null : level.levelName(), named));
    }
}
