/** Changes of the process's settings on threads that the JVM did not make. */
public final class NativePublisher {
    static {
        System.loadLibrary("native_publisher");
    }

    /**
     * Sets the key at the given path, at the session level, on a native thread, and waits for it.
     */
    public static native void setOnce(String path, int value);

    /** Sets the key again and again on a detached native thread. */
    public static native void setForEver(String path);

    private NativePublisher() {}
}
