/** An exception whose getMessage() and toString() throw. */
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
