package com.velonix.services.settings;

import java.nio.ByteBuffer;

/**
 * Natives of this API's own, beside those of {@link Setting}, {@link SettingPath}, {@link
 * SettingLevel}, {@link SettingTransaction} and {@link SettingTestEnvironment}, which are the
 * contract between Java and the library. These here take plain arguments, and answer that nothing
 * was done whenever anything is out of the ordinary; the caller then uses a native of the contract,
 * which raises what there is to raise. {@code nativesettings/lane.h} is the other side.
 */
final class NativeLane {
    private NativeLane() {}

    /**
     * The memory of the service's change counters, which stays valid for ever.
     *
     * @return null when the settings service has no such counters
     */
    static native ByteBuffer changeCounters();

    /**
     * Whether the last native call of this thread did nothing because the Java machine is going
     * down.
     */
    static native boolean wasRefused();
}
