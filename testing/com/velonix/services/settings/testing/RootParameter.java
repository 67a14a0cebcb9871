package com.velonix.services.settings.testing;

import com.velonix.services.settings.SettingPath;
import org.junit.jupiter.api.extension.ExtensionContext;
import org.junit.jupiter.api.extension.ExtensionContext.Store.CloseableResource;
import org.junit.jupiter.api.extension.ParameterContext;
import org.junit.jupiter.api.extension.ParameterResolutionException;
import org.junit.jupiter.api.extension.ParameterResolver;

/** The parameters of a test that receive a root. JUnit's store of the test owns the root. */
abstract class RootParameter implements ParameterResolver {
    /** Opens the root for a test. */
    abstract SettingPath open();

    /** Tells whether the parameter is a {@code SettingPath}. */
    @Override
    public boolean supportsParameter(ParameterContext parameter, ExtensionContext test) {
        return parameter.getParameter().getType() == SettingPath.class;
    }

    /** Returns the root of the test, the same one for all its methods. */
    @Override
    public Object resolveParameter(ParameterContext parameter, ExtensionContext test) {
        if (test.getTestMethod().isEmpty()) {
            throw new ParameterResolutionException("The settings are fresh for each test: \""
                    + parameter.getDeclaringExecutable()
                    + "\" runs for several. Take the parameter in @BeforeEach or in the test.");
        }
        return test.getStore(ExtensionContext.Namespace.create(RootParameter.class))
                .getOrComputeIfAbsent(SettingPath.class, type -> new OwnedRoot(open()),
                        OwnedRoot.class)
                .root();
    }

    private record OwnedRoot(SettingPath root) implements CloseableResource {
        @Override
        public void close() {
            root.close();
        }
    }
}
