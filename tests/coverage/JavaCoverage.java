import java.io.File;
import java.io.IOException;
import java.io.InputStream;
import java.io.PrintWriter;
import java.util.Collections;
import java.util.jar.JarEntry;
import java.util.jar.JarFile;
import org.jacoco.core.analysis.Analyzer;
import org.jacoco.core.analysis.CoverageBuilder;
import org.jacoco.core.analysis.IClassCoverage;
import org.jacoco.core.analysis.ICounter;
import org.jacoco.core.tools.ExecFileLoader;

/**
 * Prints the lines and branches of a jar that the tests cover. Arguments: the recorded execution
 * data, the jar, and the output file for the lines that are not covered, or only in part.
 */
public final class JavaCoverage {
    private JavaCoverage() {}

    public static void main(String[] arguments) throws Exception {
        ExecFileLoader recorded = new ExecFileLoader();
        recorded.load(new File(arguments[0]));
        CoverageBuilder classes = new CoverageBuilder();
        Analyzer analyzer = new Analyzer(recorded.getExecutionDataStore(), classes);
        try (JarFile jar = new JarFile(arguments[1])) {
            for (JarEntry entry : Collections.list(jar.entries())) {
                if (entry.getName().endsWith(".class"))
                    analyze(analyzer, jar, entry);
            }
        }
        int lines = 0, covered = 0, branches = 0, taken = 0;
        try (PrintWriter out = new PrintWriter(arguments[2])) {
            for (IClassCoverage each : classes.getClasses()) {
                lines += each.getLineCounter().getTotalCount();
                covered += each.getLineCounter().getCoveredCount();
                branches += each.getBranchCounter().getTotalCount();
                taken += each.getBranchCounter().getCoveredCount();
                for (int line = each.getFirstLine(); line <= each.getLastLine(); ++line) {
                    int status = each.getLine(line).getStatus();
                    if (status == ICounter.NOT_COVERED || status == ICounter.PARTLY_COVERED) {
                        out.printf("%s/%s:%d%s%n", each.getPackageName(), each.getSourceFileName(),
                                line, status == ICounter.PARTLY_COVERED ? " (partly)" : "");
                    }
                }
            }
        }
        System.out.printf(
                "lines: %.1f%% (%d out of %d)%n", 100.0 * covered / lines, covered, lines);
        System.out.printf(
                "branches: %.1f%% (%d out of %d)%n", 100.0 * taken / branches, taken, branches);
    }

    private static void analyze(Analyzer analyzer, JarFile jar, JarEntry entry) throws IOException {
        try (InputStream bytes = jar.getInputStream(entry)) {
            analyzer.analyzeClass(bytes, entry.getName());
        } catch (IOException failed) {
            // The distribution's analyzer and agent do not support sealed types, so there is no
            // execution data for them.
            if (!(failed.getCause() instanceof UnsupportedOperationException))
                throw failed;
            System.out.println("not counted: " + entry.getName());
        }
    }
}
