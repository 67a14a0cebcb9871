/**
 * Tests of programs that use the settings.
 *
 * <p>{@link com.velonix.services.settings.testing.FreshTree} gives each test a tree of its own, and
 * such tests may run in parallel. {@link com.velonix.services.settings.testing.FreshProcessRoot}
 * empties the settings of the process before each test, for code that asks for these; such tests
 * run one at a time. {@link com.velonix.services.settings.testing.TestSettings} does the latter
 * without JUnit. Nothing is read from the disk or written to it.
 */
package com.velonix.services.settings.testing;
