package demo;

import com.velonix.services.settings.SettingPath;
import java.nio.file.Path;

/**
 * Shows the settings API at work: on a file of its own, then on the settings of the process, whose
 * directories come from the environment (SETTINGS_FACTORYDIR, SETTINGS_WORKGROUPDIR,
 * SETTINGS_USERDIR). A second run finds what the first one has set. The argument is the folder with
 * the example data.
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
            heading("A settings file, with the value in effect and the level that supplies it");
            TreePrinter.print(application);
            heading("Reading single keys");
            Reading.show(application);
            heading("What cannot be read");
            Reading.showFailures(application, data.resolve("bad"));
            heading("Copying and removing");
            Changing.showStructure(application);
        }
        try (SettingPath process = SettingPath.processRoot()) {
            heading("The settings of the process, from " + process.factoryDir().getFileName());
            TreePrinter.print(process);
            heading("What an earlier run has left at the user level");
            Reading.showUserLevel(process.path("editor"));
            heading("Changing values, with listeners on a key and on a node");
            Changing.showValues(process);
            heading("Transactions: all or nothing");
            Changing.showTransactions(process);
            heading("A change made by a native thread, heard in Java");
            NativeSolver.show(process);
        }
    }

    private static void heading(String text) {
        System.out.println("\n== " + text);
    }
}
