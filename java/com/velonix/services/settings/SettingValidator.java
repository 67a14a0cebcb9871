package com.velonix.services.settings;

import java.lang.reflect.InvocationTargetException;
import java.util.List;
import java.util.Map;
import java.util.Optional;
import java.util.concurrent.ConcurrentHashMap;

/**
 * Finds and runs the validator that two strings name: a class that implements {@link
 * ValueValidator}, and the argument of its constructor. Called by the settings service, on any
 * thread.
 */
final class SettingValidator {
    /** Instances by argument, stored with their class, so that they keep no class loader alive. */
    private static final ClassValue<Map<String, ValueValidator>> INSTANCES = new ClassValue<>() {
        @Override
        protected Map<String, ValueValidator> computeValue(Class<?> type) {
            return new ConcurrentHashMap<>();
        }
    };

    private SettingValidator() {}

    /**
     * Returns null if the value is valid, else the reason why not.
     *
     * @throws ClassNotFoundException if there is no class of the name, or a class that the
     *         validator
     *     needs is missing, for instance because its class loader has been closed. The service then
     *     asks the other class loaders that have loaded this API
     */
    static String validate(String className, String argument, long runtimeContext, String[] path,
            String name, Object value) throws ReflectiveOperationException {
        try {
            ValueValidator validator = instance(find(className), argument);
            Optional<String> problem = validator.problem(
                    new ValidationContext(List.of(path), name, runtimeContext, value));
            if (problem == null)
                throw new IllegalStateException(
                        className + " returned null instead of an Optional");
            return problem.orElse(null);
        } catch (NoClassDefFoundError missing) {
            throw new ClassNotFoundException(
                    className + " needs a class that cannot be loaded: " + missing.getMessage());
        }
    }

    static ValueValidator instance(Class<? extends ValueValidator> type, String argument)
            throws ReflectiveOperationException {
        Map<String, ValueValidator> instances = INSTANCES.get(type);
        ValueValidator known = instances.get(argument);
        if (known != null)
            return known;
        // Made outside the map, because the constructor may validate another value.
        ValueValidator made = make(type, argument);
        ValueValidator earlier = instances.putIfAbsent(argument, made);
        return earlier == null ? made : earlier;
    }

    private static ValueValidator make(Class<? extends ValueValidator> type, String argument)
            throws ReflectiveOperationException {
        try {
            return type.getConstructor(String.class).newInstance(argument);
        } catch (NoSuchMethodException missing) {
            throw new NoSuchMethodException(
                    type.getName() + " has no public constructor that takes a String");
        } catch (InvocationTargetException failed) {
            // The user needs the constructor's own exception, not the wrapper.
            if (failed.getCause() instanceof RuntimeException reason)
                throw reason;
            if (failed.getCause() instanceof NoClassDefFoundError missing)
                throw missing;
            throw new InvocationTargetException(failed.getCause(), failed.getCause().toString());
        }
    }

    /**
     * Returns the class, not yet initialised, from the API's own class loader or else from the
     * thread's.
     *
     * @throws ClassNotFoundException if there is none; the class of a loader that has loaded the
     *         API
     *     again counts as not found
     */
    private static Class<? extends ValueValidator> find(String className)
            throws ClassNotFoundException {
        Class<?> found;
        try {
            found = Class.forName(className, false, SettingValidator.class.getClassLoader());
        } catch (ClassNotFoundException elsewhere) {
            ClassLoader ofThread = Thread.currentThread().getContextClassLoader();
            try {
                found = Class.forName(className, false, ofThread);
            } catch (ClassNotFoundException | LinkageError nowhere) {
                // A loader that has the class and not this API cannot link it.
                throw new ClassNotFoundException("there is no class " + className);
            }
            if (seesAnotherApi(found.getClassLoader()))
                throw new ClassNotFoundException(className + " belongs to another class loader");
        }
        if (!ValueValidator.class.isAssignableFrom(found)) {
            throw new ClassCastException(
                    className + " does not implement " + ValueValidator.class.getName());
        }
        return found.asSubclass(ValueValidator.class);
    }

    private static boolean seesAnotherApi(ClassLoader loader) {
        String name = ValueValidator.class.getName();
        try {
            return Class.forName(name, false, loader) != ValueValidator.class;
        } catch (ClassNotFoundException none) {
            return false;
        }
    }
}
