package com.velonix.services.settings;

import java.lang.reflect.Array;
import java.lang.reflect.Constructor;
import java.lang.reflect.Method;
import java.lang.reflect.Modifier;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.HashSet;
import java.util.List;
import java.util.Objects;
import java.util.Set;
import java.util.TreeSet;

/**
 * Calls every native method, with the built libraries and only the Java classes that the natives
 * name. Arguments: an empty directory for factory settings and one for the user's.
 */
public final class EveryNative {
    private static final Set<String> called = new HashSet<>();
    private static final String[] ROOT = null;
    private static final String[] N = {"n"};
    private static boolean failed;

    private EveryNative() {}

    private static void check(String nativeMethod, Object expected, Object actual) {
        called.add(nativeMethod);
        if (!Objects.deepEquals(expected, actual)) {
            failed = true;
            System.out.println(nativeMethod + ": expected " + expected + ", got " + actual);
        }
    }

    /** Runs an action and returns the class and message of its exception. */
    private static String failure(Runnable action) {
        try {
            action.run();
            return "none";
        } catch (Exception e) {
            return e.getClass().getSimpleName() + ": " + e.getMessage();
        }
    }

    private static Object unsigned(String type, Class<?> primitive, Object bits)
            throws ReflectiveOperationException {
        Constructor<?> constructor =
                Class.forName("com.velonix.util.types.Unsigned" + type)
                        .getDeclaredConstructor(primitive);
        constructor.setAccessible(true);
        return constructor.newInstance(bits);
    }

    private static void levels() {
        check("nativeGetSessionLevel", "session", SettingLevel.Helper.nativeGetSessionLevel());
        check("nativeGetUserLevel", "user", SettingLevel.Helper.nativeGetUserLevel());
        check("nativeGetFactoryLevel", "factory", SettingLevel.Helper.nativeGetFactoryLevel());
        check("nativeGetWorkgroupLevel", "workgroup",
                SettingLevel.Helper.nativeGetWorkgroupLevel());
        check("nativeGetDefaultLevel", "user", SettingLevel.Helper.nativeGetDefaultLevel());
        check("nativeCompareLevels", 1, SettingLevel.Helper.nativeCompareLevels("user", "factory"));
        check("nativeIsKeyNameValid", true, Setting.nativeIsKeyNameValid("a1"));
        check("nativeIsKeyNameValid", false, Setting.nativeIsKeyNameValid("1a"));
    }

    private static void values(long handle) throws ReflectiveOperationException {
        Object[] values = {
            "text", true, (byte) -7, unsigned("Byte", byte.class, (byte) -1), (short) -7,
            unsigned("Short", short.class, (short) -1), -7, unsigned("Integer", int.class, -1), -7L,
            unsigned("Long", long.class, -1L), 0.1f, 0.1
        };
        for (int i = 0; i < values.length; i++) {
            Object array = Array.newInstance(values[i].getClass(), 2);
            Array.set(array, 0, values[i]);
            Array.set(array, 1, values[i]);
            for (Object value : List.of(values[i], array)) {
                String key = "kind" + i + (value == array ? "array" : "");
                SettingPath.nativeAddKey(
                        handle, N, key, new SettingInfo(value), "user", null, null);
                SettingInfo read = Setting.nativeGet(handle, N, key, null);
                check("nativeGet", value, read.getValue());
                check("nativeGet", value.getClass(), read.getValue().getClass());
                Class<?> type = Setting.nativeGet(handle, N, key, "session").getType();
                check("nativeGet", value.getClass(), type);
            }
        }
    }

    private static void reading(long handle) {
        check("nativeGet", "SettingNotFoundException: n.none",
                failure(() -> Setting.nativeGet(handle, N, "none", null)));
        check("nativeGetLevel", "user", Setting.nativeGetLevel(handle, N, "k"));
        check("nativeIsSet", true, Setting.nativeIsSet(handle, N, "k", "user"));
        check("nativeIsSet", false, Setting.nativeIsSet(handle, N, "k", "session"));
        check("nativeExists", true, Setting.nativeExists(handle, N, "k"));
        check("nativeExists", false, Setting.nativeExists(handle, N, "none"));
        check("nativeIsChildNode", true, SettingPath.nativeIsChildNode(handle, ROOT, "n"));
        check("nativeIsChildNode", false, SettingPath.nativeIsChildNode(handle, N, "k"));
        check("nativeGetChildren", new String[] {"n"},
                SettingPath.nativeGetChildren(handle, ROOT, 0));
    }

    private static void changing(long handle) {
        RecordingListener listener = new RecordingListener();
        Setting.nativeAddRemoveListener("source", handle, N, null, listener);
        Setting.nativeSet(0, handle, N, "k", new SettingInfo(6), "session");
        check("nativeSet", 6, Setting.nativeGet(handle, N, "k", null).getValue());
        check("nativeSet", "SettingUnsupportedTypeRuntimeException: Unsupported type",
                failure(() -> Setting.nativeSet(
                        0, handle, N, "k", new SettingInfo(new Object()), "user")));
        Setting.nativeUnset(handle, N, "k", "session");
        check("nativeUnset", 5, Setting.nativeGet(handle, N, "k", null).getValue());
        String[] copy = {"n", "copy"};
        SettingPath.nativeCopySubtree(handle, N, handle, N, "copy");
        check("nativeCopySubtree", 5, Setting.nativeGet(handle, copy, "k", null).getValue());
        SettingPath.nativeDelete(handle, N, "copy");
        check("nativeDelete", false, Setting.nativeExists(handle, copy, null));
        check("nativeAddRemoveListener",
                "changed source[n]k null false; changed source[n]k null false; "
                        + "added source[n]copy null true; removed source[n]copy null true; ",
                listener.toString());
        Setting.nativeAddRemoveListener(null, handle, N, null, listener);
        Setting.nativeSet(0, handle, N, "k", new SettingInfo(7), "user");
        check("nativeAddRemoveListener", "", listener.toString());
    }

    private static void validated(long handle, String contextId) {
        SettingPath.nativeAddNode(handle, N, "guarded", "refuse", "why");
        String[] guarded = {"n", "guarded"};
        check("nativeAddNode", "SettingValidationException: why",
                failure(() -> SettingPath.nativeAddKey(
                        handle, guarded, "v", new SettingInfo("x"), "session", null, null)));
        check("nativeAddKey", "refuse why " + contextId + " [n, guarded] v x",
                SettingValidator.asked);
        check("nativeAddKey",
                "SettingValidationException: The Java validator (\"throw\", \"up\") failed: up",
                failure(() -> SettingPath.nativeAddKey(
                        handle, N, "w", new SettingInfo(1), "session", "throw", "up")));
    }

    private static void transaction(long handle) {
        long context = SettingTransaction.nativeCreateTransactionContext();
        check("nativeCreateTransactionContext", true, context != 0);
        Setting.nativeSet(context, handle, N, "k", new SettingInfo(8), null);
        check("nativeValidateTransaction", null,
                SettingTransaction.nativeValidateTransaction(context, "session"));
        check("nativeCommitTransaction", null,
                SettingTransaction.nativeCommitTransaction(context, "session"));
        check("nativeCommitTransaction", 8, Setting.nativeGet(handle, N, "k", null).getValue());
        Setting.nativeSet(context, handle, N, "k", new SettingInfo("eight"), null);
        List<?> problems = SettingTransaction.nativeCommitTransaction(context, "session");
        check("nativeCommitTransaction", true,
                problems.size() == 1 && problems.get(0).toString().startsWith("n.k because "));
        SettingTransaction.nativeDeleteTransactionContext(context);
        check("nativeDeleteTransactionContext", null, null);
    }

    private static void add(long handle) {
        SettingPath.nativeAddNode(handle, ROOT, "n", null, null);
        SettingPath.nativeAddKey(handle, N, "k", new SettingInfo(5), "user", null, null);
    }

    public static void main(String[] arguments) throws Exception {
        System.loadLibrary("nativesettings");
        check("nativeSetEnv", arguments[0],
                SettingTestEnvironment.nativeSetEnv(arguments[0], arguments[1]));
        levels();
        long standalone = SettingPath.nativeLoadSettings(null);
        add(standalone);
        reading(standalone);
        values(standalone);
        changing(standalone);
        validated(standalone, "0");
        check("nativeLoadSettings", true,
                failure(() -> SettingPath.nativeLoadSettings("/no/such.xml"))
                        .startsWith("FileNotFoundException: Settings file could not be loaded for "
                                + "\"/no/such.xml\": "));
        Path file = Path.of(arguments[1], "file.xml");
        Files.writeString(file, "<settings version=\"1\"><node name=\"f\"/></settings>");
        long loaded = SettingPath.nativeLoadSettings(file.toString());
        check("nativeLoadSettings", true, Setting.nativeExists(loaded, new String[] {"f"}, null));

        long process = SettingPath.nativeGetZvmRoot(0);
        long again = SettingPath.nativeGetZvmRoot(0);
        check("nativeGetZvmRoot", true, process != again);
        check("nativeGetPtrTarget", SettingPath.nativeGetPtrTarget(process),
                SettingPath.nativeGetPtrTarget(again));
        check("nativeGetFactoryDir", arguments[0], Setting.nativeGetFactoryDir(process));
        add(process);
        validated(process, "1");
        transaction(process);
        SettingTestEnvironment.nativeUnsetEnv();
        check("nativeUnsetEnv", null, null);
        for (long handle : new long[] {standalone, loaded, process, again, 0}) {
            SettingPath.nativeReleasePtr(handle);
        }
        check("nativeReleasePtr", null, null);

        Set<String> declared = new TreeSet<>();
        for (Class<?> owner : Arrays.asList(Setting.class, SettingPath.class,
                SettingLevel.Helper.class, SettingTransaction.class,
                SettingTestEnvironment.class)) {
            for (Method method : owner.getDeclaredMethods()) {
                if (Modifier.isNative(method.getModifiers())) {
                    declared.add(method.getName());
                }
            }
        }
        declared.removeAll(called);
        check("none", "[]", declared.toString());
        System.out.println(failed ? "a native failed" : "every native answered as it should");
    }
}
