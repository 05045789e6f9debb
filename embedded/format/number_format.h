// SPDX-License-Identifier: Apache-2.0
// Number formats, parsed. docs/number-formats.md describes the language.
#ifndef BIFUN_EMBEDDED_FORMAT_NUMBER_FORMAT_H
#define BIFUN_EMBEDDED_FORMAT_NUMBER_FORMAT_H

#include <cstdint>

#include "bop/frame/contract.h"
#include "embedded/format/format_memory.h"

namespace zqengine {

struct nls_parameters;

// TM and TM9 are `shortest`, TME is `shortest_scientific`.
enum class format_kind : std::uint8_t { fixed, scientific, hexadecimal, roman, shortest, shortest_scientific };

// How the sign is shown, beginning with what a format without MI, PR or S does: a minus or a blank before the number.
enum class sign_style : std::uint8_t { minus_before, minus_behind, sign_before, sign_behind, brackets };

// Digits without anything between them and perhaps a separator or the point behind them: together at most 8 columns.
struct digit_run {
    std::uint8_t digits;  // 0 to 7
    std::uint8_t columns; // one more than digits where `mark` counts
    char mark;
};

constexpr std::uint32_t max_run_digits = 7;

// A number is written as: blanks, sign, leading symbol, body, exponent, trailing symbol, sign. The body is the digits with their separators
// and the point; each digit of the format is one column of it, so that its layout does not depend on the value. Integer digits that are
// not shown are left off at its beginning, together with the separators behind them.
struct number_format {
    format_kind kind;
    sign_style sign;
    bool fill_mode;  // FM: no padding, no trailing zeros where the format has 9
    bool blank_zero; // B
    bool lower_case; // of hexadecimal digits and Roman numerals
    bool symbol_leads;
    char decimal_point; // as TM writes it
    char point;         // among the marks of the body, or '\0'
    std::uint8_t integer_digits;
    std::uint8_t fraction_digits;
    std::uint8_t multiplier_digits;     // of the integer digits, those behind V
    std::uint8_t least_integer_digits;  // those shown in any case
    std::uint8_t least_fraction_digits; // those shown in any case under FM
    std::uint8_t body_columns;
    std::uint8_t run_count;
    std::uint8_t symbol_length;
    std::uint16_t width;        // of the result without FM; an exponent of three digits makes it wider
    std::uint64_t largest_body; // the largest number that all digits together can show; at most 2^64 - 1
    digit_run runs[max_format_length + 1];
    // The columns before the point of the last k integer digits, with the separators between and behind them.
    std::uint8_t integer_columns[max_format_length + 1];
    char symbol[max_nls_length];
};

// Returns whether the text is a number format. Elements are of any case. On failure the result is garbage.
[[nodiscard]] bool parse_number_format(const std::uint8_t* text, std::uint32_t length, const nls_parameters& nls, number_format& result);

// Why a text is no number under a format.
enum class number_fault : std::uint8_t {
    none,
    departs,         // from the format, at `at`
    too_many_digits, // more than the format has, from `at` on
    no_digits,       // where `at` is
    beyond_range,    // of DECIMAL
};

struct number_reading {
    number_fault fault;
    std::uint32_t at; // the byte of the text, perhaps the one behind its last
};

// Reads a text under a format; docs/number-formats.md says what is read. On failure the result is untouched.
[[nodiscard]] number_reading read_number(const number_format& format, const std::uint8_t* text, std::uint32_t length, xdec& result);

// Writes the value and a closing NUL. `buffer` has at least 512 bytes; what lies behind the NUL is garbage.
void write_number(const number_format& format, const xdec& value, char* buffer);

} // namespace zqengine

#endif
