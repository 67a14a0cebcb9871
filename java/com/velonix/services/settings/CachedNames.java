package com.velonix.services.settings;

import java.util.List;

/**
 * Names of a node's children that were read from the tree, with the count under which they hold.
 *
 * @param count the count of the list before the names were read
 * @param names immutable
 */
record CachedNames(long count, List<String> names) {}
