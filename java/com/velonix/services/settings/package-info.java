/**
 * Typed settings in levels, shared by Java and native code.
 *
 * <p><b>Tree.</b> Settings form a tree: a node has children, a key holds values. {@link
 * com.velonix.services.settings.SettingPath} is the path of a node, {@link
 * com.velonix.services.settings.Setting} a key. The process has one tree; other trees are read from
 * a file or made empty, and live in memory.
 *
 * <p><b>Level.</b> A key may have a value at each {@link
 * com.velonix.services.settings.SettingLevel}; the effective value is that of the highest level
 * that has one. All values of a key are of one type: String, Boolean, the signed and unsigned
 * integers of 8 to 64 bits, Float and Double, or an array of one of these.
 *
 * <p><b>Handle.</b> A root owns a native handle and must be closed; paths and settings made from it
 * are valid until then. Registrations and transactions are closed separately.
 *
 * <p><b>Event.</b> A {@link com.velonix.services.settings.SettingListener} receives the events of
 * an entry and of all entries below it. A {@link com.velonix.services.settings.ValueValidator}
 * refuses values before they are stored.
 *
 * <pre>{@code
 * try (SettingPath root = SettingPath.processRoot()) {
 *     Setting<Integer> size = root.path("editor").setting("fontSize", Integer.class);
 *     int now = size.get();
 *     size.set(now + 2);
 * }
 * }</pre>
 *
 * <p>Failures of settings are {@link com.velonix.services.settings.SettingException}s. A null
 * argument causes a {@link java.lang.NullPointerException}, the use of a closed object an {@link
 * java.lang.IllegalStateException}. All classes may be used by any number of threads unless their
 * documentation says otherwise.
 */
package com.velonix.services.settings;
