package demo;

import com.velonix.services.settings.SettingPath;
import java.nio.file.Path;

/**
 * Shows the settings API on a file, then on the settings of the process, whose directories come
 * from the environment (SETTINGS_FACTORYDIR, SETTINGS_WORKGROUPDIR, SETTINGS_USERDIR). A second run
 * reads the values that the first one has set. The argument is the folder with the example data.
 */
public final class Demo {
    private Demo() {}

    public static void main(String[] arguments) throws Exception {
        if (arguments.length != 1) {
            System.err.println("Usage: Demo FOLDER_WITH_EXAMPLE_DATA");
            System.exit(2);
        }
        Path data = Path.of(arguments[0]);
        try (SettingPath application = SettingPath.load(data.resolve("application.xml"))) {
            heading("A settings file, with effective values and their levels");
            TreePrinter.print(application);
            heading("Reading single keys");
            Reading.show(application);
            heading("Files and paths that cannot be read");
            Reading.showFailures(application, data.resolve("bad"));
            heading("Copying and removing");
            Changing.showStructure(application);
        }
        try (SettingPath process = SettingPath.processRoot()) {
            heading("The settings of the process, from " + process.factoryDir().getFileName());
            TreePrinter.print(process);
            heading("Values of an earlier run at the user level");
            Reading.showUserLevel(process.path("editor"));
            heading("Changing values, with listeners on a key and on a node");
            Changing.showValues(process);
            heading("Transactions: all or nothing");
            Changing.showTransactions(process);
            heading("A change by a native thread, received in Java");
            NativeSolver.show(process);
        }
    }

    private static void heading(String text) {
        System.out.println("\n== " + text);
    }
}
