import com.velonix.services.settings.SettingInfo;

/** A SettingInfo whose getters throw. */
public class ThrowingInfo extends SettingInfo {
    private final boolean valueThrows;

    public ThrowingInfo(boolean valueThrows) {
        super((Object) null);
        this.valueThrows = valueThrows;
    }

    @Override
    public Object getValue() {
        if (valueThrows) {
            throw new IllegalStateException("getValue");
        }
        return null;
    }

    @Override
    public Class<?> getType() {
        throw new IllegalStateException("getType");
    }
}
