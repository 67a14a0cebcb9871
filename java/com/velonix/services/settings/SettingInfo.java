package com.velonix.services.settings;

/**
 * A value passed between Java and the settings service: the value with its class, or the class
 * alone if a key has a type but no value. Programs use {@link Setting} instead; only the native
 * methods need this class. Immutable.
 */
public class SettingInfo {
    private final Object value;
    private final Class<?> type;

    /**
     * Makes an object with a value.
     *
     * @param value the value, or null for neither value nor type
     */
    public SettingInfo(Object value) {
        this.value = value;
        this.type = value == null ? null : value.getClass();
    }

    /**
     * Makes an object with a type and no value.
     *
     * @param type the class of the values, or null if it is not known
     */
    public SettingInfo(Class<?> type) {
        this.value = null;
        this.type = type;
    }

    /**
     * Returns the value.
     *
     * @return the value, or null if there is none
     */
    public Object getValue() {
        return value;
    }

    /**
     * Returns the class of the value, or the declared class of the key.
     *
     * @return the class, or null if it is not known
     */
    public Class<?> getType() {
        return type;
    }

    @Override
    public String toString() {
        return value != null ? value.toString() : type != null ? type.getSimpleName() : "no value";
    }
}
