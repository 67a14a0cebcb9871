package com.velonix.services.settings.prefs;

import com.velonix.services.settings.Setting;
import java.nio.charset.StandardCharsets;
import java.security.MessageDigest;
import java.security.NoSuchAlgorithmException;
import java.util.HexFormat;
import java.util.Optional;

/**
 * The names of settings for the names of preferences, which may have any characters and be longer.
 *
 * <p>A preference has its own name where a setting can have it. Otherwise, and where the other kind
 * of entry has taken the name (a node of preferences may have a key and a child of one name, a node
 * of settings may not), it has an escaped name: {@code x_k_} or {@code x_n_}, for a key or a node,
 * and then the name with {@code _} and four hexadecimal digits in place of each character that is
 * no letter or digit. If that is too long too, {@code x_kh_} or {@code x_nh_} and a hash; the name
 * itself is then stored in the entry.
 */
enum EntryNames {
    KEYS('k'),
    NODES('n');

    /** The key of a node with a hashed name that has the name itself. */
    static final String NAME_KEY = "x_name";

    private static final int LONGEST = 63;
    private static final String RESERVED = "x_";
    private static final HexFormat HEX = HexFormat.of();

    private final String escape;
    private final String hash;

    EntryNames(char kind) {
        escape = RESERVED + kind + "_";
        hash = RESERVED + kind + "h_";
    }

    /** Returns the name of the setting if nothing else has taken it. */
    String of(String name) {
        return !name.startsWith(RESERVED) && Setting.isValidName(name) ? name : escaped(name);
    }

    /** Returns the name of the setting if an entry of the other kind has taken the first one. */
    String escaped(String name) {
        StringBuilder text = new StringBuilder(escape);
        for (char character : name.toCharArray()) {
            if (isPlain(character))
                text.append(character);
            else
                text.append('_').append(HEX.toHexDigits(character));
        }
        return text.length() <= LONGEST ? text.toString() : hash + hashOf(name);
    }

    /** Tells whether the setting's name does not have the name of the preference in it. */
    boolean isHashed(String entry) {
        return entry.startsWith(hash);
    }

    /**
     * Returns the name of the preference that a setting with an unhashed name stands for.
     *
     * @return empty if it stands for none
     */
    Optional<String> nameOf(String entry) {
        if (!entry.startsWith(RESERVED))
            return Optional.of(entry);
        if (!entry.startsWith(escape))
            return Optional.empty();
        StringBuilder name = new StringBuilder();
        for (int at = escape.length(); at < entry.length(); ++at) {
            char character = entry.charAt(at);
            if (character != '_') {
                name.append(character);
                continue;
            }
            if (at + 4 >= entry.length())
                return Optional.empty();
            try {
                name.append((char) HexFormat.fromHexDigits(entry, at + 1, at + 5));
            } catch (IllegalArgumentException notEscaped) {
                return Optional.empty();
            }
            at += 4;
        }
        return Optional.of(name.toString());
    }

    private static boolean isPlain(char character) {
        return character < 128 && Character.isLetterOrDigit(character);
    }

    private static String hashOf(String name) {
        try {
            MessageDigest digest = MessageDigest.getInstance("SHA-256");
            byte[] all = digest.digest(name.getBytes(StandardCharsets.UTF_16BE));
            return HEX.formatHex(all, 0, 24);
        } catch (NoSuchAlgorithmException missing) {
            throw new IllegalStateException(missing);
        }
    }
}
