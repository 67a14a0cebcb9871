package com.velonix.services.settings.testing;

import com.velonix.services.settings.SettingException;
import com.velonix.services.settings.SettingPath;
import org.junit.jupiter.api.extension.BeforeEachCallback;
import org.junit.jupiter.api.extension.ExtensionContext;

/** The extension behind {@link FreshProcessRoot}. */
public final class FreshProcessRootExtension extends RootParameter implements BeforeEachCallback {
    /** Makes the extension, for JUnit. */
    public FreshProcessRootExtension() {}

    /** Empties the settings of the process. */
    @Override
    public void beforeEach(ExtensionContext test) throws SettingException {
        TestSettings.freshProcessRoot().close();
    }

    @Override
    SettingPath open() {
        return SettingPath.processRoot();
    }
}
