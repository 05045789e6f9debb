// TO_CHAR of numbers: as they are, under a number format, or under a format and NLS parameters. The result has the promise of the number
// column alone.

#include <array>
#include <utility>

#include "bop/frame/string_rows.h"
#include "bop/numeric/entry_points.h"
#include "bop/numeric/integer_text.h"
#include "engine/decimal.h"
#include "engine/number_check.h"
#include "engine/number_format.h"

namespace bifun {
namespace {

constexpr std::uint32_t longest_format = 75;
constexpr std::uint32_t longest_nls = 128;

// Where the engine writes the text of a row: zeros when it begins, whatever it did with them in the row before. What it writes up to a NUL
// is the text.
template <std::uint32_t size> struct alignas(64) text_buffer { char bytes[size]; };
using formatted_text = text_buffer<ZQ_FORMATTED_NUMBER_SIZE>;
using decimal_text = text_buffer<512>;
using double_text = text_buffer<ZQ_DOUBLE_TEXT_SIZE>;

// Vector by vector: compilers clear an array of such a size by an instruction that takes 8 ns longer.
template <std::uint32_t size> void clear(text_buffer<size>& buffer) {
    using vector = std::array<char, 64>;
    static_assert(size % sizeof(vector) == 0);
    const auto clear_vectors = [&]<std::size_t... i>(std::index_sequence<i...>) {
        constexpr vector zeros{};
        (std::memcpy(buffer.bytes + i * sizeof zeros, zeros.data(), sizeof zeros), ...);
    };
    clear_vectors(std::make_index_sequence<size / sizeof(vector)>());
}

template <std::uint32_t size> bifun_string text_in(text_buffer<size>& buffer) {
    return {static_cast<std::uint32_t>(strnlen(buffer.bytes, size)), 0, reinterpret_cast<std::uint8_t*>(buffer.bytes)};
}

// ---- without a format ----

using integer_text = std::array<char, integer_text_size>;

template <class Integer> void render_integer(Integer number, integer_text& buffer, bifun_string& text) {
    char* const first = write_integer(number, buffer.data());
    text = {static_cast<std::uint32_t>(buffer.data() + buffer.size() - first), 0, reinterpret_cast<std::uint8_t*>(first)};
}

status render_decimal(const xdec& number, decimal_text& buffer, bifun_string& text) {
    clear(buffer);
    constexpr std::uint32_t room = 500;
    std::uint32_t length = 0;
    const status rendered = xdec_to_char_with_zero(&number, buffer.bytes, room, 0, 0, &length);
    text = text_in(buffer);
    return rendered;
}

status render_double(double number, double_text& buffer, bifun_string& text) {
    const status overflow = ntype_is_double_overflow(number);
    if (overflow < BIFUN_OK) {
        return overflow;
    }
    clear(buffer);
    std::uint32_t length = 0;
    const status rendered = zq_dou2char(number, buffer.bytes, ZQ_DOUBLE_TEXT_SIZE, &length);
    text = text_in(buffer);
    return rendered;
}

// ---- with a format ----

status decimal_of(const xdec& number, xdec& result) {
    result = number;
    return BIFUN_OK;
}

status decimal_of(std::int64_t number, xdec& result) { return xdec_from_int64(&result, number, XDEC_ANY_PRECISION); }

status decimal_of(std::int32_t number, xdec& result) { return decimal_of(std::int64_t{number}, result); }

status decimal_of(double number, xdec& result) {
    const status overflow = ntype_is_double_overflow(number);
    return overflow < BIFUN_OK ? overflow : xdec_from_double(&result, number);
}

// What the constants of a batch say, and the buffer of its rows.
struct number_formatting {
    bifun_environment* environment;
    bifun_string format;
    bifun_string nls; // empty where there is none
    formatted_text buffer;
};

template <class Number> status format_number(const Number& number, number_formatting& by, bifun_string& text) {
    xdec decimal;
    const status converted = decimal_of(number, decimal);
    if (converted < BIFUN_OK) {
        return converted;
    }
    clear(by.buffer);
    char* const bytes = by.buffer.bytes;
    const bifun_string& format = by.format;
    const status rendered =
        by.nls.length == 0 ? xdec_to_char_with_fmt(by.environment, &decimal, bytes, format.data, format.length)
                           : xdec_to_char_with_nls(by.environment, &decimal, bytes, format.data, format.length, by.nls.data, by.nls.length);
    text = text_in(by.buffer);
    return rendered;
}

template <value_type type> status format_rows(batch_of<VARCHAR> batch, column_of<type> numbers, number_formatting& by) {
    return string_rows<format_number<stored<type>>>(batch, numbers, shared(by));
}

// A format of such a length makes every row NULL, whatever its null flag says.
bool is_no_format(constant_of<VARCHAR> format) { return format.record->length < 1 || format.record->length > longest_format; }

template <value_type type> status to_char(batch_of<VARCHAR> batch, column_of<type> numbers, constant_of<VARCHAR> format) {
    if (is_no_format(format)) {
        return null_rows(batch);
    }
    number_formatting by;
    by.environment = batch.environment;
    by.format = string_of(*format.record, 0);
    by.nls = {};
    return format_rows(batch, numbers, by);
}

template <value_type type>
status to_char(batch_of<VARCHAR> batch, column_of<type> numbers, constant_of<VARCHAR> format, constant_of<VARCHAR> nls) {
    if (is_no_format(format)) {
        return null_rows(batch);
    }
    if (nls.record->length < 1 || nls.record->length > longest_nls) {
        return fail_batch(batch, BIFUN_INVALID_NLS_PARAMETER);
    }
    number_formatting by;
    by.environment = batch.environment;
    by.format = string_of(*format.record, 0);
    by.nls = string_of(*nls.record, 0);
    return format_rows(batch, numbers, by);
}

} // namespace

status entry::bto_char_a_int_to_varchar(batch_of<VARCHAR> batch, column_of<INT> x) {
    integer_text buffer;
    return string_rows<render_integer<std::int32_t>>(batch, x, shared(buffer));
}
status entry::bto_char_a_int64_to_varchar(batch_of<VARCHAR> batch, column_of<BIGINT> x) {
    integer_text buffer;
    return string_rows<render_integer<std::int64_t>>(batch, x, shared(buffer));
}
status entry::bto_char_a_dec_to_varchar(batch_of<VARCHAR> batch, column_of<DECIMAL> x) {
    decimal_text buffer;
    return string_rows<render_decimal>(batch, x, shared(buffer));
}
status entry::bto_char_a_double_to_varchar(batch_of<VARCHAR> batch, column_of<DOUBLE> x) {
    double_text buffer;
    return string_rows<render_double>(batch, x, shared(buffer));
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
