// SPDX-License-Identifier: Apache-2.0
// From format models to records.
#include <algorithm>
#include <iterator>

#include "embedded/format/date_elements.h"
#include "embedded/format/date_format.h"
#include "embedded/format/format_reader.h"
#include "engine/charset.h"

namespace zqengine {
namespace {

using enum date_element;

bool is_letter(std::uint8_t byte) { return (byte | 0x20) >= 'a' && (byte | 0x20) <= 'z'; }
bool is_digit(std::uint8_t byte) { return byte - unsigned{'0'} < 10; }
bool is_punctuation(std::uint8_t byte) { return byte >= ' ' && byte < 0x7F && !is_letter(byte) && !is_digit(byte) && byte != '"'; }
bool is_upper(std::uint8_t byte) { return byte >= 'A' && byte <= 'Z'; }

// MONTH, Month or month.
letter_style style_of(const std::uint8_t* name, std::uint32_t length) {
    if (!is_upper(name[0])) {
        return letter_style::lower;
    }
    return length > 1 && is_letter(name[1]) && !is_upper(name[1]) ? letter_style::capitalized : letter_style::upper;
}

// A format on its way into a model.
struct model_parser {
    date_model& model;
    format_reader rest;
    bool fill_mode;
    bool exact;
};

std::uint8_t offset_of(const model_parser& parser) { return static_cast<std::uint8_t>(parser.rest.next - parser.model.text); }

date_piece& add_piece(model_parser& parser, date_element element, std::uint8_t offset, std::uint32_t length) {
    date_piece& piece = parser.model.pieces[parser.model.piece_count++];
    piece = {.element = element,
             .digits = 0,
             .offset = offset,
             .length = static_cast<std::uint8_t>(length),
             .style = letter_style::upper,
             .suffix_style = letter_style::upper,
             .suffix = number_suffix::none,
             .fill_mode = parser.fill_mode,
             .exact = parser.exact};
    return piece;
}

format_problem problem_at(format_fault fault, std::uint8_t offset, std::uint32_t length) {
    return {.fault = fault, .offset = offset, .length = static_cast<std::uint8_t>(length), .other_offset = 0, .other_length = 0};
}

const element_name* longest_name(const format_reader& rest) {
    const element_name* longest = nullptr;
    for (const element_name& known : element_names(*rest.next)) {
        format_reader ahead = rest;
        if ((longest == nullptr || known.name.size() > longest->name.size()) && take(ahead, known.name)) {
            longest = &known;
        }
    }
    return longest;
}

number_suffix take_suffix(format_reader& rest) {
    if (take(rest, "SPTH") || take(rest, "THSP")) {
        return number_suffix::ordinal_words;
    }
    return take(rest, "SP") ? number_suffix::words : take(rest, "TH") ? number_suffix::ordinal : number_suffix::none;
}

// The letters and digits that stand together where no element is.
std::uint32_t unknown_length(const format_reader& rest) {
    const std::uint8_t* end = rest.next;
    while (end != rest.end && (is_letter(*end) || is_digit(*end))) {
        ++end;
    }
    return std::max<std::uint32_t>(static_cast<std::uint32_t>(end - rest.next), 1);
}

format_problem take_element(model_parser& parser) {
    const std::uint8_t offset = offset_of(parser);
    const element_name* const known = longest_name(parser.rest);
    if (known == nullptr) {
        return problem_at(format_fault::unknown_element, offset, unknown_length(parser.rest));
    }
    const std::uint8_t* const begin = parser.rest.next;
    parser.rest.next += known->name.size();
    date_piece& piece = add_piece(parser, known->element, offset, static_cast<std::uint32_t>(known->name.size()));
    piece.digits = known->digits;
    piece.style = style_of(begin, piece.length);
    const std::uint8_t* const suffix = parser.rest.next;
    piece.suffix = take_suffix(parser.rest);
    if (piece.suffix != number_suffix::none) {
        const auto length = static_cast<std::uint32_t>(parser.rest.next - suffix);
        piece.suffix_style = style_of(suffix, length);
        piece.length = static_cast<std::uint8_t>(piece.length + length);
        if (!is_number(piece.element)) {
            return problem_at(format_fault::misplaced_suffix, static_cast<std::uint8_t>(suffix - parser.model.text), length);
        }
    }
    return {};
}

format_problem take_quoted(model_parser& parser) {
    const std::uint8_t offset = offset_of(parser);
    const std::uint8_t* const begin = ++parser.rest.next;
    while (parser.rest.next != parser.rest.end && *parser.rest.next != '"') {
        parser.rest.next += zq_mb_char_get_len_ex(parser.rest.next, static_cast<std::uint32_t>(parser.rest.end - parser.rest.next));
    }
    const auto length = static_cast<std::uint32_t>(parser.rest.next - begin);
    if (parser.rest.next == parser.rest.end) {
        return problem_at(format_fault::open_quote, offset, length + 1);
    }
    ++parser.rest.next;
    if (length != 0) {
        add_piece(parser, quoted, static_cast<std::uint8_t>(offset + 1), length);
    }
    return {};
}

// The longest run of bytes or characters of which `belongs` is true of the first byte.
template <class Belongs> void take_run(model_parser& parser, date_element element, const Belongs& belongs) {
    const std::uint8_t offset = offset_of(parser);
    do {
        parser.rest.next += zq_mb_char_get_len_ex(parser.rest.next, static_cast<std::uint32_t>(parser.rest.end - parser.rest.next));
    } while (parser.rest.next != parser.rest.end && belongs(*parser.rest.next));
    add_piece(parser, element, offset, static_cast<std::uint32_t>(offset_of(parser) - offset));
}

format_problem take_next(model_parser& parser) {
    const std::uint8_t first = *parser.rest.next;
    if (first == '"') {
        return take_quoted(parser);
    }
    if (first >= 0x80) {
        take_run(parser, quoted, [](std::uint8_t byte) { return byte >= 0x80; });
        return {};
    }
    if (is_punctuation(first)) {
        take_run(parser, punctuation, is_punctuation);
        return {};
    }
    if (take(parser.rest, "FM")) {
        parser.fill_mode = !parser.fill_mode;
        return {};
    }
    if (take(parser.rest, "FX")) {
        parser.exact = !parser.exact;
        return {};
    }
    return take_element(parser);
}

// ---- reading ----

// What cannot be read together.
struct conflict {
    said_set one;
    said_set other;
};
constexpr conflict conflicts[] = {
    {says_julian_day, says_year | says_month | says_day | says_day_of_year | says_era},
    {says_day_of_year, says_month | says_day},
    {says_hour, says_half_hour | says_meridian},
    {says_seconds_of_day, says_hour | says_half_hour | says_meridian | says_minute | says_second},
    {says_zone, says_zone_hour | says_zone_minute},
    {has_sign, says_era},
};

// What has no meaning alone.
struct dependence {
    said_set one;
    said_set other;
};
constexpr dependence dependences[] = {
    {says_meridian, says_half_hour},
    {says_era, says_year},
    {says_zone_minute, says_zone_hour},
    {says_fraction, says_second | says_seconds_of_day},
};

bool conflict_with(said_set a, said_set b) {
    return std::ranges::any_of(conflicts, [&](const conflict& known) {
        return ((known.one & a) != 0 && (known.other & b) != 0) || ((known.one & b) != 0 && (known.other & a) != 0);
    });
}

said_set said_by(const date_piece& piece) { return zqengine::said_by(piece.element); }

format_problem problem_between(format_fault fault, const date_piece& piece, const date_piece& other) {
    return {.fault = fault, .offset = piece.offset, .length = piece.length, .other_offset = other.offset, .other_length = other.length};
}

bool is_text(date_element element) { return element == punctuation || element == quoted; }

format_problem find_reading_problem(const date_model& model) {
    said_set all = says_nothing;
    for (std::uint32_t i = 0; i < model.piece_count; ++i) {
        const date_piece& piece = model.pieces[i];
        if (is_text(piece.element)) {
            continue;
        }
        const said_set said = said_by(piece);
        if (said == says_nothing || piece.suffix != number_suffix::none) {
            return problem_at(format_fault::output_only, piece.offset, piece.length);
        }
        for (std::uint32_t k = 0; k < i; ++k) {
            const said_set before = said_by(model.pieces[k]);
            if ((before & said) != 0) {
                return problem_between(format_fault::repeated, piece, model.pieces[k]);
            }
            if (conflict_with(said, before)) {
                return problem_between(format_fault::contradiction, piece, model.pieces[k]);
            }
        }
        all |= said;
    }
    for (std::uint32_t i = 0; i < model.piece_count; ++i) {
        for (const dependence& known : dependences) {
            if ((said_by(model.pieces[i]) & known.one) != 0 && (all & known.other) == 0) {
                return problem_at(format_fault::incomplete, model.pieces[i].offset, model.pieces[i].length);
            }
        }
    }
    return {};
}

} // namespace

format_problem parse_format_model(const std::uint8_t* format, std::uint32_t length, date_model& model) {
    model.piece_count = 0;
    format_problem problem{};
    if (length > DFM_LONGEST_FORMAT) {
        problem = {.fault = format_fault::too_long, .offset = 0, .length = 0, .other_offset = 0, .other_length = 0};
    } else {
        std::copy_n(format, length, model.text);
        model_parser parser{.model = model, .rest = {model.text, model.text + length}, .fill_mode = false, .exact = false};
        while (problem.fault == format_fault::none && parser.rest.next != parser.rest.end) {
            problem = take_next(parser);
        }
    }
    if (problem.fault != format_fault::none) {
        model.piece_count = 0;
    }
    finish_model(model);
    model.reading_problem = find_reading_problem(model);
    if (model.reading_problem.fault != format_fault::none) {
        model.plan.can_read = false;
    }
    return problem;
}

// ---- %-formats ----

namespace {

struct percent_element {
    char name;
    date_element element;
    std::uint8_t digits;
    bool fill_mode = false;
    number_suffix suffix = number_suffix::none;
    letter_style style = letter_style::upper;
};

constexpr percent_element percent_elements[] = {
    {'a', short_day_name, 0, true, number_suffix::none, letter_style::capitalized},
    {'b', short_month_name, 0, true, number_suffix::none, letter_style::capitalized},
    {'c', month, 2, true},
    {'D', day, 2, true, number_suffix::ordinal},
    {'d', day, 2},
    {'e', day, 2, true},
    {'f', fraction, 6},
    {'H', hour_24, 2},
    {'h', hour_12, 2},
    {'I', hour_12, 2},
    {'i', minute, 2},
    {'j', day_of_year, 3},
    {'k', hour_24, 2, true},
    {'l', hour_12, 2, true},
    {'M', month_name, 0, true, number_suffix::none, letter_style::capitalized},
    {'m', month, 2},
    {'p', meridian, 0},
    {'r', time_12, 0},
    {'S', second, 2},
    {'s', second, 2},
    {'T', time_24, 0},
    {'U', sunday_week, 2},
    {'u', monday_week, 2},
    {'V', counted_week, 2},
    {'v', iso_week, 2},
    {'W', day_name, 0, true, number_suffix::none, letter_style::capitalized},
    {'w', weekday_from_0, 1},
    {'X', counted_year, 4},
    {'x', iso_year, 4},
    {'Y', year, 4},
    {'y', year, 2},
};

} // namespace

format_problem parse_percent_format(const std::uint8_t* format, std::uint32_t length, date_model& model) {
    model.piece_count = 0;
    format_problem problem{};
    if (length > DFM_LONGEST_FORMAT) {
        problem = problem_at(format_fault::too_long, 0, 0);
    } else {
        std::copy_n(format, length, model.text);
        model_parser parser{.model = model, .rest = {model.text, model.text + length}, .fill_mode = false, .exact = false};
        while (parser.rest.next != parser.rest.end) {
            const std::uint8_t offset = offset_of(parser);
            if (*parser.rest.next != '%') {
                take_run(parser, quoted, [](std::uint8_t byte) { return byte != '%'; });
                continue;
            }
            if (parser.rest.end - parser.rest.next == 1) {
                problem = problem_at(format_fault::lone_percent, offset, 1);
                break;
            }
            const auto* const known = std::ranges::find(percent_elements, static_cast<char>(parser.rest.next[1]), &percent_element::name);
            ++parser.rest.next;
            if (known == std::end(percent_elements)) { // the character itself
                const std::uint32_t size =
                    zq_mb_char_get_len_ex(parser.rest.next, static_cast<std::uint32_t>(parser.rest.end - parser.rest.next));
                add_piece(parser, quoted, static_cast<std::uint8_t>(offset + 1), size);
                parser.rest.next += size;
                continue;
            }
            ++parser.rest.next;
            date_piece& piece = add_piece(parser, known->element, offset, 2);
            piece.digits = known->digits;
            piece.fill_mode = known->fill_mode;
            piece.suffix = known->suffix;
            piece.suffix_style = letter_style::lower;
            piece.style = known->style;
        }
    }
    if (problem.fault != format_fault::none) {
        model.piece_count = 0;
    }
    finish_model(model);
    model.reading_problem = problem_at(format_fault::output_only, 0, 0);
    model.plan.can_read = false;
    return problem;
}

} // namespace zqengine
