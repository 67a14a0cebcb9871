package com.velonix.services.settings;

import java.lang.invoke.MethodHandle;
import java.lang.invoke.MethodHandleProxies;
import java.lang.invoke.MethodHandles;
import java.lang.invoke.MethodType;
import java.nio.ByteBuffer;
import java.util.concurrent.ForkJoinPool;
import java.util.concurrent.ForkJoinTask;

/**
 * Tells the native side that the JVM is shutting down. The JVM keeps shutdown hooks until its end,
 * so a hook of a class of this API would keep the API and the native library from being unloaded.
 * Therefore the hook, and the code that registers it, consist of the JVM's own classes only.
 */
final class VmShutdown {
    private VmShutdown() {}

    /**
     * Registers a shutdown hook that sets the first byte of the flag to 1.
     *
     * @throws IllegalStateException if the JVM is already shutting down
     */
    static void install(ByteBuffer flag) throws ReflectiveOperationException {
        MethodHandles.Lookup lookup = MethodHandles.publicLookup();
        MethodHandle put = lookup.findVirtual(ByteBuffer.class, "put",
                MethodType.methodType(ByteBuffer.class, int.class, byte.class));
        Runnable setFlag = runnable(MethodHandles.insertArguments(put, 0, flag, 0, (byte) 1));

        MethodHandle makeThread = lookup.findConstructor(Thread.class,
                MethodType.methodType(void.class, ThreadGroup.class, Runnable.class, String.class,
                        long.class, boolean.class));
        MethodHandle makeHook = MethodHandles.insertArguments(
                makeThread, 0, null, setFlag, "settings shutdown", 0L, false);
        MethodHandle addHook = lookup.findVirtual(
                Runtime.class, "addShutdownHook", MethodType.methodType(void.class, Thread.class));
        runFromJvmClassesOnly(runnable(
                MethodHandles.collectArguments(addHook.bindTo(Runtime.getRuntime()), 0, makeHook)));
    }

    /** Returns the action as an object whose class belongs to the system's class loader. */
    private static Runnable runnable(MethodHandle action) {
        Thread thread = Thread.currentThread();
        ClassLoader own = thread.getContextClassLoader();
        thread.setContextClassLoader(ClassLoader.getSystemClassLoader());
        try {
            return MethodHandleProxies.asInterfaceInstance(Runnable.class, action);
        } finally {
            thread.setContextClassLoader(own);
        }
    }

    /**
     * Runs the action on a thread of a pool. A new thread keeps the protection domains, and so the
     * class loaders, of all callers on the stack; on the stack of the pool's thread none is ours.
     */
    private static void runFromJvmClassesOnly(Runnable action) {
        ForkJoinPool pool = new ForkJoinPool(1);
        try {
            pool.invoke(ForkJoinTask.adapt(action));
        } finally {
            pool.shutdown();
        }
    }
}
