package com.velonix.services.settings.testing;

import java.lang.annotation.Documented;
import java.lang.annotation.ElementType;
import java.lang.annotation.Inherited;
import java.lang.annotation.Retention;
import java.lang.annotation.RetentionPolicy;
import java.lang.annotation.Target;
import org.junit.jupiter.api.extension.ExtendWith;

/**
 * Gives each test of a class, or one test, a tree of its own: a parameter of the class {@code
 * SettingPath} is the root of an empty tree in memory. A test and its methods {@code @BeforeEach}
 * and {@code @AfterEach} receive the same root, which is closed after the test. Such tests may run
 * in parallel.
 */
@Documented
@Inherited
@Retention(RetentionPolicy.RUNTIME)
@Target({ElementType.TYPE, ElementType.METHOD})
@ExtendWith(FreshTreeExtension.class)
public @interface FreshTree {}
