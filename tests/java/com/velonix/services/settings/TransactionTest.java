package com.velonix.services.settings;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.velonix.services.settings.validators.Range;
import java.util.ArrayList;
import java.util.List;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;

class TransactionTest {
    private SettingPath root;
    private SettingPath node;
    private Setting<Integer> size;
    private Setting<String> text;
    private SettingTransaction transaction;

    @BeforeEach
    void open() throws Exception {
        root = SettingPath.processRoot();
        node = root.addNode("transaction");
        size = node.addKey("size", 10, SettingLevel.USER, Range.class, "1..72");
        text = node.addKey("text", "before");
        transaction = new SettingTransaction();
    }

    @AfterEach
    void close() throws Exception {
        transaction.close();
        root.delete("transaction");
        root.close();
    }

    @Test
    void changesAreAppliedTogetherAtCommit() throws Exception {
        transaction.set(size, 20);
        transaction.set(text, "after");
        assertEquals(10, size.get());
        assertEquals(List.of(), transaction.validate());
        assertEquals(10, size.get());
        assertEquals(List.of(), transaction.commit(SettingLevel.SESSION));
        assertEquals(20, size.get(SettingLevel.SESSION));
        assertEquals("after", text.get());
        assertEquals("before", text.get(SettingLevel.USER));
    }

    @Test
    void oneRefusedChangeRefusesAll() throws Exception {
        transaction.set(text, "after");
        transaction.set(size, 100);
        for (int again = 0; again < 2; ++again) {
            List<SettingValidity> problems = transaction.commit(SettingLevel.USER);
            assertEquals(1, problems.size());
            assertEquals("transaction.size", problems.get(0).path());
            assertTrue(problems.get(0).reason().contains("100 is outside 1..72"));
            assertEquals(problems, transaction.validate());
        }
        assertEquals("before", text.get());
        assertEquals(10, size.get());
    }

    @Test
    void aReadOnlyLevelAndARemovedKeyAreProblems() throws Exception {
        transaction.set(text, "after");
        assertEquals(1, transaction.commit(SettingLevel.FACTORY).size());
        node.delete("text");
        List<SettingValidity> problems = transaction.commit(SettingLevel.USER);
        assertEquals(1, problems.size());
        assertTrue(problems.get(0).toString().contains("transaction.text"));
    }

    @Test
    void theLastChangeOfAKeyWinsAndACommitCanBeRepeated() throws Exception {
        assertEquals(List.of(), transaction.commit(SettingLevel.USER));
        transaction.set(size, 20);
        transaction.set(size, 30);
        transaction.commit(SettingLevel.USER);
        assertEquals(30, size.get());
        size.set(40);
        transaction.commit(SettingLevel.USER);
        assertEquals(30, size.get());
    }

    @Test
    void onlyExistingKeysOfTheProcessAreRecorded() throws Exception {
        try (SettingPath other = SettingPath.standalone()) {
            Setting<Integer> namesake = other.addNode("transaction").addKey("size", 1);
            assertThrows(IllegalArgumentException.class, () -> transaction.set(namesake, 2));
        }
        Exception missing = assertThrows(SettingNotFoundException.class,
                () -> transaction.set(node.setting("no", String.class), "x"));
        assertEquals("transaction.no", missing.getMessage());
        assertThrows(NullPointerException.class, () -> transaction.set(text, null));
        assertEquals(List.of(), transaction.commit(SettingLevel.USER));
    }

    @Test
    void aTransactionInUseOrClosedIsRefused() throws Exception {
        transaction.set(size, 20);
        List<String> heard = new ArrayList<>();
        try (Registration r = size.onChanged(event -> {
            Exception refused =
                    assertThrows(IllegalStateException.class, () -> transaction.set(size, 1));
            heard.add(refused.getMessage());
            transaction.close();
        })) {
            transaction.commit(SettingLevel.USER);
        }
        assertEquals(List.of("the transaction is in use"), heard);
        Exception refused = assertThrows(
                IllegalStateException.class, () -> transaction.commit(SettingLevel.USER));
        assertEquals("the transaction has been closed", refused.getMessage());
        assertEquals(20, size.get());
    }

    @Test
    void anUnreferencedTransactionReleasesItsChanges() throws Exception {
        String large = "x".repeat(8 << 20);
        recordAndForget(large);
        long before = Garbage.residentBytes();
        for (int i = 0; i < 60; ++i) {
            recordAndForget(large);
            System.gc();
        }
        // Together they held twice that.
        assertTrue(Garbage.collectedUntil(() -> Garbage.residentBytes() - before < 250L << 20),
                "the recorded changes are still there");
    }

    private void recordAndForget(String value) throws SettingException {
        new SettingTransaction().set(text, value);
    }
}
