package com.velonix.services.settings;

import java.util.List;

class Setting {
    static native void nativeAddRemoveListener(
            Object source, long handle, String[] path, String key, SettingListener listener);

    static native SettingInfo nativeGet(long handle, String[] path, String key, String level);

    static native String nativeGetLevel(long handle, String[] path, String key);

    static native boolean nativeIsKeyNameValid(String name);

    static native boolean nativeIsSet(long handle, String[] path, String key, String level);

    static native boolean nativeExists(long handle, String[] path, String key);

    static native void nativeSet(
            long context, long handle, String[] path, String key, SettingInfo info, String level);

    static native void nativeUnset(long handle, String[] path, String key, String level);

    static native String nativeGetFactoryDir(long handle);
}

class SettingPath {
    static native void nativeAddNode(
            long handle, String[] path, String name, String first, String second);

    static native void nativeAddKey(
            long handle,
            String[] path,
            String name,
            SettingInfo info,
            String level,
            String first,
            String second);

    static native void nativeCopySubtree(
            long to, String[] toPath, long from, String[] fromPath, String name);

    static native void nativeDelete(long handle, String[] path, String name);

    static native long nativeGetZvmRoot(long session);

    static native long nativeGetPtrTarget(long handle);

    static native boolean nativeIsChildNode(long handle, String[] path, String name);

    static native long nativeLoadSettings(String file);

    static native void nativeReleasePtr(long handle);

    static native String[] nativeGetChildren(long handle, String[] path, int selector);
}

class SettingLevel {
    static class Helper {
        static native String nativeGetSessionLevel();

        static native String nativeGetUserLevel();

        static native String nativeGetFactoryLevel();

        static native String nativeGetWorkgroupLevel();

        static native String nativeGetDefaultLevel();

        static native int nativeCompareLevels(String first, String second);
    }
}

class SettingTransaction {
    static native long nativeCreateTransactionContext();

    static native void nativeDeleteTransactionContext(long context);

    static native List<?> nativeCommitTransaction(long context, String level);

    static native List<?> nativeValidateTransaction(long context, String level);
}

class SettingTestEnvironment {
    static native String nativeSetEnv(String factoryDir, String userDir);

    static native void nativeUnsetEnv();
}
