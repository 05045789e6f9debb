// TO_CHAR of numbers: as they are, under a number format, or under a format and NLS parameters. The result has the promise of the number
// column alone; a row that cannot be rendered is NULL.

#include "bop/frame/attempt_rows.h"
#include "bop/numeric/integer_text.h"
#include "engine/decimal.h"
#include "engine/number_check.h"
#include "engine/number_format.h"

namespace bifun {
namespace {

constexpr std::size_t text_size = 1024;
constexpr std::uint32_t longest_format = 75;
constexpr std::uint32_t longest_nls = 128;

// Calls `render(number, buffer)` with a buffer of zeros for every number; the text is what it has written up to a NUL.
template <class T, class Render> status render_rows(const batch& batch, const column_argument<T>& numbers, const Render& render) {
    char buffer[text_size] = {};
    std::uint32_t length = 0;
    return attempt_string_rows(
        batch, portable_bytes{},
        [&](bifun_string& text, const T& number) -> status {
            std::memset(buffer, 0, length); // clearing it whole would take as long as rendering
            const status rendered = render(number, buffer);
            length = static_cast<std::uint32_t>(strnlen(buffer, text_size));
            text = {length, 0, reinterpret_cast<std::uint8_t*>(buffer)};
            return rendered;
        },
        numbers);
}

// ---- without a format ----

template <class Integer> status assign_integers(const batch& batch, const column_argument<Integer>& numbers) {
    char buffer[integer_text_size];
    return attempt_string_rows(
        batch, portable_bytes{},
        [&buffer](bifun_string& text, Integer number) -> status {
            char* const first = write_integer(number, buffer);
            text = {static_cast<std::uint32_t>(buffer + integer_text_size - first), 0, reinterpret_cast<std::uint8_t*>(first)};
            return BIFUN_OK;
        },
        numbers);
}

status render_decimal(const xdec& number, char* buffer) {
    constexpr std::uint32_t room = 500;
    std::uint32_t length = 0;
    return xdec_to_char_with_zero(&number, buffer, room, 0, 0, &length);
}

status render_double(double number, char* buffer) {
    const status overflow = ntype_is_double_overflow(number);
    std::uint32_t length = 0;
    return overflow < BIFUN_OK ? overflow : zq_dou2char(number, buffer, text_size, &length);
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

// Whether the format makes every row NULL. Its length decides, whatever its null flag says.
bool has_no_format(const bifun_string_constant& format) { return format.length < 1 || format.length > longest_format; }

template <class T, class Write> status format_rows(const batch& batch, const column_argument<T>& numbers, const Write& write) {
    return render_rows(batch, numbers, [&](const T& number, char* buffer) -> status {
        xdec decimal;
        const status converted = decimal_of(number, decimal);
        if (converted < BIFUN_OK) {
            return converted;
        }
        return write(decimal, buffer);
    });
}

template <class T> status to_char(const batch& batch, const column_argument<T>& numbers, string_constant format) {
    if (has_no_format(*format)) {
        return null_rows(batch);
    }
    const bifun_string text = string_of(*format, 0);
    return format_rows(batch, numbers, [&](const xdec& number, char* buffer) {
        return xdec_to_char_with_fmt(batch.environment, &number, buffer, text.data, text.length);
    });
}

template <class T> status to_char(const batch& batch, const column_argument<T>& numbers, string_constant format, string_constant nls) {
    if (has_no_format(*format)) {
        return null_rows(batch);
    }
    if (nls->length < 1 || nls->length > longest_nls) {
        return fail_batch(batch, BIFUN_INVALID_NLS_PARAMETER);
    }
    const bifun_string text = string_of(*format, 0);
    const bifun_string parameters = string_of(*nls, 0);
    return format_rows(batch, numbers, [&](const xdec& number, char* buffer) {
        return xdec_to_char_with_nls(batch.environment, &number, buffer, text.data, text.length, parameters.data, parameters.length);
    });
}

} // namespace
} // namespace bifun

using namespace bifun;

status bto_char_a_int_to_varchar(BATCH_OF(column x)) { return assign_integers(BATCH, integer(x)); }
status bto_char_a_int64_to_varchar(BATCH_OF(column x)) { return assign_integers(BATCH, bigint(x)); }
status bto_char_a_dec_to_varchar(BATCH_OF(column x)) { return render_rows(BATCH, decimal(x), render_decimal); }
status bto_char_a_double_to_varchar(BATCH_OF(column x)) { return render_rows(BATCH, floating(x), render_double); }

status bto_char_av_int_to_varchar_with_fmt(BATCH_OF(column x, string_constant format)) { return to_char(BATCH, integer(x), format); }
status bto_char_av_int64_to_varchar_with_fmt(BATCH_OF(column x, string_constant format)) { return to_char(BATCH, bigint(x), format); }
status bto_char_av_double_to_varchar_with_fmt(BATCH_OF(column x, string_constant format)) { return to_char(BATCH, floating(x), format); }

status bto_char_avv_int_to_varchar_with_nls(BATCH_OF(column x, string_constant format, string_constant nls)) {
    return to_char(BATCH, integer(x), format, nls);
}
status bto_char_avv_int64_to_varchar_with_nls(BATCH_OF(column x, string_constant format, string_constant nls)) {
    return to_char(BATCH, bigint(x), format, nls);
}
status bto_char_avv_dec_to_varchar_with_nls(BATCH_OF(column x, string_constant format, string_constant nls)) {
    return to_char(BATCH, decimal(x), format, nls);
}
status bto_char_avv_double_to_varchar_with_nls(BATCH_OF(column x, string_constant format, string_constant nls)) {
    return to_char(BATCH, floating(x), format, nls);
}
