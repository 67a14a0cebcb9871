package soak;

import java.io.IOException;
import java.io.InputStream;
import java.net.HttpURLConnection;
import java.net.URL;
import java.nio.charset.StandardCharsets;

/** A thread that requests an application again and again and checks every response. */
final class Client extends Thread {
    private static final int MOST_REQUESTS = 100_000;

    private final String url;
    private final boolean mayBeMissing;
    private volatile boolean stopped;
    private long last;
    private int answered;
    private int missing;
    private String failure;

    /**
     * Starts the thread.
     *
     * @param key a key that no other client uses
     * @param mayBeMissing true if the application is undeployed at times
     */
    Client(int port, String application, String key, boolean mayBeMissing) {
        url = "http://localhost:" + port + "/" + application + "/?key=" + key + "&value=";
        this.mayBeMissing = mayBeMissing;
        start();
    }

    /** Waits for the last response. Throws AssertionError if any response was not as expected. */
    void end() throws InterruptedException {
        stopped = true;
        join();
        if (failure != null)
            throw new AssertionError(failure);
        if (answered == 0)
            throw new AssertionError(url + " has answered nothing");
    }

    int answered() {
        return answered;
    }

    int missing() {
        return missing;
    }

    @Override
    public void run() {
        try {
            while (!stopped && failure == null && answered + missing < MOST_REQUESTS) {
                request(last + 1);
            }
        } catch (IOException | RuntimeException failed) {
            failure = url + ": " + failed;
        }
    }

    private void request(long value) throws IOException {
        HttpURLConnection connection =
                (HttpURLConnection) new URL(url + value).openConnection();
        int status = connection.getResponseCode();
        boolean right = status == HttpURLConnection.HTTP_OK;
        try (InputStream body = right ? connection.getInputStream() : connection.getErrorStream()) {
            byte[] bytes = body == null ? new byte[0] : body.readAllBytes();
            String text = new String(bytes, StandardCharsets.UTF_8);
            if (right && text.equals(String.valueOf(last))) {
                last = value;
                answered++;
            } else if (mayBeMissing && (status == HttpURLConnection.HTTP_NOT_FOUND
                               || status == HttpURLConnection.HTTP_UNAVAILABLE)) {
                missing++;
            } else {
                failure = url + value + ", expected " + last + ": status " + status + ", " + text;
            }
        }
    }
}
