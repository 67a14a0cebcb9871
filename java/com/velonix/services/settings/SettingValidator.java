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
    /** Instances by argument. They live with their class, so they keep no class loader alive. */
    private static final ClassValue<Map<String, ValueValidator>> INSTANCES = new ClassValue<>() {
        @Override
        protected Map<String, ValueValidator> computeValue(Class<?> type) {
            return new ConcurrentHashMap<>();
        }
    };

    private SettingValidator() {}

    /**
     * Null when the value is valid, else the reason why not.
     *
     * @throws ClassNotFoundException if the validator cannot judge because there is no class of its
     *         name, or a class that it needs is missing, as after its class loader has been closed.
     *         The service then asks the other class loaders that have an API of their own
     */
    static String validate(String className, String argument, long runtimeContext, String[] path,
            String name, Object value) throws ReflectiveOperationException {
        try {
            ValueValidator validator = instance(find(className), argument);
            Optional<String> problem = validator.problem(
                    new ValidationContext(List.of(path), name, runtimeContext, value));
            if (problem == null)
                throw new IllegalStateException(className + " answered null");
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
        // Made outside the map: a constructor may do anything, also validate.
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
            // The reason that the constructor gave, not the wrapper, is what the user has to read.
            if (failed.getCause() instanceof RuntimeException reason)
                throw reason;
            if (failed.getCause() instanceof NoClassDefFoundError missing)
                throw missing;
            throw new InvocationTargetException(failed.getCause(), failed.getCause().toString());
        }
    }

    /**
     * Seen from the API's own class loader, else from the thread's; not yet initialised.
     *
     * @throws ClassNotFoundException if there is none; a class of a loader with another API counts
     *         as not found
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
