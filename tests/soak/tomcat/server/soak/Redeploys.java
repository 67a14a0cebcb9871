package soak;

import java.io.IOException;
import java.lang.ref.WeakReference;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.Callable;
import org.apache.catalina.Context;
import org.apache.catalina.core.StandardHost;
import org.apache.catalina.startup.HostConfig;
import org.apache.catalina.startup.Tomcat;

/**
 * Runs a Tomcat with two applications that contain the jar. One stays; the other is undeployed and
 * deployed again while clients request both. Arguments: the archive of the applications, the folder
 * of the server, and the number of redeployments.
 */
public final class Redeploys {
    private static final long PATIENCE_MILLIS = 60_000;
    private static final int REDEPLOYS_BEFORE_COUNTING = 3, CLIENTS_OF_EACH = 2;
    private static final String GUEST = "guest", RESIDENT = "resident";

    private final Path archive;
    private final Path applications;
    private final Tomcat tomcat = new Tomcat();
    private final StandardHost host;
    private final HostConfig deployer = new HostConfig();
    private final List<WeakReference<ClassLoader>> loaders = new ArrayList<>();
    private int answered;
    private int missing;

    private Redeploys(Path archive, Path folder) throws Exception {
        this.archive = archive;
        applications = Files.createDirectories(folder.resolve("webapps"));
        tomcat.setBaseDir(folder.toString());
        tomcat.setPort(0);
        tomcat.getConnector().setProperty("maxThreads", "4");
        tomcat.getConnector().setProperty("minSpareThreads", "4");
        host = (StandardHost) tomcat.getHost();
        host.setAutoDeploy(false);
        host.addLifecycleListener(deployer);
        tomcat.start();
        deploy(RESIDENT);
        deploy(GUEST);
    }

    public static void main(String[] arguments) throws Exception {
        System.setProperty("http.keepAlive", "false");
        int status = 1;
        try {
            new Redeploys(Path.of(arguments[0]), Path.of(arguments[1]))
                    .run(Integer.parseInt(arguments[2]));
            status = 0;
        } catch (Exception | AssertionError failed) {
            failed.printStackTrace(System.out);
        }
        // Threads of the server and of clients may still run.
        System.exit(status);
    }

    private void run(int times) throws Exception {
        redeployUnderLoad(REDEPLOYS_BEFORE_COUNTING);
        Usage before = Usage.now();
        long librariesBefore = libraries();
        redeployUnderLoad(times - REDEPLOYS_BEFORE_COUNTING);
        await("threads and open files are as before", () -> {
            Usage now = Usage.now();
            return now.threads() <= before.threads() && now.files() <= before.files();
        });
        Usage after = Usage.now();
        report("libraries mapped", librariesBefore, libraries());
        report("threads", before.threads(), after.threads());
        report("open files", before.files(), after.files());
        report("global references", before.globals(), after.globals());
        report("kilobytes resident", before.kilobytes(), after.kilobytes());
        if (libraries() != librariesBefore)
            throw new AssertionError("more libraries are mapped than before");
        undeploy(GUEST);
        undeploy(RESIDENT);
        await("all class loaders are collected", () -> living() == 0);
        tomcat.stop();
        System.out.printf("redeploys in Tomcat: %d; requests answered: %,d, away: %,d; "
                        + "class loaders collected: %d%n",
                times, answered, missing, loaders.size());
    }

    /** Redeploys under requests, then waits until the loaders of undeployed ones are collected. */
    private void redeployUnderLoad(int times) throws Exception {
        List<Client> clients = new ArrayList<>();
        int port = tomcat.getConnector().getLocalPort();
        for (int i = 0; i < CLIENTS_OF_EACH; i++) {
            String key = "client" + loaders.size() + "x" + i;
            clients.add(new Client(port, RESIDENT, key, false));
            clients.add(new Client(port, GUEST, key, true));
        }
        for (int i = 0; i < times; i++) {
            undeploy(GUEST);
            deploy(GUEST);
        }
        for (Client client : clients) {
            client.end();
            answered += client.answered();
            missing += client.missing();
        }
        await("the class loaders of earlier deployments are collected", () -> living() == 2);
    }

    private void deploy(String name) throws Exception {
        Files.copy(archive, applications.resolve(name + ".war"));
        deployer.check("/" + name);
        Context context = (Context) host.findChild("/" + name);
        if (context == null || !context.getState().isAvailable())
            throw new AssertionError(name + " is not deployed");
        loaders.add(new WeakReference<>(context.getLoader().getClassLoader()));
    }

    private void undeploy(String name) throws IOException {
        Files.delete(applications.resolve(name + ".war"));
        deployer.check("/" + name);
        if (host.findChild("/" + name) != null)
            throw new AssertionError(name + " is still deployed");
    }

    private long living() {
        return loaders.stream().filter(loader -> loader.get() != null).count();
    }

    private static long libraries() throws IOException {
        // File names may be any bytes, so they are not decoded as UTF-8.
        return Files.readString(Path.of("/proc/self/maps"), StandardCharsets.ISO_8859_1)
                .lines()
                .filter(line -> line.contains(".so"))
                .map(line -> line.substring(line.indexOf('/')))
                .distinct()
                .count();
    }

    private static void report(String resource, long before, long after) {
        System.out.printf("%s: %,d after %d redeploys, %,d at the end%n", resource, before,
                REDEPLOYS_BEFORE_COUNTING, after);
    }

    private static void await(String condition, Callable<Boolean> state) throws Exception {
        long end = System.currentTimeMillis() + PATIENCE_MILLIS;
        while (!state.call()) {
            if (System.currentTimeMillis() > end)
                throw new AssertionError("not so: " + condition + "; now " + Usage.now());
            System.gc();
            Thread.sleep(10);
        }
    }
}
