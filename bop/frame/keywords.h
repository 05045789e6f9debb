// SPDX-License-Identifier: Apache-2.0
// The words that people write in a call where its entry points take numbers: fields of dates, and the ends that TRIM trims.
#ifndef BIFUN_FRAME_KEYWORDS_H
#define BIFUN_FRAME_KEYWORDS_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "engine/datetime.h"

namespace bifun {

// Whether `word` is one of `words`, which have single blanks between them.
constexpr bool has_word(std::string_view words, std::string_view word) {
    while (!words.empty()) {
        const std::size_t length = words.substr(0, words.find(' ')).size();
        if (words.substr(0, length) == word) {
            return true;
        }
        words.remove_prefix(length == words.size() ? length : length + 1);
    }
    return false;
}

// A word of up to 15 bytes as a number, of its bytes and their count: engines that call row by row have one looked up for each row.
struct word_number {
    std::uint64_t first = 0;
    std::uint64_t last = 0;

    friend constexpr bool operator==(const word_number&, const word_number&) = default;
};
constexpr std::size_t longest_word = 15;

// 0 for longer words, and for none.
constexpr word_number number_of(std::string_view word) {
    word_number number;
    if (word.size() > longest_word) {
        return number;
    }
    for (std::size_t i = 0; i < word.size(); ++i) {
        std::uint64_t& part = i < sizeof number.first ? number.first : number.last;
        part = part << 8 | static_cast<std::uint8_t>(word[i]);
    }
    number.last = number.last << 8 | word.size();
    return number;
}

// The first letter as a bit.
constexpr std::uint32_t initial_of(std::string_view word) {
    return word.empty() ? 0 : std::uint32_t{1} << (static_cast<std::uint8_t>(word[0]) & 31);
}

// A number by its names in upper case; the first is the one to show.
struct keyword {
    std::int32_t code;
    std::string_view names;
    word_number numbers[8] = {}; // of the names, zeros behind
    std::uint32_t initials = 0;  // as bits, so that most keywords are passed over at once

    consteval keyword(std::int32_t meant, std::string_view all) : code(meant), names(all) {
        for (word_number& number : numbers) {
            const std::string_view name = all.substr(0, all.find(' '));
            number = number_of(name);
            if (name.size() > longest_word) {
                does_not_fit();
            }
            initials |= initial_of(name);
            all.remove_prefix(name.size() == all.size() ? name.size() : name.size() + 1);
        }
        if (!all.empty()) {
            does_not_fit();
        }
    }

  private:
    static void does_not_fit(); // never defined: a list that comes here does not compile
};

enum class keyword_role : std::uint8_t {
    none,
    field, // the part of a date that is meant, a zqtime_field: the first argument as people write it, a bare word or a text
    mode,  // a word that SQL's own syntax puts into the call
};

struct keyword_list {
    keyword_role role = keyword_role::none;
    std::span<const keyword> words = {};
};

// Null where the list has no such name. `name` is in upper case.
constexpr const keyword* find_keyword(const keyword_list& list, std::string_view name) {
    const word_number wanted = number_of(name);
    const std::uint32_t initial = initial_of(name);
    for (const keyword& known : list.words) {
        if ((known.initials & initial) == 0) {
            continue;
        }
        for (const word_number& number : known.numbers) {
            if (number == word_number{}) {
                break;
            }
            if (number == wanted) {
                return &known;
            }
        }
    }
    return nullptr;
}

inline constexpr keyword datepart_words[] = {
    {ZQTIME_YEAR, "YEAR YYYY YY"},  {ZQTIME_QUARTER, "QUARTER QQ Q"},       {ZQTIME_MONTH, "MONTH MM M"},   {ZQTIME_WEEK, "WEEK WK WW"},
    {ZQTIME_DAY, "DAY DD D"},       {ZQTIME_DAY_OF_YEAR, "DAYOFYEAR DY Y"}, {ZQTIME_HOUR, "HOUR HH"},       {ZQTIME_MINUTE, "MINUTE MI N"},
    {ZQTIME_SECOND, "SECOND SS S"}, {ZQTIME_SUBSECOND, "MILLISECOND MS"},   {ZQTIME_WEEKDAY, "WEEKDAY DW"},
};
inline constexpr keyword extract_words[] = {
    {ZQTIME_YEAR, "YEAR"},
    {ZQTIME_MONTH, "MONTH"},
    {ZQTIME_DAY, "DAY"},
    {ZQTIME_HOUR, "HOUR"},
    {ZQTIME_MINUTE, "MINUTE"},
    {ZQTIME_SECOND, "SECOND"},
    {ZQTIME_SUBSECOND, "MICROSECOND"},
    {ZQTIME_ZONE_HOUR, "TIMEZONE_HOUR"},
    {ZQTIME_ZONE_MINUTE, "TIMEZONE_MINUTE"},
};
inline constexpr keyword trim_words[] = {{0, "BOTH"}, {579, "LEADING"}, {580, "TRAILING"}};

inline constexpr keyword_list datepart_fields{keyword_role::field, datepart_words};
inline constexpr keyword_list bigdatediff_fields{keyword_role::field, std::span(datepart_words).first(std::size(datepart_words) - 1)};
inline constexpr keyword_list extract_fields{keyword_role::field, extract_words};
inline constexpr keyword_list trim_modes{keyword_role::mode, trim_words};

// Fields as a set: bit n is the field with code n.
using field_set = std::uint32_t;
template <class... Fields> constexpr field_set fields_of(Fields... fields) { return ((1U << fields) | ...); }
constexpr bool contains(field_set set, std::int32_t field) { return field > 0 && field < 32 && (set >> field & 1) != 0; }

inline constexpr field_set date_fields = fields_of(ZQTIME_YEAR, ZQTIME_MONTH, ZQTIME_DAY);
inline constexpr field_set time_fields = fields_of(ZQTIME_HOUR, ZQTIME_MINUTE);
inline constexpr field_set zone_fields = fields_of(ZQTIME_ZONE_HOUR, ZQTIME_ZONE_MINUTE);

// Whether it takes a date to have the field.
constexpr bool is_date_field(std::int32_t field) {
    return contains(date_fields | fields_of(ZQTIME_QUARTER, ZQTIME_DAY_OF_YEAR, ZQTIME_WEEK, ZQTIME_WEEKDAY), field);
}

} // namespace bifun

#endif
