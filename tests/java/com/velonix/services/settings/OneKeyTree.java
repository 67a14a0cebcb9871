package com.velonix.services.settings;

import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeEach;

/** A fixture: a new tree for each test, with one node and one integer key, and a listener. */
abstract class OneKeyTree {
    SettingPath root;
    SettingPath node;
    Setting<Integer> key;
    final Recorder recorder = new Recorder();

    @BeforeEach
    void open() throws Exception {
        root = SettingPath.standalone();
        node = root.addNode("node");
        key = node.addKey("key", 1);
    }

    @AfterEach
    void close() {
        root.close();
    }
}
