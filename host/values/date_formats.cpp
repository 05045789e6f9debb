// SPDX-License-Identifier: Apache-2.0
#include "host/values/date_formats.h"

#include <algorithm>
#include <span>

#include <fmt/format.h>

#include "embedded/format/date_elements.h"
#include "embedded/format/date_format.h"
#include "engine/charset.h"

namespace host {
namespace {

using bifun::date_format;
using zqengine::date_element;
using zqengine::date_model;
using zqengine::date_piece;
using zqengine::format_fault;
using zqengine::format_problem;

const std::uint8_t* bytes_of(std::string_view text) { return reinterpret_cast<const std::uint8_t*>(text.data()); }

std::uint32_t length_of(std::string_view text) { return static_cast<std::uint32_t>(text.size()); }

// From 1, in characters.
std::uint32_t position_at(std::string_view text, std::uint32_t offset) { return zq_mbstrlen_ex(bytes_of(text), offset) + 1; }

std::string element_at(std::string_view format, std::uint32_t offset, std::uint32_t length) {
    return fmt::format("\"{}\" at position {}", format.substr(offset, length), position_at(format, offset));
}

date_model parse(std::string_view format, format_problem& problem) {
    dfm_model model;
    (void)dfm_create(nullptr, &model);
    date_model parsed = zqengine::inside(model);
    problem = zqengine::parse_format_model(bytes_of(format), length_of(format), parsed);
    return parsed;
}

date_model parse_as(date_format use, std::string_view format) {
    format_problem problem{};
    if (use != date_format::percent) {
        return parse(format, problem);
    }
    date_model model;
    model.language = DFM_ENGLISH;
    (void)zqengine::parse_percent_format(bytes_of(format), length_of(format), model);
    return model;
}

// What an element that means nothing alone has to have beside it.
std::string_view needed_by(std::string_view element) {
    switch (element.empty() ? '\0' : element[0] & ~0x20) {
    case 'T':
        return "TZH";
    case 'F':
        return "SS";
    case 'B':
        return "a year";
    default:
        return element.size() > 1 && (element[1] & ~0x20) == 'D' ? "a year" : "HH12";
    }
}

// The format, with what lies behind it.
std::string_view text_of(const date_model& model) { return {reinterpret_cast<const char*>(model.text), DFM_LONGEST_FORMAT}; }

std::string expectation(const date_model& model, const date_piece& piece) {
    const std::string_view element = text_of(model).substr(piece.offset, piece.length);
    const auto of_element = [&](std::string_view what) { return fmt::format("{} ({})", what, element); };
    switch (piece.element) {
    case date_element::punctuation:
    case date_element::quoted:
        return fmt::format("\"{}\"", element);
    case date_element::month:
        return of_element("a month, 1 to 12,");
    case date_element::month_name:
    case date_element::short_month_name:
        return of_element("the name of a month");
    case date_element::roman_month:
        return of_element("a month in Roman numerals");
    case date_element::day_of_year:
        return of_element("a day of the year, 1 to 366,");
    case date_element::day:
        return of_element("a day, 1 to 31,");
    case date_element::weekday:
        return of_element("a day of the week, 1 to 7,");
    case date_element::day_name:
    case date_element::short_day_name:
        return of_element("the name of a day");
    case date_element::julian_day:
        return of_element("a Julian day");
    case date_element::hour_24:
        return of_element("an hour, 0 to 23,");
    case date_element::hour_12:
        return of_element("an hour, 1 to 12,");
    case date_element::minute:
        return of_element("a minute, 0 to 59,");
    case date_element::second:
        return of_element("a second, 0 to 59,");
    case date_element::seconds_of_day:
        return of_element("seconds since midnight, 0 to 86399,");
    case date_element::fraction:
        return of_element("digits of a fraction");
    case date_element::meridian:
    case date_element::meridian_with_points:
        return of_element("AM or PM");
    case date_element::era:
    case date_element::era_with_points:
        return of_element("AD or BC");
    case date_element::zone_hour:
    case date_element::zone_minute:
    case date_element::zone:
        return of_element("a time zone");
    default:
        return of_element("a year");
    }
}

bool is_of_date(date_element element) {
    return (element >= date_element::year && element <= date_element::julian_day) ||
           (element >= date_element::year_in_words && element <= date_element::short_day_name) || element == date_element::era ||
           element == date_element::era_with_points;
}

std::string zone_fault(const date_model& model, std::string_view format) {
    for (std::uint32_t i = 0; i < model.piece_count; ++i) {
        const date_piece& piece = model.pieces[i];
        if ((zqengine::said_by(piece.element) & zqengine::says_of_zone) != 0) {
            return describe({.fault = format_fault::unexpected_zone,
                             .offset = piece.offset,
                             .length = piece.length,
                             .other_offset = 0,
                             .other_length = 0},
                            format);
        }
    }
    return "";
}

} // namespace

std::string describe(const format_problem& problem, std::string_view format) {
    const std::string element = element_at(format, problem.offset, problem.length);
    const auto other = [&] { return element_at(format, problem.other_offset, problem.other_length); };
    switch (problem.fault) {
    case format_fault::none:
        break;
    case format_fault::too_long:
        return fmt::format("the date format has more than {} bytes", static_cast<int>(DFM_LONGEST_FORMAT));
    case format_fault::unknown_element:
        return fmt::format("date formats have no element {}; text stands in \"double quotes\"", element);
    case format_fault::open_quote:
        return fmt::format("the date format lacks the quote that closes {}", element);
    case format_fault::misplaced_suffix:
        return fmt::format("in the date format {} stands behind what is no number", element);
    case format_fault::lone_percent:
        return fmt::format("the date format ends in {}; %% is a percent sign", element);
    case format_fault::output_only:
        return fmt::format("by the date format {} cannot be read", element);
    case format_fault::repeated:
        return fmt::format("in the date format {} says again what {} says", element, other());
    case format_fault::contradiction:
        return fmt::format("in the date format {} contradicts {}", element, other());
    case format_fault::incomplete:
        return fmt::format("in the date format {} needs {} beside it", element, needed_by(format.substr(problem.offset, problem.length)));
    case format_fault::unexpected_zone:
        return fmt::format("a date has no time zone, and the date format has {}; TO_DT_TZ reads one", element);
    }
    return "";
}

std::optional<std::string> find_format_fault(date_format use, std::string_view format) {
    format_problem problem{};
    if (use == date_format::percent) {
        date_model model;
        model.language = DFM_ENGLISH;
        problem = zqengine::parse_percent_format(bytes_of(format), length_of(format), model);
    } else if (use == date_format::model_or_number_format) {
        if (zqtime_dt_fmt_is_for_xdec_and_date(bytes_of(format), length_of(format)) == ZQ_FORMAT_OF_NOTHING) {
            (void)parse(format, problem);
        }
    } else {
        const date_model model = parse(format, problem);
        const bool is_read = use == date_format::model_to_read || use == date_format::model_to_read_with_zone;
        if (problem.fault == format_fault::none && is_read) {
            problem = model.reading_problem;
            if (problem.fault == format_fault::none && model.has_zone && use == date_format::model_to_read) {
                return zone_fault(model, format);
            }
        }
    }
    return problem.fault == format_fault::none ? std::nullopt : std::optional(describe(problem, format));
}

std::optional<std::string> find_date_element(date_format use, std::string_view format) {
    const date_model model = parse_as(use, format);
    const std::span<const date_piece> pieces(model.pieces, model.piece_count);
    const auto found = std::ranges::find_if(pieces, [](const date_piece& piece) { return is_of_date(piece.element); });
    return found == pieces.end() ? std::nullopt : std::optional(element_at(format, found->offset, found->length));
}

std::optional<std::string> find_month_behind_hour(date_format use, std::string_view format) {
    const bool is_percent = use == date_format::percent;
    const date_model model = parse_as(use, format);
    const date_piece* before = nullptr;
    for (const date_piece& piece : std::span(model.pieces, model.piece_count)) {
        const bool is_month = piece.element == date_element::month || (is_percent && piece.element == date_element::month_name);
        const bool is_behind_hour =
            before != nullptr && (before->element == date_element::hour_12 || before->element == date_element::hour_24);
        if (is_month && is_behind_hour) {
            return fmt::format("has the month behind the hour, {}; minutes are {}", element_at(format, piece.offset, piece.length),
                               is_percent                                 ? "%i"
                               : before->element == date_element::hour_12 ? "MI, and hours from 0 to 23 HH24"
                                                                          : "MI");
        }
        const bool is_text = piece.element == date_element::punctuation || piece.element == date_element::quoted;
        before = is_text ? before : &piece;
    }
    return std::nullopt;
}

std::string month_behind_hour_too(date_format use, std::string_view format) {
    const std::optional<std::string> month = find_month_behind_hour(use, format);
    return month ? fmt::format("; it {}", *month) : "";
}

bool reads_time(std::string_view format) {
    format_problem problem{};
    return parse(format, problem).has_time;
}

std::string explain_unreadable(const dfm_model& model) {
    const date_model& parsed = zqengine::inside(model);
    const std::string_view format = text_of(parsed);
    return parsed.reading_problem.fault == format_fault::none ? zone_fault(parsed, format) : describe(parsed.reading_problem, format);
}

std::string explain_mismatch(const dfm_model& model, std::string_view text, std::string_view shown) {
    using zqengine::text_fault;
    const date_model& parsed = zqengine::inside(model);
    zqtime value;
    const zqengine::date_reading reading = zqengine::read_date(parsed, bytes_of(text), length_of(text), value);
    const std::uint32_t position = position_at(text, reading.offset);
    switch (reading.fault) {
    case text_fault::none:
    case text_fault::unreadable_model:
        return "";
    case text_fault::mismatch: {
        // Punctuation may be left out: a text that ends there lacks what follows.
        const bool lacks_next = reading.offset == text.size() && parsed.pieces[reading.piece].element == date_element::punctuation &&
                                reading.piece + 1U < parsed.piece_count;
        const std::string expected = expectation(parsed, parsed.pieces[reading.piece + (lacks_next ? 1U : 0U)]);
        return reading.offset == text.size()
                   ? fmt::format("\"{}\" ends where {} is expected", shown, expected)
                   : fmt::format("\"{}\" has no match at position {}, where {} is expected", shown, position, expected);
    }
    case text_fault::surplus:
        return fmt::format("\"{}\" goes on at position {}, behind the end of the format", shown, position);
    case text_fault::missing_date:
        return fmt::format("the calendar has no day \"{}\"", shown);
    case text_fault::wrong_weekday:
        return fmt::format("\"{}\" is on another day of the week", shown);
    case text_fault::wrong_zone:
        return fmt::format("\"{}\" has a time zone beyond 14 hours", shown);
    }
    return "";
}

std::string explain_default_mismatch() { return "expected is YYYY-MM-DD or YYYYMMDD, and behind a blank HH:MM:SS, with a fraction or not"; }

} // namespace host
