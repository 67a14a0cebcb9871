package com.velonix.services.settings.testing;

import com.velonix.services.settings.SettingPath;

/** The extension behind {@link FreshTree}. */
public final class FreshTreeExtension extends RootParameter {
    /** Makes the extension, for JUnit. */
    public FreshTreeExtension() {}

    @Override
    SettingPath open() {
        return SettingPath.standalone();
    }
}
