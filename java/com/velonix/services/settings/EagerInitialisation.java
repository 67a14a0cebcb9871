package com.velonix.services.settings;

import com.velonix.util.types.UnsignedByte;
import com.velonix.util.types.UnsignedInteger;
import com.velonix.util.types.UnsignedLong;
import com.velonix.util.types.UnsignedShort;
import java.util.List;

/**
 * The classes with a static initialiser that opening, reading and changing a tree come to. They are
 * initialised all at once when the libraries are loaded, which {@link NativeLibrary} says why.
 */
final class EagerInitialisation {
    private EagerInitialisation() {}

    static void initialise() throws Exception {
        for (Class<?> type : List.of(SettingLevel.class, TreeHandle.class, SharedTree.class,
                     SharedListener.class, ValueTypes.class, ValueKinds.class, ChangeCounters.class,
                     NativeLane.class, ValidatorName.class, SettingValidator.class,
                     SettingTransaction.State.class, SettingTransaction.Deletion.class,
                     SingleKindListener.Kind.class, UnsignedByte.class, UnsignedShort.class,
                     UnsignedInteger.class, UnsignedLong.class)) {
            initialise(type);
        }
    }

    private static void initialise(Class<?> type) throws ClassNotFoundException {
        Class.forName(type.getName(), true, type.getClassLoader());
    }
}
