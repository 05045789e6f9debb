// SPDX-License-Identifier: Apache-2.0
// TO_CHAR of numbers: as they are, under a number format, or under a format and NLS parameters. The result has the promise of the number
// column alone.

#include <array>
#include <cmath>
#include <utility>

#include "bop/frame/nls_text.h"
#include "bop/frame/statements.h"
#include "bop/frame/string_rows.h"
#include "bop/numeric/entry_points.h"
#include "bop/numeric/integer_text.h"
#include "engine/decimal.h"
#include "engine/number_check.h"
#include "engine/number_format.h"
#include "layouts/decimal_text.h"

namespace bifun {
namespace {

constexpr std::uint32_t longest_format = 75;

// Where a text goes.
using formatted_text = bounded_text<ZQ_FORMATTED_NUMBER_SIZE>;
using decimal_text = bounded_text<512>;
using double_text = bounded_text<ZQ_DOUBLE_TEXT_SIZE>;

template <std::uint32_t size> char* characters(const bounded_text<size>& text) { return reinterpret_cast<char*>(text.bytes); }

// An engine that does not say how it writes texts finds all bytes zero: whatever it does with those behind the text, what it writes up to a
// NUL is the text. Vector by vector: compilers clear an array of such a size by an instruction that takes 8 ns longer.
template <std::uint32_t size> void clear(const bounded_text<size>& text) {
    using vector = std::array<char, 64>;
    static_assert(size % sizeof(vector) == 0);
    const auto clear_vectors = [&]<std::size_t... i>(std::index_sequence<i...>) {
        constexpr vector zeros{};
        (std::memcpy(text.bytes + i * sizeof zeros, zeros.data(), sizeof zeros), ...);
    };
    clear_vectors(std::make_index_sequence<size / sizeof(vector)>());
}

template <std::uint32_t size> void measure(bounded_text<size>& text) {
    text.length = static_cast<std::uint32_t>(strnlen(characters(text), size));
}

// ---- without a format ----

template <class Integer> void render_integer(Integer number, bounded_text<integer_text_size>& text) {
    text.length = write_integer(number, text.bytes);
}

status render(const xdec& number, decimal_text& text) {
    constexpr std::uint32_t room = 500;
    return xdec_to_char_with_zero(&number, characters(text), room, 0, 0, &text.length);
}

status check_overflow_of(double number) { return std::isfinite(number) ? BIFUN_OK : ntype_is_double_overflow(number); }

status render(double number, double_text& text) {
    const status overflow = check_overflow_of(number);
    return overflow < BIFUN_OK ? overflow : zq_dou2char(number, characters(text), ZQ_DOUBLE_TEXT_SIZE, &text.length);
}

template <class Number, class Text> status render_as_described(Number number, Text& text) { return render(number, text); }

template <class Number, class Text> status render_into_zeros(Number number, Text& text) {
    clear(text);
    const status rendered = render(number, text);
    measure(text);
    return rendered;
}

// Whether the texts of a block look like long ones, from the first of its rows. Either way of writing goes on with the other where it
// must, but which of two a row needs is hard to guess where a column has both.
bool has_long_texts(const void* source, std::uint32_t first, std::uint32_t count) {
    constexpr std::uint32_t most_looked_at = 8;
    const auto& column = *static_cast<const bifun_column*>(source);
    const auto* const numbers = static_cast<const xdec*>(column.data->values);
    std::uint32_t long_ones = 0;
    for (std::uint32_t k = 0; k < count && k < most_looked_at; ++k) {
        const std::uint32_t row = column.selection != nullptr ? column.selection[first + k] : first + k;
        long_ones += decimal_layout::has_short_text(numbers[row]) ? 0 : 1;
    }
    return long_ones > 1;
}

status render_packed(const xdec& number, bool long_texts, decimal_text& text) {
    text.length = long_texts ? 0 : decimal_layout::write_short(number, text.bytes);
    if (text.length == 0) {
        text.length = decimal_layout::write_long(number, text.bytes);
    }
    return text.length != 0 ? BIFUN_OK : render(number, text);
}

// ---- with a format ----

status decimal_of(const xdec& number, xdec& result) {
    result = number;
    return BIFUN_OK;
}

status decimal_of(std::int64_t number, xdec& result) { return xdec_from_int64(&result, number, XDEC_ANY_PRECISION); }

status decimal_of(std::int32_t number, xdec& result) { return decimal_of(std::int64_t{number}, result); }

status decimal_of(double number, xdec& result) {
    const status overflow = check_overflow_of(number);
    return overflow < BIFUN_OK ? overflow : xdec_from_double(&result, number);
}

// What the constants of a batch say.
struct number_formatting {
    bifun_environment* environment;
    bifun_string format;
    bifun_string nls; // empty where there is none
    bool texts_are_as_described;
};

template <class Number> status format_number(const Number& number, const number_formatting& by, formatted_text& text) {
    xdec decimal;
    const status converted = decimal_of(number, decimal);
    if (converted < BIFUN_OK) {
        return converted;
    }
    if (!by.texts_are_as_described) {
        clear(text);
    }
    char* const bytes = characters(text);
    const bifun_string& format = by.format;
    const status rendered =
        by.nls.length == 0 ? xdec_to_char_with_fmt(by.environment, &decimal, bytes, format.data, format.length)
                           : xdec_to_char_with_nls(by.environment, &decimal, bytes, format.data, format.length, by.nls.data, by.nls.length);
    measure(text);
    return rendered;
}

template <value_type type> status format_rows(batch_of<VARCHAR> batch, column_of<type> numbers, const number_formatting& by) {
    return string_rows<format_number<stored<type>>>(batch, numbers, shared(by));
}

// A format of such a length makes every row NULL, whatever its null flag says.
bool is_no_format(constant_of<VARCHAR> format) { return format.record->length < 1 || format.record->length > longest_format; }

template <value_type type> status to_char(batch_of<VARCHAR> batch, column_of<type> numbers, constant_of<VARCHAR> format) {
    if (is_no_format(format)) {
        return null_rows(batch);
    }
    return format_rows(batch, numbers, {batch.environment, string_of(*format.record, 0), {}, number_texts_are_as_described()});
}

template <value_type type>
status to_char(batch_of<VARCHAR> batch, column_of<type> numbers, constant_of<VARCHAR> format, constant_of<VARCHAR> nls) {
    if (is_no_format(format)) {
        return null_rows(batch);
    }
    if (nls.record->length < 1 || nls.record->length > longest_nls) {
        return fail_batch(batch, BIFUN_INVALID_NLS_PARAMETER);
    }
    return format_rows(batch, numbers,
                       {batch.environment, string_of(*format.record, 0), string_of(*nls.record, 0), number_texts_are_as_described()});
}

} // namespace

status entry::bto_char_a_int_to_varchar(batch_of<VARCHAR> batch, column_of<INT> x) {
    return string_rows<render_integer<std::int32_t>>(batch, x);
}
status entry::bto_char_a_int64_to_varchar(batch_of<VARCHAR> batch, column_of<BIGINT> x) {
    return string_rows<render_integer<std::int64_t>>(batch, x);
}
status entry::bto_char_a_dec_to_varchar(batch_of<VARCHAR> batch, column_of<DECIMAL> x) {
    if (!number_texts_are_as_described()) {
        return string_rows<render_into_zeros<const xdec&, decimal_text>>(batch, x);
    }
    return decimals_are_packed() ? string_rows<render_packed>(batch, x, block_argument<bool>{x.column, has_long_texts})
                                 : string_rows<render_as_described<const xdec&, decimal_text>>(batch, x);
}
status entry::bto_char_a_double_to_varchar(batch_of<VARCHAR> batch, column_of<DOUBLE> x) {
    return number_texts_are_as_described() ? string_rows<render_as_described<double, double_text>>(batch, x)
                                           : string_rows<render_into_zeros<double, double_text>>(batch, x);
}

status entry::bto_char_av_int_to_varchar_with_fmt(batch_of<VARCHAR> batch, column_of<INT> x, constant_of<VARCHAR> format) {
    return to_char(batch, x, format);
}
status entry::bto_char_av_int64_to_varchar_with_fmt(batch_of<VARCHAR> batch, column_of<BIGINT> x, constant_of<VARCHAR> format) {
    return to_char(batch, x, format);
}
status entry::bto_char_av_double_to_varchar_with_fmt(batch_of<VARCHAR> batch, column_of<DOUBLE> x, constant_of<VARCHAR> format) {
    return to_char(batch, x, format);
}

status entry::bto_char_avv_int_to_varchar_with_nls(batch_of<VARCHAR> batch, column_of<INT> x, constant_of<VARCHAR> format,
                                                   constant_of<VARCHAR> nls) {
    return to_char(batch, x, format, nls);
}
status entry::bto_char_avv_int64_to_varchar_with_nls(batch_of<VARCHAR> batch, column_of<BIGINT> x, constant_of<VARCHAR> format,
                                                     constant_of<VARCHAR> nls) {
    return to_char(batch, x, format, nls);
}
status entry::bto_char_avv_dec_to_varchar_with_nls(batch_of<VARCHAR> batch, column_of<DECIMAL> x, constant_of<VARCHAR> format,
                                                   constant_of<VARCHAR> nls) {
    return to_char(batch, x, format, nls);
}
status entry::bto_char_avv_double_to_varchar_with_nls(batch_of<VARCHAR> batch, column_of<DOUBLE> x, constant_of<VARCHAR> format,
                                                      constant_of<VARCHAR> nls) {
    return to_char(batch, x, format, nls);
}

} // namespace bifun
