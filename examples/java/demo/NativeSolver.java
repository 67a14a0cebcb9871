package demo;

import com.velonix.services.settings.Registration;
import com.velonix.services.settings.Setting;
import com.velonix.services.settings.SettingPath;
import java.nio.file.Path;

/** Has a solver in C++ change a setting, and listens in Java. */
final class NativeSolver {
    private NativeSolver() {}

    static void show(SettingPath process) throws Exception {
        // The build puts the library beside the jar of this program.
        Path jar = Path.of(
                NativeSolver.class.getProtectionDomain().getCodeSource().getLocation().toURI());
        System.load(jar.resolveSibling(System.mapLibraryName("demo_solver")).toString());

        Setting<Double> tolerance = process.path("solver").setting("tolerance", Double.class);
        System.out.println("tolerance: " + tolerance.get() + ", read on the thread \""
                + Thread.currentThread().getName() + "\"");
        try (Registration heard = tolerance.onChanged(event
                     -> System.out.println("    heard: " + event + " changed, on the thread \""
                             + Thread.currentThread().getName() + "\""))) {
            relaxTolerance();
        }
        System.out.println("tolerance: " + tolerance.get());
    }

    /** Multiplies the tolerance by ten on a native thread, and waits for the thread. */
    private static native void relaxTolerance();
}
