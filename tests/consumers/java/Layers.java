import java.lang.module.Configuration;
import java.lang.module.ModuleFinder;
import java.nio.file.Path;
import java.util.Set;

/**
 * Opens a tree in each of two module layers that have a module of the settings of their own, as two
 * plug-ins do. The argument is the jar.
 */
public final class Layers {
    public static void main(String[] arguments) throws Exception {
        ModuleFinder jar = ModuleFinder.of(Path.of(arguments[0]));
        for (int i = 0; i < 2; ++i) {
            ModuleLayer boot = ModuleLayer.boot();
            Configuration found = boot.configuration().resolve(
                    jar, ModuleFinder.of(), Set.of("com.velonix.settings"));
            ModuleLayer layer =
                    boot.defineModulesWithOneLoader(found, ClassLoader.getPlatformClassLoader());
            Class<?> path = layer.findLoader("com.velonix.settings")
                                    .loadClass("com.velonix.services.settings.SettingPath");
            try (AutoCloseable root = (AutoCloseable) path.getMethod("processRoot").invoke(null)) {
                System.out.println(root);
            }
        }
    }

    private Layers() {}
}
