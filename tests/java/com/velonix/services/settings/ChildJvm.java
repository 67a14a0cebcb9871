package com.velonix.services.settings;

import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.Map;

/** Runs programs in a JVM of their own. */
final class ChildJvm {
    private ChildJvm() {}

    /**
     * Runs a program of the tests to its end.
     *
     * @param folder the folder for its temporary files
     * @param jar the jar or folder with the Java API
     * @return the output of the program
     */
    static String run(Class<?> program, Path folder, String jar, String... options)
            throws Exception {
        return outputOf(builder(program, folder, jar, options), folder);
    }

    /**
     * Runs a program with the classes and libraries of this process, and further variables of the
     * environment.
     */
    static String run(Class<?> program, Path folder, Map<String, String> environment)
            throws Exception {
        ProcessBuilder builder = builder(program, folder, apiClasses(), librariesOption());
        builder.environment().putAll(environment);
        return outputOf(builder, folder);
    }

    /** Starts a program with the classes of this process. The caller ends it. */
    static Process start(Class<?> program, Path folder, String... options) throws Exception {
        return builder(program, folder, apiClasses(), options).start();
    }

    private static String outputOf(ProcessBuilder builder, Path folder) throws Exception {
        Path output = folder.resolve("output");
        builder.redirectOutput(output.toFile()).start().waitFor();
        String text = Files.readString(output);
        Files.delete(output);
        return text;
    }

    private static ProcessBuilder builder(
            Class<?> program, Path folder, String jar, String... options) throws Exception {
        List<String> command = new ArrayList<>();
        command.add(Path.of(System.getProperty("java.home"), "bin", "java").toString());
        command.addAll(List.of("-Xcheck:jni", "--enable-native-access=ALL-UNNAMED"));
        command.add("-Djava.io.tmpdir=" + folder);
        command.addAll(List.of(options));
        command.addAll(List.of("-cp", jar + ":" + sourceOf(program), program.getName()));
        return new ProcessBuilder(command).redirectErrorStream(true);
    }

    /** Runs a program with the classes and libraries of this process. */
    static String run(Class<?> program, Path folder) throws Exception {
        return run(program, folder, Map.of());
    }

    /** Returns the option that names the libraries of this process. */
    static String librariesOption() {
        return "-Djava.library.path=" + System.getProperty("java.library.path");
    }

    static String apiClasses() throws Exception {
        return sourceOf(Setting.class);
    }

    private static String sourceOf(Class<?> type) throws Exception {
        return Path.of(type.getProtectionDomain().getCodeSource().getLocation().toURI()).toString();
    }
}
