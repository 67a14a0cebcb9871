package com.velonix.services.settings;

/**
 * One value on its way between Java and the settings service: the value with its class, or a class
 * alone where a key has a type but no value. Programs read and write through {@link Setting} and
 * need this class only when they look at the bridge itself. Immutable.
 */
public class SettingInfo {
    private final Object value;
    private final Class<?> type;

    /**
     * A value.
     *
     * @param value the value, or null for neither value nor type
     */
    public SettingInfo(Object value) {
        this.value = value;
        this.type = value == null ? null : value.getClass();
    }

    /**
     * A type without a value.
     *
     * @param type the class of the values, or null when it is not known
     */
    public SettingInfo(Class<?> type) {
        this.value = null;
        this.type = type;
    }

    /**
     * The value.
     *
     * @return the value, or null when there is none
     */
    public Object getValue() {
        return value;
    }

    /**
     * The class of the value, or the declared class of the key.
     *
     * @return the class, or null when it is not known
     */
    public Class<?> getType() {
        return type;
    }

    @Override
    public String toString() {
        return value != null ? value.toString() : type != null ? type.getSimpleName() : "no value";
    }
}
