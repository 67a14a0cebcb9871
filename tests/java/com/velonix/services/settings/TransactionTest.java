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

    @Test
    void entriesAndValuesOfSeveralLevelsChangeTogether() throws Exception {
        transaction.set(size, 20); // through the contract, before the others
        SettingPath below = transaction.addNode(node, "below");
        Setting<Integer> added = transaction.addKey(below, "added", 5, Range.class, "1..9");
        transaction.set(added, 6);
        transaction.set(text, "for now", SettingLevel.SESSION);
        transaction.unset(text, SettingLevel.USER);
        Setting<int[]> numbers = transaction.addKey(node, "numbers", new int[] {1, 2});
        assertEquals(List.of(), transaction.validate());
        assertEquals(List.of("size", "text"), node.children());
        assertEquals(List.of(), transaction.commit(SettingLevel.USER));
        assertEquals(6, added.get());
        assertEquals(20, size.get());
        assertEquals("for now", text.get());
        assertTrue(text.find(SettingLevel.USER).isEmpty());
        assertEquals(2, numbers.get()[1]);
        // Again: the node is there already, so nothing of it is done.
        size.set(30);
        assertEquals(1,
                transaction.commit(SettingLevel.USER)
                        .stream()
                        .filter(problem -> problem.path().equals("transaction.below"))
                        .count());
        assertEquals(30, size.get());
    }

    @Test
    void whatIsMovedRemovedOrOfAnotherTypeIsOneChange() throws Exception {
        node.move("size", node, "points");
        Setting<Integer> points = node.setting("points", Integer.class);
        assertEquals(10, points.get());
        assertThrows(SettingValidationException.class, () -> points.set(100));
        Setting<Double> real = points.changeType(1.5);
        assertEquals(1.5, real.get());
        real.set(100.0); // the validator has gone
        assertEquals(List.of("points", "text"), node.keys());
        String refused = assertThrows(
                SettingValidationException.class, () -> node.move("none", node, "other"))
                                 .getMessage();
        assertTrue(refused.contains("\"none\""), refused);
        assertThrows(SettingValidationException.class, () -> node.move("points", node, "text"));
        SettingTransaction.run(root, SettingLevel.USER, changes -> {
            changes.move(root, "transaction", root, "moved");
            changes.delete(root.path("moved"), "points");
            changes.addNode(root, "transaction");
        });
        assertEquals(List.of("text"), root.path("moved").children());
        assertEquals(List.of(), node.children());
        root.delete("moved");
    }

    @Test
    void aLambdaIsCommittedOnAnyTreeOrNotAtAll() throws Exception {
        try (SettingPath tree = SettingPath.standalone()) {
            SettingTransaction.run(tree, SettingLevel.FACTORY, changes -> {
                SettingPath added = changes.addNode(tree, "n", Range.class, "1..9");
                changes.addKey(added, "k", 5);
            });
            Setting<Integer> key = tree.path("n").setting("k", Integer.class);
            assertEquals(5, key.get(SettingLevel.FACTORY));
            String refused = assertThrows(SettingValidationException.class,
                    () -> SettingTransaction.run(tree, SettingLevel.USER, changes -> {
                        changes.set(key, 6);
                        changes.set(key, 10, SettingLevel.SESSION);
                        changes.addKey(tree, "n", 1);
                    })).getMessage();
            assertTrue(refused.contains("the name is taken"), refused);
            assertThrows(SettingNotFoundException.class,
                    () -> SettingTransaction.run(tree, SettingLevel.USER, changes -> {
                        changes.set(key, 7);
                        throw new SettingNotFoundException("nothing of it");
                    }));
            assertEquals(1, key.values().size());
            assertThrows(IllegalArgumentException.class, () -> transaction.addNode(tree, "x"));
            try (SettingTransaction other = SettingTransaction.on(tree)) {
                assertThrows(IllegalArgumentException.class, () -> other.set(size, 1));
                assertThrows(
                        IllegalArgumentException.class, () -> other.move(tree, "n", root, "n"));
            }
        }
    }
}
