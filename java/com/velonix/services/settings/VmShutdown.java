package com.velonix.services.settings;

import java.lang.invoke.MethodHandle;
import java.lang.invoke.MethodHandleProxies;
import java.lang.invoke.MethodHandles;
import java.lang.invoke.MethodType;
import java.nio.ByteBuffer;
import java.util.concurrent.ForkJoinPool;
import java.util.concurrent.ForkJoinTask;

/**
 * Tells the native side that the Java machine is going down. The machine keeps shutdown hooks until
 * its end, so the hook must not keep this class, and with it the native library, from being
 * unloaded: the hook and what makes it consist of the machine's own classes only.
 */
final class VmShutdown {
    private VmShutdown() {}

    /**
     * Registers a shutdown hook that sets the first byte of the flag to 1.
     *
     * @throws IllegalStateException if the machine is already going down
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
        runFromMachineClassesOnly(runnable(
                MethodHandles.collectArguments(addHook.bindTo(Runtime.getRuntime()), 0, makeHook)));
    }

    /** The class made for the action belongs to the thread's class loader, so not to ours. */
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
     * A new thread remembers the protection domains, and so the class loaders, of all callers that
     * are on the stack when it is made; on a pool's thread there are none of ours.
     */
    private static void runFromMachineClassesOnly(Runnable action) {
        ForkJoinPool pool = new ForkJoinPool(1);
        try {
            pool.invoke(ForkJoinTask.adapt(action));
        } finally {
            pool.shutdown();
        }
    }
}
