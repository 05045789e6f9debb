// SPDX-License-Identifier: Apache-2.0
#include "embedded/format/number_format.h"

#include <algorithm>
#include <cstring>

#include "embedded/decimal/decimal_parts.h"
#include "embedded/format/format_reader.h"
#include "embedded/format/nls_parameters.h"
#include "engine/number_format.h"

namespace zqengine {

namespace {

// . and , always mean themselves, D and G what the NLS parameters say. A format has one kind only: else its points and separators might
// turn out the same.
struct marks {
    bool literal;
    bool national;
};

bool take_mark(format_reader& text, marks& seen, char literal, std::string_view national_element, char national, char& mark) {
    const char literal_element[] = {literal};
    if (take(text, {literal_element, 1})) {
        seen.literal = true;
        mark = literal;
        return true;
    }
    if (take(text, national_element)) {
        seen.national = true;
        mark = national;
        return true;
    }
    return false;
}

bool take_symbol(format_reader& text, const nls_parameters& nls, number_format& format) {
    const currency_symbol* const symbol = take(text, "L")   ? &nls.currency
                                          : take(text, "C") ? &nls.iso_currency
                                          : take(text, "U") ? &nls.dual_currency
                                                            : nullptr;
    if (symbol == nullptr) {
        return false;
    }
    format.symbol_length = symbol->length;
    std::memcpy(format.symbol, symbol->text, symbol->length);
    return true;
}

bool take_dollar(format_reader& text, number_format& format) {
    if (!take(text, "$")) {
        return false;
    }
    format.symbol_length = 1;
    format.symbol[0] = '$';
    return true;
}

void begin_run(number_format& format) { format.runs[format.run_count++] = {.digits = 0, .columns = 0, .mark = '\0'}; }

void add_digit(number_format& format) {
    if (format.runs[format.run_count - 1].digits == max_run_digits) {
        begin_run(format);
    }
    ++format.runs[format.run_count - 1].digits;
    ++format.runs[format.run_count - 1].columns;
}

void add_mark(number_format& format, char mark) {
    ++format.runs[format.run_count - 1].columns;
    format.runs[format.run_count - 1].mark = mark;
    begin_run(format);
}

// Reads the digits before the point, with their separators, and V with the digits behind it.
bool read_integer_digits(format_reader& text, const nls_parameters& nls, marks& seen, number_format& format, bool& plain) {
    bool multiplied = false;
    bool leading_zeros = false;
    char mark = '\0';
    while (true) {
        const bool zero = take(text, "0");
        if (zero || take(text, "9")) {
            leading_zeros |= zero;
            format.least_integer_digits = static_cast<std::uint8_t>(format.least_integer_digits + (leading_zeros ? 1 : 0));
            format.multiplier_digits = static_cast<std::uint8_t>(format.multiplier_digits + (multiplied ? 1 : 0));
            ++format.integer_digits;
            add_digit(format);
        } else if (take_mark(text, seen, ',', "G", nls.group_separator, mark)) {
            if (format.integer_digits == 0 || multiplied) {
                return false;
            }
            add_mark(format, mark);
            plain = false;
        } else if (!multiplied && take(text, "V")) {
            multiplied = true;
            plain = false;
        } else {
            return !multiplied || format.multiplier_digits != 0;
        }
    }
}

void read_fraction_digits(format_reader& text, number_format& format) {
    while (true) {
        const bool zero = take(text, "0");
        if (!zero && !take(text, "9")) {
            return;
        }
        ++format.fraction_digits;
        if (zero) {
            format.least_fraction_digits = format.fraction_digits;
        }
        add_digit(format);
    }
}

// Counts the columns of the runs read so far, all of which are before the point.
void count_integer_columns(number_format& format) {
    std::uint8_t columns = 0;
    std::uint32_t digits = 0;
    format.integer_columns[0] = 0;
    for (std::uint32_t i = format.run_count; i-- > 0;) {
        columns = static_cast<std::uint8_t>(columns + format.runs[i].columns - format.runs[i].digits);
        for (std::uint32_t k = 0; k < format.runs[i].digits; ++k) {
            format.integer_columns[++digits] = ++columns;
        }
    }
}

void read_trailing_sign(format_reader& text, number_format& format) {
    if (format.sign != sign_style::minus_before) {
        return;
    }
    format.sign = take(text, "MI")   ? sign_style::minus_behind
                  : take(text, "PR") ? sign_style::brackets
                  : take(text, "S")  ? sign_style::sign_behind
                                     : sign_style::minus_before;
}

// [S] [B] [$ or symbol] digits [point digits] [EEEE] [symbol] [MI, PR or S]; B and the symbol in any order.
bool read_digits_format(format_reader& text, const nls_parameters& nls, number_format& format) {
    if (take(text, "S")) {
        format.sign = sign_style::sign_before;
    }
    bool has_symbol = false;
    while (true) {
        if (!format.blank_zero && take(text, "B")) {
            format.blank_zero = true;
        } else if (!has_symbol && (take_dollar(text, format) || take_symbol(text, nls, format))) {
            has_symbol = true;
        } else {
            break;
        }
    }
    format.symbol_leads = has_symbol;

    marks seen{};
    bool plain = true; // neither separators nor V
    char point = '\0';
    begin_run(format);
    if (!read_integer_digits(text, nls, seen, format, plain)) {
        return false;
    }
    count_integer_columns(format);
    if (format.multiplier_digits == 0 && take_mark(text, seen, '.', "D", nls.decimal_point, point)) {
        add_mark(format, point);
        format.point = point;
        read_fraction_digits(text, format);
    }
    if (format.integer_digits + format.fraction_digits == 0 || (seen.literal && seen.national)) {
        return false;
    }
    if (take(text, "EEEE")) {
        if (!plain || format.integer_digits == 0) {
            return false;
        }
        format.kind = format_kind::scientific;
    }
    if (!has_symbol) {
        take_symbol(text, nls, format);
    }
    read_trailing_sign(text, format);

    // A number without a fraction has a digit; the one of a mantissa is never blank.
    if (format.fraction_digits == 0 || format.kind == format_kind::scientific) {
        format.least_integer_digits = std::max<std::uint8_t>(format.least_integer_digits, 1);
    }
    const std::uint32_t digits = format.integer_digits + std::uint32_t{format.fraction_digits};
    format.largest_body = digits < 20 ? static_cast<std::uint64_t>(powers_of_ten[digits]) - 1 : ~std::uint64_t{0};
    format.body_columns =
        static_cast<std::uint8_t>(format.integer_columns[format.integer_digits] + (point != '\0' ? 1 : 0) + format.fraction_digits);
    format.width = static_cast<std::uint16_t>(format.body_columns + (format.kind == format_kind::scientific ? 4 : 0) +
                                              format.symbol_length + (format.sign == sign_style::brackets ? 2 : 1));
    return true;
}

// [0...]X...
bool read_hexadecimal_format(format_reader& text, number_format& format) {
    format_reader ahead = text;
    std::uint8_t zeros = 0;
    while (take(ahead, "0")) {
        ++zeros;
    }
    if (ahead.next == ahead.end || (*ahead.next != 'X' && *ahead.next != 'x')) {
        return false;
    }
    format.kind = format_kind::hexadecimal;
    format.lower_case = *ahead.next == 'x';
    format.integer_digits = zeros;
    while (take(ahead, "X")) {
        ++format.integer_digits;
    }
    format.least_integer_digits = zeros != 0 ? format.integer_digits : 1;
    format.width = static_cast<std::uint16_t>(format.integer_digits + 1);
    text = ahead;
    return true;
}

bool read_roman_format(format_reader& text, number_format& format) {
    const bool lower_case = text.next != text.end && *text.next == 'r';
    if (!take(text, "RN")) {
        return false;
    }
    format.kind = format_kind::roman;
    format.lower_case = lower_case;
    format.width = 15; // MMMDCCCLXXXVIII
    return true;
}

bool read_shortest_format(format_reader& text, number_format& format) {
    if (!take(text, "TM")) {
        return false;
    }
    format.kind = take(text, "E") ? format_kind::shortest_scientific : format_kind::shortest;
    if (format.kind == format_kind::shortest) {
        take(text, "9");
    }
    return true;
}

} // namespace

bool parse_number_format(const std::uint8_t* characters, std::uint32_t length, const nls_parameters& nls, number_format& format) {
    if (length == 0 || length > max_format_length) {
        return false;
    }
    format = {};
    format.decimal_point = nls.decimal_point;
    format_reader text{.next = characters, .end = characters + length};
    format.fill_mode = take(text, "FM");
    const bool read = read_shortest_format(text, format) || read_roman_format(text, format) || read_hexadecimal_format(text, format) ||
                      read_digits_format(text, nls, format);
    return read && text.next == text.end;
}

} // namespace zqengine
