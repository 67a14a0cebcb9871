package com.velonix.services.settings;

import java.util.List;

/**
 * The description of a key or a node, which settings files supply. A text is empty if no file gives
 * it.
 *
 * @param title a short name for people
 * @param text one or more sentences
 * @param unit the unit of a key's values, such as {@code pt}
 * @param deprecated why the entry should not be used any more
 * @param replacedBy the dotted path of the entry to use instead
 * @param replaces the dotted path under which values of the key were stored formerly
 * @param constraint the constraint of a key's values, such as {@code range 1..72}; of a validator
 *     in Java, {@code java}, its class and its argument
 * @param choices the values that a key may have; empty if they are not limited to some
 */
public record SettingDescription(String title, String text, String unit, String deprecated,
        String replacedBy, String replaces, String constraint, List<Choice> choices) {
    /**
     * A value that a key may have.
     *
     * @param value the value as the text of a settings file
     * @param label a text for people; may be empty
     */
    public record Choice(String value, String label) {}
}
