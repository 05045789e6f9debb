// SPDX-License-Identifier: Apache-2.0
// What a model is written by: a plan, where its elements have a fixed width, and the room that its texts take.
#include <algorithm>
#include <cstring>

#include "embedded/format/date_digits.h"
#include "embedded/format/date_elements.h"
#include "embedded/format/date_format.h"

namespace zqengine {
namespace {

using enum date_element;

// A plan on its way; where the model does not fit one, `fits` becomes false and nothing else counts.
struct planner {
    fixed_plan& plan;
    bool fits;
    std::uint64_t read; // the characters that are in the text, as bits by their source
};

constexpr std::uint8_t no_source = 0x80;

// `step` is where the next pair may begin: behind this one or in its middle.
void add_pair(planner& state, std::uint32_t source, digit_part part, std::uint32_t step = 2) {
    fixed_plan& plan = state.plan;
    if (plan.pair_count == fixed_plan::most_pairs || plan.length + 2U > DFM_FIXED_TEXT_SIZE) {
        state.fits = false;
        return;
    }
    plan.pairs[plan.pair_count++] = {.source = static_cast<std::uint8_t>(source), .place = plan.length};
    plan.parts = static_cast<std::uint16_t>(plan.parts | part);
    for (std::uint32_t i = 0; i < 2; ++i) {
        plan.pattern[plan.length + i] = 0;
    }
    plan.length = static_cast<std::uint8_t>(plan.length + step);
    // The second character of a pair may be the first of the next one.
    const std::uint64_t characters = source < source_half_hour ? std::uint64_t{step == 1 ? 1U : 3U} << source : 0;
    plan.can_read = plan.can_read && characters != 0 && (state.read & characters) == 0;
    state.read |= characters;
}

// Three characters or five, as overlapping pairs.
void add_triple(planner& state, std::uint32_t source, digit_part part) {
    add_pair(state, source, part, 1);
    add_pair(state, source + 1, part);
}

void add_text(planner& state, const std::uint8_t* text, std::uint32_t length) {
    fixed_plan& plan = state.plan;
    if (plan.length + length > DFM_FIXED_TEXT_SIZE) {
        state.fits = false;
        return;
    }
    // In a pattern 0 stands for a digit.
    plan.can_read = plan.can_read && (length == 0 || std::memchr(text, 0, length) == nullptr);
    std::memcpy(plan.pattern + plan.length, text, length);
    plan.length = static_cast<std::uint8_t>(plan.length + length);
}

void add_character(planner& state, char character) {
    const auto byte = static_cast<std::uint8_t>(character);
    add_text(state, &byte, 1);
}

void add_year(planner& state, std::uint32_t digits) {
    if (digits == 4) {
        add_pair(state, source_year, part_date);
        add_pair(state, source_year + 2, part_date);
    } else if (digits == 3) {
        add_triple(state, source_year + 1, part_date);
    } else {
        state.fits = state.fits && digits == 2;
        add_pair(state, source_year + 2, part_date);
        state.plan.can_read = false; // the century is not in the text
    }
}

void add_fraction(planner& state, std::uint32_t digits) {
    state.fits = state.fits && digits >= 2 && digits <= 6;
    for (std::uint32_t i = 0; i + 2 <= digits; i += 2) {
        const bool one_left = digits - i == 3;
        add_pair(state, source_fraction + i, part_fraction, one_left ? 1 : 2);
        if (one_left) {
            add_pair(state, source_fraction + i + 1, part_fraction);
        }
    }
}

void add_meridian(planner& state, letter_style style) {
    state.fits = state.fits && style != letter_style::capitalized;
    add_pair(state, style == letter_style::upper ? source_upper_meridian : source_lower_meridian, part_half_hour);
}

void add_name(planner& state, std::uint32_t source, digit_part part, letter_style style) {
    const std::uint32_t of_style = style == letter_style::capitalized ? 0 : style == letter_style::upper ? 4 : 8;
    add_triple(state, source + of_style, part);
}

void add_time(planner& state, std::uint32_t hour_source, digit_part hour_part) {
    add_pair(state, hour_source, hour_part);
    add_character(state, ':');
    add_pair(state, source_minute, part_time);
    add_character(state, ':');
    add_pair(state, source_second, part_time);
}

bool has_fixed_width(const date_piece& piece) {
    return piece.suffix == number_suffix::none && !(is_number(piece.element) && piece.fill_mode);
}

void add_piece(planner& state, const date_model& model, const date_piece& piece) {
    const bool english = model.language == DFM_ENGLISH;
    state.fits = state.fits && has_fixed_width(piece);
    switch (piece.element) {
    case punctuation:
    case quoted:
        return add_text(state, model.text + piece.offset, piece.length);
    case year:
    case rounded_year:
        return add_year(state, piece.digits);
    case month:
        return add_pair(state, source_month, part_date);
    case day:
        return add_pair(state, source_day, part_date);
    case hour_24:
        return add_pair(state, source_hour, part_time);
    case hour_12:
        return add_pair(state, source_half_hour, part_half_hour);
    case minute:
        return add_pair(state, source_minute, part_time);
    case second:
        return add_pair(state, source_second, part_time);
    case fraction:
        return add_fraction(state, piece.digits);
    case short_month_name:
        state.fits = state.fits && english;
        return add_name(state, source_month_name, part_month_name, piece.style);
    case short_day_name:
        state.fits = state.fits && english;
        return add_name(state, source_day_name, part_day_name, piece.style);
    case meridian:
        state.fits = state.fits && english;
        return add_meridian(state, piece.style);
    case zone_hour:
        return add_triple(state, source_zone, part_zone);
    case zone_minute:
        return add_pair(state, source_zone + 4, part_zone);
    case zone:
        add_pair(state, source_zone, part_zone);
        add_pair(state, source_zone + 2, part_zone);
        return add_pair(state, source_zone + 4, part_zone);
    case time_12:
        state.fits = state.fits && english;
        add_time(state, source_half_hour, part_half_hour);
        add_character(state, ' ');
        return add_meridian(state, letter_style::upper);
    case time_24:
        return add_time(state, source_hour, part_time);
    default:
        state.fits = false;
    }
}

// A text of less than sixteen characters is read as its first eight and its last eight, another as its first and last sixteen.
void plan_reading(fixed_plan& plan) {
    for (std::uint8_t* const order : {plan.digits_in_first, plan.digits_in_last, plan.fraction_in_first, plan.fraction_in_last}) {
        std::memset(order, no_source, 16);
    }
    const bool is_short = plan.length < 16;
    for (std::uint32_t i = 0; plan.can_read && i < plan.pair_count; ++i) {
        const bool is_fraction = plan.pairs[i].source >= source_fraction;
        for (std::uint32_t k = 0; k < 2; ++k) {
            const std::uint32_t place = plan.pairs[i].place + k;
            const std::uint32_t digit = plan.pairs[i].source + k - (is_fraction ? std::uint32_t{source_fraction} : 0U);
            if (place < 16 && !(is_short && place >= 8)) {
                (is_fraction ? plan.fraction_in_first : plan.digits_in_first)[digit] = static_cast<std::uint8_t>(place);
            } else if (is_short) {
                (is_fraction ? plan.fraction_in_first : plan.digits_in_first)[digit] = static_cast<std::uint8_t>(place + 16 - plan.length);
            } else {
                (is_fraction ? plan.fraction_in_last : plan.digits_in_last)[digit] = static_cast<std::uint8_t>(place + 16 - plan.length);
            }
        }
    }
}

// Of a plan that has no characters but those of a date and a time of day.
void say_fixed_text(const fixed_plan& plan, dfm_fixed_text& text) {
    text.length = plan.length;
    std::memset(text.order, no_source, sizeof text.order);
    std::memcpy(text.others, plan.pattern, sizeof text.others);
    for (std::uint32_t i = 0; i < plan.pair_count; ++i) {
        const fixed_pair pair = plan.pairs[i];
        text.length = pair.source < source_fraction ? text.length : 0;
        text.order[pair.place] = pair.source;
        text.order[pair.place + 1U] = static_cast<std::uint8_t>(pair.source + 1);
    }
}

void make_plan(date_model& model) {
    fixed_plan& plan = model.plan;
    plan.length = 0;
    plan.pair_count = 0;
    plan.parts = 0;
    plan.can_read = true;
    planner state{.plan = plan, .fits = !model.shows_era, .read = 0};
    for (std::uint32_t i = 0; i < model.piece_count && state.fits; ++i) {
        add_piece(state, model, model.pieces[i]);
    }
    if (!state.fits) {
        plan.length = 0;
    }
    constexpr std::uint64_t whole_date = 0xFF;
    plan.can_read = plan.can_read && plan.length >= 8 && plan.length <= 32 && (state.read & whole_date) == whole_date;
    std::memset(plan.pattern + plan.length, 0, DFM_FIXED_TEXT_SIZE - plan.length);
    say_fixed_text(plan, model.fixed);
    plan_reading(plan);
}

// The longest text of an element, for any value of a column.
std::uint32_t longest_text(const date_piece& piece) {
    constexpr std::uint32_t longest_name = 18; // in Chinese too, with its blanks
    if (piece.element == punctuation || piece.element == quoted) {
        return piece.length;
    }
    if (piece.suffix == number_suffix::words || piece.suffix == number_suffix::ordinal_words) {
        return piece.element == seconds_of_day ? 128U : 80U;
    }
    if (is_number(piece.element)) {
        // A year has a sign and perhaps a comma, a time made from seconds more hours than a day.
        const std::uint32_t digits = piece.element == hour_24          ? 7U
                                     : piece.element == seconds_of_day ? 10U
                                     : piece.element == julian_day     ? 7U
                                                                       : piece.digits + 2U;
        return digits + 2; // a suffix
    }
    switch (piece.element) {
    case fraction:
        return piece.digits;
    case year_in_words:
    case signed_year_in_words:
        return 64;
    case zone_hour:
    case zone_minute:
    case zone:
        return 6;
    default:
        return longest_name;
    }
}

bool tells_era(const date_piece& piece) { return piece.element == era || piece.element == era_with_points; }

} // namespace

void forget_elements(date_model& model) {
    model.room = DFM_SHORT_TEXT_SIZE;
    model.fixed.length = 0; // without which nobody looks at the rest of it, or of the plan
    model.plan.length = 0;
    model.plan.can_read = false;
    model.piece_count = 0;
    model.shows_era = model.has_zone = model.has_time = false;
    model.needs_today = true;
    model.reading_problem = {};
}

void finish_model(date_model& model) {
    const std::span<const date_piece> pieces(model.pieces, model.piece_count);
    model.shows_era = std::ranges::any_of(pieces, tells_era);
    said_set said = says_nothing;
    std::uint32_t longest = 0;
    for (const date_piece& piece : pieces) {
        said |= said_by(piece.element);
        longest += longest_text(piece);
    }
    model.has_zone = (said & says_of_zone) != 0;
    model.has_time = (said & says_time) != 0;
    const bool knows_month = (said & (says_month | says_day_of_year)) != 0;
    model.needs_today = (said & says_julian_day) == 0 && ((said & says_year) == 0 || !knows_month);
    for (const date_piece& piece : pieces) {
        // Years of fewer digits are those next to today's.
        model.needs_today |= (said_by(piece.element) & says_year) != 0 && (piece.digits < 4 || piece.element == rounded_year);
    }
    constexpr std::uint32_t slack = 8; // numbers are written eight characters at a time
    model.room = longest + slack <= DFM_SHORT_TEXT_SIZE ? DFM_SHORT_TEXT_SIZE : DFM_TEXT_SIZE;
    make_plan(model);
}

} // namespace zqengine
