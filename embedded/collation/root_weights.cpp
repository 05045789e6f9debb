// SPDX-License-Identifier: Apache-2.0
// Sources: D. Whistler, M. Scherer: Unicode Technical Standard #10, Unicode Collation Algorithm; ICU User Guide, Collation, and
// collationkeys.h for how ICU writes keys: the bytes of the primary weights, a 1, those of the secondary ones, a 1, those of the tertiary
// ones. Weights that most characters have are common; runs of these are counted. Primary weights of a script that follow each other share
// their first byte.
#include "embedded/collation/root_weights.h"

#include <unicode/ucol.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <initializer_list>
#include <string_view>

namespace zqengine {
namespace {

constexpr std::uint8_t level_separator = 1;
constexpr std::uint8_t lowest_common = 5;

// A run of common weights is a byte: from `lowest_common` on, the more the higher, where nothing or less follows, and down from `highest`
// where a greater weight does. Longer ones begin with bytes that stand for `most` each.
struct common_runs {
    std::uint32_t most;
    std::uint8_t highest;
};
constexpr common_runs secondary_runs{0x21, 0x45};
constexpr common_runs tertiary_runs{0x61, 0xC5};

// The script of the primary weight that follows is another one, which comes before or behind.
constexpr std::uint8_t lower_script = 3;
constexpr std::uint8_t higher_script = 0xFF;

// Of a character that is a letter by itself, or a letter with one mark.
struct character_weights {
    std::uint32_t primary;       // its bytes, the first one the lowest
    std::uint8_t primary_length; // 0: not known
    std::uint8_t secondary;      // that of the mark; 0: there is none
    std::uint8_t tertiary;       // of the letter; 0: the common one. That of the mark is common.
    std::uint8_t shares_first;   // whether the same first byte is written only once
};

constexpr std::uint32_t table_size = 0x10000;
using weight_table = std::array<character_weights, table_size>;

// Scripts of which characters stand for themselves, whatever is next to them, unless that is a mark.
struct code_point_range {
    std::uint32_t first;
    std::uint32_t last;
};
constexpr code_point_range learnt_ranges[] = {{0x20, 0x17F}, {0x388, 0x3CE}, {0x400, 0x482}, {0x48A, 0x52F}, {0x4E00, 0x9FFF}};
constexpr std::uint32_t middle_dot = 0xB7; // belongs to an l before it

struct icu_key {
    std::uint8_t bytes[64];
    std::int32_t length; // without the zero; 0 where there is no room for it
};

icu_key key_of_units(const UCollator* root, const UChar* units, std::int32_t count) {
    icu_key key{};
    const std::int32_t size = ucol_getSortKey(root, units, count, key.bytes, sizeof key.bytes);
    key.length = size > static_cast<std::int32_t>(sizeof key.bytes) ? 0 : std::max(size - 1, 0);
    return key;
}

bool are_bytes(const std::uint8_t* begin, const std::uint8_t* end, std::initializer_list<std::uint8_t> expected) {
    return std::equal(begin, end, expected.begin(), expected.end());
}

// Whether the key is that of a character by itself.
bool read_key(const icu_key& key, character_weights& weights) {
    const std::uint8_t* const end = key.bytes + key.length;
    const std::uint8_t* const secondaries = std::find(key.bytes, end, level_separator) + 1;
    if (secondaries > end) {
        return false;
    }
    const std::uint8_t* const end_of_secondaries = std::find(secondaries, end, level_separator);
    const auto length = secondaries - 1 - key.bytes;
    if (length == 0 || length > 4 || end_of_secondaries == end) {
        return false;
    }
    const std::uint8_t* const tertiaries = end_of_secondaries + 1;
    std::memcpy(&weights.primary, key.bytes, static_cast<std::size_t>(length));
    const bool has_mark =
        end_of_secondaries - secondaries == 2 && secondaries[0] == secondary_runs.highest && secondaries[1] > secondary_runs.highest;
    if (!has_mark && !are_bytes(secondaries, end_of_secondaries, {lowest_common})) {
        return false;
    }
    weights.secondary = has_mark ? secondaries[1] : 0;
    weights.tertiary = tertiaries != end && *tertiaries > tertiary_runs.highest ? *tertiaries : 0;
    const bool is_known =
        weights.tertiary != 0
            ? (has_mark ? are_bytes(tertiaries, end, {weights.tertiary, lowest_common}) : are_bytes(tertiaries, end, {weights.tertiary}))
            : are_bytes(tertiaries, end, {static_cast<std::uint8_t>(lowest_common + (has_mark ? 1 : 0))});
    weights.primary_length = is_known ? static_cast<std::uint8_t>(length) : 0;
    return is_known;
}

// Whether a second primary weight of the same first byte is written without it.
bool shares_first_byte(const UCollator* root, UChar character, const character_weights& weights) {
    const UChar twice[] = {character, character};
    const icu_key key = key_of_units(root, twice, 2);
    const auto* const end_of_primaries = std::find(key.bytes, key.bytes + key.length, level_separator);
    return end_of_primaries - key.bytes != std::ptrdiff_t{2} * weights.primary_length;
}

// The weights of a level that are written, in room for all, and how many common ones follow.
struct level_weights {
    std::uint8_t* next;
    std::uint32_t commons;
};

// All of a run of common weights but its last byte. Returns how far that one is from the first of its kind.
std::uint32_t begin_run(level_weights& level, const common_runs& runs) {
    std::uint32_t rest = level.commons - 1;
    for (; rest >= runs.most; rest -= runs.most) {
        *level.next++ = static_cast<std::uint8_t>(lowest_common + runs.most - 1);
    }
    level.commons = 0;
    return rest;
}

void append_weight(level_weights& level, std::uint8_t weight, const common_runs& runs) {
    if (level.commons != 0) {
        const std::uint32_t rest = begin_run(level, runs);
        *level.next++ = static_cast<std::uint8_t>(runs.highest - rest);
    }
    *level.next++ = weight;
}

void finish_level(level_weights& level, const common_runs& runs) {
    if (level.commons != 0) {
        const std::uint32_t rest = begin_run(level, runs);
        *level.next++ = static_cast<std::uint8_t>(lowest_common + rest);
    }
}

struct primary_weights {
    std::uint8_t* next;
    std::uint32_t shared; // the first byte of the weight before, where it is shared; else 0
};

// Without branches: which scripts follow each other is nothing that a processor could foresee.
void append_primary(primary_weights& primaries, const character_weights& weights) {
    const std::uint32_t first = weights.primary & 0xFF;
    const std::uint32_t is_same = first == primaries.shared ? 1 : 0;
    const std::uint32_t is_other = (primaries.shared != 0 ? 1U : 0U) & ~is_same;
    *primaries.next = first < primaries.shared ? lower_script : higher_script;
    primaries.next += is_other;
    const std::uint32_t word = weights.primary >> (8 * is_same);
    std::memcpy(primaries.next, &word, sizeof word);
    primaries.next += weights.primary_length - is_same;
    primaries.shared = weights.shares_first != 0 ? first : 0;
}

struct key_writer {
    std::uint8_t* key;
    std::uint32_t room;
    std::uint32_t length;
};

void append_bytes(key_writer& written, const std::uint8_t* begin, const std::uint8_t* end) {
    const auto count = static_cast<std::uint32_t>(end - begin);
    if (written.length + count <= written.room) {
        std::uint8_t* to = written.key + written.length;
        while (begin != end) { // few: a call takes longer
            *to++ = *begin++;
        }
    }
    written.length += count;
}

void append_level(key_writer& written, const std::uint8_t* begin, const std::uint8_t* end) {
    append_bytes(written, &level_separator, &level_separator + 1);
    append_bytes(written, begin, end);
}

std::int32_t key_by(const weight_table& table, const std::uint32_t* code_points, std::uint32_t count, sort_strength strength,
                    std::uint8_t* key, std::uint32_t room) {
    // A primary weight has at most four bytes and one before them, and is written as a word. On the other levels a character has at most
    // two weights, a run of common ones before each.
    constexpr std::size_t longest_primary = 5;
    std::uint8_t primary_bytes[longest_primary * longest_root_text + sizeof(std::uint32_t)];
    std::uint8_t* const first_primary = room >= longest_primary * count + sizeof(std::uint32_t) ? key : primary_bytes;
    std::uint8_t secondary_bytes[std::size_t{4} * longest_root_text];
    std::uint8_t tertiary_bytes[std::size_t{4} * longest_root_text];
    primary_weights primaries{first_primary, 0};
    level_weights secondaries{secondary_bytes, 0};
    level_weights tertiaries{tertiary_bytes, 0};
    for (std::uint32_t i = 0; i < count; ++i) {
        if (code_points[i] >= table_size || table[code_points[i]].primary_length == 0) {
            return -1;
        }
        const character_weights& weights = table[code_points[i]];
        append_primary(primaries, weights);
        ++secondaries.commons;
        ++tertiaries.commons;
        if (weights.tertiary != 0) {
            --tertiaries.commons;
            append_weight(tertiaries, weights.tertiary, tertiary_runs);
        }
        if (weights.secondary != 0) {
            append_weight(secondaries, weights.secondary, secondary_runs);
            ++tertiaries.commons;
        }
    }
    finish_level(secondaries, secondary_runs);
    finish_level(tertiaries, tertiary_runs);
    key_writer written{key, room, 0};
    if (first_primary == key) {
        written.length = static_cast<std::uint32_t>(primaries.next - key);
    } else {
        append_bytes(written, first_primary, primaries.next);
    }
    if (strength != sort_strength::letters) {
        append_level(written, secondary_bytes, secondaries.next);
    }
    if (strength == sort_strength::letters_accents_and_case) {
        append_level(written, tertiary_bytes, tertiaries.next);
    }
    return static_cast<std::int32_t>(written.length);
}

void learn(const UCollator* root, weight_table& table) {
    enum class shared : std::uint8_t { unknown, no, yes };
    std::array<shared, 256> by_first_byte{};
    for (const code_point_range& range : learnt_ranges) {
        for (std::uint32_t code_point = range.first; code_point <= range.last; ++code_point) {
            const auto character = static_cast<UChar>(code_point);
            character_weights& weights = table[code_point];
            if (code_point == middle_dot || !read_key(key_of_units(root, &character, 1), weights)) {
                continue;
            }
            shared& is_shared = by_first_byte[weights.primary & 0xFF];
            if (is_shared == shared::unknown) {
                is_shared = shares_first_byte(root, character, weights) ? shared::yes : shared::no;
            }
            weights.shares_first = is_shared == shared::yes ? 1 : 0;
        }
    }
}

// Whether keys are put together as this ICU does: scripts, marks, cases, and runs of common weights of several lengths.
bool are_keys_of(const UCollator* root, const weight_table& table) {
    constexpr std::u16string_view samples[] = {
        u"a", u"Zürich, 12 Äpfel & ΈΒγ Жж 一丁",
        u"ÀbcdefghijklmnopqrstuvwxyzÉabcdefghijklmnopqrstuvwxyzabcdefghijklmnopqrstuvwxyzabcdefghijk",
        u"abcdefghijklmnopqrstuvwxyzabcdefghijklmnopqrstuvwxyzabcdefghijklmnopqrstuvwxyzabcdefghijklmnopqrst"};
    return std::ranges::all_of(samples, [&](std::u16string_view sample) {
        std::array<std::uint32_t, longest_root_text> code_points{};
        std::copy(sample.begin(), sample.end(), code_points.begin());
        std::array<std::uint8_t, 1024> expected{};
        std::array<std::uint8_t, 1024> key{};
        const std::int32_t size =
            ucol_getSortKey(root, sample.data(), static_cast<std::int32_t>(sample.size()), expected.data(), expected.size());
        const std::int32_t length = key_by(table, code_points.data(), static_cast<std::uint32_t>(sample.size()),
                                           sort_strength::letters_accents_and_case, key.data(), key.size());
        return length == size - 1 && std::equal(key.begin(), key.begin() + length, expected.begin());
    });
}

// Where ICU is one that writes keys in another way, nothing is known.
bool fill(weight_table& table) {
    UErrorCode status = U_ZERO_ERROR;
    UCollator* const root = ucol_open("", &status);
    if (U_FAILURE(status)) {
        return false;
    }
    learn(root, table);
    const bool are_known = are_keys_of(root, table);
    if (!are_known) {
        table.fill({});
    }
    ucol_close(root);
    return are_known;
}

const weight_table& table_of_root() {
    static constinit weight_table table{};
    [[maybe_unused]] static const bool filled = fill(table);
    return table;
}

} // namespace

root_levels levels_of(const UCollator* collator) {
    UErrorCode status = U_ZERO_ERROR;
    const char* const locale = ucol_getLocaleByType(collator, ULOC_ACTUAL_LOCALE, &status);
    const bool is_root = locale != nullptr && (*locale == '\0' || std::strcmp(locale, "root") == 0);
    constexpr UColAttribute switches[] = {UCOL_FRENCH_COLLATION, UCOL_CASE_FIRST, UCOL_CASE_LEVEL, UCOL_NUMERIC_COLLATION};
    const bool are_off =
        std::ranges::all_of(switches, [&](UColAttribute attribute) { return ucol_getAttribute(collator, attribute, &status) == UCOL_OFF; });
    const bool are_all_weighed = ucol_getAttribute(collator, UCOL_ALTERNATE_HANDLING, &status) == UCOL_NON_IGNORABLE;
    const UColAttributeValue strength = ucol_getAttribute(collator, UCOL_STRENGTH, &status);
    const std::int32_t reordered = ucol_getReorderCodes(collator, nullptr, 0, &status);
    const bool is_known = strength == UCOL_PRIMARY || strength == UCOL_SECONDARY || strength == UCOL_TERTIARY;
    return {U_SUCCESS(status) && is_root && are_off && are_all_weighed && reordered == 0 && is_known,
            strength == UCOL_PRIMARY     ? sort_strength::letters
            : strength == UCOL_SECONDARY ? sort_strength::letters_and_accents
                                         : sort_strength::letters_accents_and_case};
}

std::int32_t root_key(const std::uint32_t* code_points, std::uint32_t count, sort_strength strength, std::uint8_t* key,
                      std::uint32_t room) {
    return key_by(table_of_root(), code_points, count, strength, key, room);
}

} // namespace zqengine
