package com.velonix.services.settings.testing;

import java.lang.annotation.Documented;
import java.lang.annotation.ElementType;
import java.lang.annotation.Inherited;
import java.lang.annotation.Retention;
import java.lang.annotation.RetentionPolicy;
import java.lang.annotation.Target;
import org.junit.jupiter.api.extension.ExtendWith;
import org.junit.jupiter.api.parallel.ResourceLock;

/**
 * Empties the settings of the process before each test of a class, or before one test, as {@link
 * TestSettings#freshProcessRoot()} does, and keeps them in memory. A parameter of the class {@code
 * SettingPath} is their root, which is closed after the test.
 *
 * <p>The process has one tree of settings, so among the tests with this annotation one runs at a
 * time: they hold a lock of JUnit's.
 */
@Documented
@Inherited
@Retention(RetentionPolicy.RUNTIME)
@Target({ElementType.TYPE, ElementType.METHOD})
@ExtendWith(FreshProcessRootExtension.class)
@ResourceLock(FreshProcessRoot.LOCK)
public @interface FreshProcessRoot {
    /** The name of the lock, for tests that use the settings of the process without it. */
    String LOCK = "com.velonix.services.settings.processRoot";
}
