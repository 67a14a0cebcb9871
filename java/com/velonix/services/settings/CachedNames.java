package com.velonix.services.settings;

import java.util.List;

/**
 * Names of a node's children, with the count of changes at which they were read.
 *
 * @param count the count of the list's changes, taken before the names were read
 * @param names immutable
 */
record CachedNames(long count, List<String> names) {}
