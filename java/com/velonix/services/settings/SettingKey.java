package com.velonix.services.settings;

import java.util.Arrays;
import java.util.List;
import java.util.Objects;
import java.util.Optional;

/**
 * A setting that a program declares in its code: its path, the class of its values, its default
 * value and, if wanted, a validator. It needs no settings file.
 *
 * <pre>{@code
 * static final SettingKey<Integer> FONT_SIZE = SettingKey.of("editor.fontSize", 12);
 *
 * try (SettingPath root = SettingPath.processRoot()) {
 *     int now = FONT_SIZE.get(root);
 *     FONT_SIZE.set(root, now + 2);
 * }
 * }</pre>
 *
 * <p>The key and the nodes above it come into being in the tree with the first value that is set;
 * the default itself is not stored, so the next version of the program may have another one. Where
 * a settings file or an earlier run has defined the key, its values count before the default, and
 * its class must be the declared one.
 *
 * <p>Values are of the classes that a {@link Setting} has, or of an enum, whose constants are
 * stored as their names, or lists, which are stored as arrays. Immutable; any number of threads.
 *
 * @param <T> the class of the values
 */
public final class SettingKey<T> {
    private final String path;
    private final String[] nodes;
    private final String name;
    private final T defaultValue;
    private final StoredForm<T, Object> form;
    private final ValidatorName validator;

    @SuppressWarnings("unchecked")
    private SettingKey(String path, T defaultValue, StoredForm<T, ?> form, ValidatorName given) {
        String[] names = Objects.requireNonNull(path, "path").split("\\.", -1);
        for (String one : names) Names.checkNew(one);
        this.path = path;
        this.nodes = Arrays.copyOf(names, names.length - 1);
        this.name = names[names.length - 1];
        this.defaultValue = defaultValue;
        this.form = (StoredForm<T, Object>) form;
        this.validator = given == ValidatorName.NONE ? form.validator() : given;
        Object stored = ValueTypes.checkStored(this.form.toStored(defaultValue), path);
        Optional<String> problem = problem(stored);
        if (problem.isPresent()) {
            throw new IllegalArgumentException(
                    "The default of " + path + " is refused: " + problem.get());
        }
    }

    /**
     * Declares a setting.
     *
     * @param path the names that lead to it, joined with "."
     * @param defaultValue its value where no level has one; it decides the class of the values
     * @param <T> the class of the values
     * @return the declared setting
     * @throws IllegalArgumentException if the path has no valid names
     * @throws SettingUnsupportedTypeRuntimeException if no setting has values of that class
     */
    public static <T> SettingKey<T> of(String path, T defaultValue) {
        return new SettingKey<>(
                path, defaultValue, StoredForm.of(defaultValue), ValidatorName.NONE);
    }

    /**
     * Declares a setting with a validator, which judges every value that is set through this
     * object, and becomes the key's own validator if this object adds the key.
     *
     * @param path the names that lead to it, joined with "."
     * @param defaultValue its value where no level has one; it decides the class of the values
     * @param validator the validator's class
     * @param argument the argument of the validator's constructor
     * @param <T> the class of the values
     * @return the declared setting
     * @throws IllegalArgumentException if the path has no valid names, the validator does not
     *     accept the argument, or refuses the default
     * @throws SettingUnsupportedTypeRuntimeException if no setting has values of that class
     */
    public static <T> SettingKey<T> of(String path, T defaultValue,
            Class<? extends ValueValidator> validator, String argument) {
        return new SettingKey<>(path, defaultValue, StoredForm.of(defaultValue),
                ValidatorName.of(validator, argument));
    }

    /**
     * Declares a setting with a list of values.
     *
     * @param path the names that lead to it, joined with "."
     * @param element the class of the elements
     * @param defaults the list where no level has one
     * @param <E> the class of the elements
     * @return the declared setting
     * @throws IllegalArgumentException if the path has no valid names
     * @throws SettingUnsupportedTypeRuntimeException if no setting has arrays of that class
     */
    public static <E> SettingKey<List<E>> ofList(
            String path, Class<E> element, List<? extends E> defaults) {
        return new SettingKey<>(
                path, List.copyOf(defaults), StoredForm.OfList.of(element), ValidatorName.NONE);
    }

    /**
     * Returns the effective value, or the default if no level has one. Cached, as by {@link
     * Setting#get()}.
     *
     * @param root the node that the path begins at, such as {@link SettingPath#processRoot()}
     * @return the value
     * @throws SettingValidationException if the stored text is no constant of the enum
     * @throws SettingException if the settings service fails
     * @throws SettingUnsupportedTypeRuntimeException if the tree has the key with another class
     */
    public T get(SettingPath root) throws SettingException {
        Optional<Object> stored = stored(root).find();
        try {
            return stored.isPresent() ? form.fromStored(stored.get()) : defaultValue;
        } catch (IllegalArgumentException unknown) {
            throw new SettingValidationException(path + ": " + unknown.getMessage());
        }
    }

    /**
     * Sets the value at the default level, {@link SettingLevel#defaultLevel()}, and adds the key
     * if the tree does not have it.
     *
     * @param root the node that the path begins at
     * @param value the new value
     * @throws SettingValidationException if a validator refuses the value, or the tree has the key
     *     with another class
     * @throws SettingException if the change is refused or cannot be stored
     */
    public void set(SettingPath root, T value) throws SettingException {
        Object stored = form.toStored(Objects.requireNonNull(value, path));
        Optional<String> problem = problem(stored);
        if (problem.isPresent())
            throw new SettingValidationException(problem.get());
        if (trySetting(root, stored))
            return;
        SettingPath node = root.getOrAddNode(nodes);
        try {
            node.addKey(name, stored, SettingLevel.defaultLevel(), validator);
        } catch (SettingNameDuplicationException taken) {
            // Another thread or process has just added the key, or a node has the name.
            if (!trySetting(root, stored))
                throw taken;
        }
    }

    /**
     * Removes the value from the default level, if it has one.
     *
     * @param root the node that the path begins at
     * @return true if there was one
     * @throws SettingException if the change is refused or cannot be stored
     */
    public boolean reset(SettingPath root) throws SettingException {
        return stored(root).reset();
    }

    /**
     * Returns the key in a tree, with the values as they are stored.
     *
     * @param root the node that the path begins at
     * @return the key, which need not exist yet
     */
    public Setting<?> in(SettingPath root) {
        return stored(root);
    }

    /** {@return the names that lead to the key, joined with "."} */
    public String path() {
        return path;
    }

    /** {@return the value where no level has one} */
    public T defaultValue() {
        return defaultValue;
    }

    /** Returns the path. */
    @Override
    public String toString() {
        return path;
    }

    private Setting<Object> stored(SettingPath root) {
        return root.path(nodes).setting(name, form.storedClass());
    }

    /** Sets the value of the key if the tree has it. */
    private boolean trySetting(SettingPath root, Object stored) throws SettingException {
        try {
            stored(root).set(stored);
            return true;
        } catch (SettingNotFoundException missing) {
            return false;
        }
    }

    private Optional<String> problem(Object stored) {
        return validator.problem(List.of(nodes), name, stored);
    }
}
