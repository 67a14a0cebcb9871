/** An exception of somebody's who has made a mistake in telling about it. */
public class SpeechlessException extends RuntimeException {
    private static final long serialVersionUID = 1;

    @Override
    public String getMessage() {
        throw new IllegalStateException("getMessage");
    }

    @Override
    public String toString() {
        throw new IllegalStateException("toString");
    }
}
