package com.velonix.services.settings;

import com.velonix.util.types.UnsignedByte;
import com.velonix.util.types.UnsignedInteger;
import com.velonix.util.types.UnsignedLong;
import com.velonix.util.types.UnsignedShort;
import java.util.List;

/**
 * Initialises all classes with a static initialiser that opening, reading and changing a tree need.
 * {@link NativeLibrary} does so when it loads the libraries, and gives the reason.
 */
final class EagerInitialisation {
    private EagerInitialisation() {}

    static void initialise() throws Exception {
        for (Class<?> type : List.of(SettingLevel.class, TreeHandle.class, SharedTree.class,
                     SharedListener.class, ValueTypes.class, ValueKinds.class,
                     PrimitiveArrays.class, ChangeCounters.class, NativeLane.class,
                     ServiceProblems.class, SettingProblems.class, SettingProblem.class,
                     ValidatorName.class, SettingValidator.class, SettingTransaction.State.class,
                     SettingTransaction.Deletion.class, SingleKindListener.Kind.class,
                     UnsignedByte.class, UnsignedShort.class, UnsignedInteger.class,
                     UnsignedLong.class)) {
            initialise(type);
        }
    }

    private static void initialise(Class<?> type) throws ClassNotFoundException {
        Class.forName(type.getName(), true, type.getClassLoader());
    }
}
