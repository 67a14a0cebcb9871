package com.velonix.services.settings;

import java.lang.invoke.MethodHandle;
import java.lang.invoke.MethodHandles;
import java.lang.invoke.MethodType;
import java.util.List;

/**
 * Calls the private native methods of the API's classes, through constant method handles, which are
 * compiled to direct calls. The benchmark measures their cost by an empty native.
 */
final class Natives {
    private static final MethodHandle GET = find(Setting.class, "nativeGet", SettingInfo.class,
            long.class, String[].class, String.class, String.class);
    private static final MethodHandle SET = find(Setting.class, "nativeSet", void.class, long.class,
            long.class, String[].class, String.class, SettingInfo.class, String.class);
    private static final MethodHandle ADD_KEY =
            find(SettingPath.class, "nativeAddKey", void.class, long.class, String[].class,
                    String.class, SettingInfo.class, String.class, String.class, String.class);
    private static final MethodHandle ADD_NODE = find(SettingPath.class, "nativeAddNode",
            void.class, long.class, String[].class, String.class, String.class, String.class);
    private static final MethodHandle CHILDREN = find(SettingPath.class, "nativeGetChildren",
            String[].class, long.class, String[].class, int.class);
    private static final MethodHandle LISTEN =
            find(Setting.class, "nativeAddRemoveListener", void.class, Object.class, long.class,
                    String[].class, String.class, SettingListener.class);
    private static final MethodHandle CREATE =
            find(SettingTransaction.class, "nativeCreateTransactionContext", long.class);
    private static final MethodHandle DELETE = find(
            SettingTransaction.class, "nativeDeleteTransactionContext", void.class, long.class);
    private static final MethodHandle COMMIT = find(SettingTransaction.class,
            "nativeCommitTransaction", List.class, long.class, String.class);
    private static final MethodHandle EMPTY = find(Literal.class, "empty", void.class);

    private Natives() {}

    static SettingInfo get(long handle, String[] path, String key, String level) throws Throwable {
        return (SettingInfo) GET.invokeExact(handle, path, key, level);
    }

    static void set(long context, long handle, String[] path, String key, SettingInfo value,
            String level) throws Throwable {
        SET.invokeExact(context, handle, path, key, value, level);
    }

    static void addKey(long handle, String[] path, String name, Object value, String level)
            throws Throwable {
        String none = null;
        ADD_KEY.invokeExact(handle, path, name, new SettingInfo(value), level, none, none);
    }

    static void addNode(long handle, String[] path, String name) throws Throwable {
        String none = null;
        ADD_NODE.invokeExact(handle, path, name, none, none);
    }

    static String[] children(long handle, String[] path) throws Throwable {
        return (String[]) CHILDREN.invokeExact(handle, path, 0);
    }

    static void addListener(long handle, String[] path, String key, Object source,
            SettingListener listener) throws Throwable {
        LISTEN.invokeExact(source, handle, path, key, listener);
    }

    static long createContext() throws Throwable {
        return (long) CREATE.invokeExact();
    }

    static void deleteContext(long context) throws Throwable {
        DELETE.invokeExact(context);
    }

    static List<?> commit(long context, String level) throws Throwable {
        return (List<?>) COMMIT.invokeExact(context, level);
    }

    static void empty() throws Throwable {
        EMPTY.invokeExact();
    }

    private static MethodHandle find(
            Class<?> owner, String name, Class<?> result, Class<?>... arguments) {
        try {
            return MethodHandles.privateLookupIn(owner, MethodHandles.lookup())
                    .findStatic(owner, name, MethodType.methodType(result, arguments));
        } catch (ReflectiveOperationException missing) {
            throw new ExceptionInInitializerError(missing);
        }
    }
}
