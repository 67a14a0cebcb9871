import java.io.File;
import java.io.PrintWriter;
import org.jacoco.core.analysis.Analyzer;
import org.jacoco.core.analysis.CoverageBuilder;
import org.jacoco.core.analysis.IClassCoverage;
import org.jacoco.core.analysis.ICounter;
import org.jacoco.core.tools.ExecFileLoader;

/**
 * Says what of a jar the tests have reached. Arguments: what was recorded, the jar, and the file
 * for the lines that were not reached, or in which not every branch was taken.
 */
public final class JavaCoverage {
    private JavaCoverage() {}

    public static void main(String[] arguments) throws Exception {
        ExecFileLoader recorded = new ExecFileLoader();
        recorded.load(new File(arguments[0]));
        CoverageBuilder classes = new CoverageBuilder();
        new Analyzer(recorded.getExecutionDataStore(), classes).analyzeAll(new File(arguments[1]));
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
}
