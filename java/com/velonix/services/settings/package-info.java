/**
 * Typed settings in levels, shared by Java and native code.
 *
 * <p><b>Tree.</b> Settings form a tree: a node has children, a key holds values. {@link
 * com.velonix.services.settings.SettingPath} names a place for a node, {@link
 * com.velonix.services.settings.Setting} a key. The process has one tree; trees of their own are
 * read from a file or made from nothing.
 *
 * <p><b>Level.</b> A key may have a value at each {@link
 * com.velonix.services.settings.SettingLevel}; the value in effect is that of the highest level
 * that has one. All values of a key are of one type: String, Boolean, the signed and unsigned
 * integers of 8 to 64 bits, Float and Double, or an array of one of these.
 *
 * <p><b>Handle.</b> A root owns a native handle and is closed; whatever was reached from it ends
 * with it. Registrations and transactions are closed by themselves.
 *
 * <p><b>Event.</b> A {@link com.velonix.services.settings.SettingListener} hears of what happens to
 * an entry and below it. A {@link com.velonix.services.settings.ValueValidator} refuses values
 * before they are stored.
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
 * argument is refused with {@link java.lang.NullPointerException}, the use of something closed with
 * {@link java.lang.IllegalStateException}. All classes may be used by any number of threads unless
 * they say otherwise.
 */
package com.velonix.services.settings;
