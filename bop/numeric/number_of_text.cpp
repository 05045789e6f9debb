// SPDX-License-Identifier: Apache-2.0
// TO_NUMBER, TO_DOUBLE and ISNUMERIC: text as a number, as numbers are usually written or under a number format.

#include "bop/frame/row_loop.h"
#include "bop/numeric/entry_points.h"
#include "engine/decimal.h"
#include "engine/number_format.h"

namespace bifun {
namespace {

// ---- without a format ----

// The mode in which an empty text counts as NULL, and text that is no number is an error.
constexpr std::uint32_t strict_mode = 2;

status read_number(const bifun_string& text, xdec& result) { return xdec_from_char(text.data, text.length, &result); }

status read_number(const bifun_string& text, double& result) { return zq_char2dou(text.data, text.length, &result); }

template <class Number> value_or_null read_or_null(const bifun_string& text, Number& result) {
    const status read = read_number(text, result);
    return read == BIFUN_UNUSABLE_TEXT ? value_or_null::null() : value_or_null(read);
}

template <class Number> value_or_null read_or_fail(const bifun_string& text, Number& result) {
    if (text.length == 0 && text.trailing_blanks == 0) {
        return value_or_null::null();
    }
    const status read = read_number(text, result);
    return read == BIFUN_UNUSABLE_TEXT ? BIFUN_NOT_A_NUMBER : read;
}

template <value_type result> status read_rows(batch_of<result> batch, column_of<VARCHAR> text) {
    using number = stored<result>;
    return global_bifun_var.compatible_mode == strict_mode ? set_rows<read_or_fail<number>>(batch, text)
                                                           : set_rows<read_or_null<number>>(batch, text);
}

status is_number(const bifun_string& text, std::int32_t& result) {
    xdec number;
    const status read = read_number(text, number);
    result = read >= BIFUN_OK && read != BIFUN_UNUSABLE_TEXT ? 1 : 0;
    return read == BIFUN_OUT_OF_MEMORY ? read : BIFUN_OK;
}

// ---- with a format ----

// What the constants of a batch say.
struct number_format {
    bifun_environment* environment;
    bifun_string format;
    bifun_string nls; // empty where there is none
};

status read(const number_format& by, const bifun_string& text, xdec& result) {
    return char_to_dec_with_fmt(by.environment, text.data, text.length, by.format.data, by.format.length, by.nls.data, by.nls.length,
                                &result, nullptr);
}

status read_double(const number_format& by, const bifun_string& text, double& result) {
    xdec number;
    const status outcome = read(by, text, number);
    result = outcome >= BIFUN_OK ? xdec_to_double(&number) : 0;
    return outcome;
}

status is_number_under(const number_format& by, const bifun_string& text, std::int32_t& result) {
    xdec number;
    const status outcome = read(by, text, number);
    result = outcome >= BIFUN_OK ? 1 : 0;
    return outcome == BIFUN_NUMBER_FORMAT_MISMATCH || outcome == BIFUN_NUMERIC_OVERFLOW ? BIFUN_OK : outcome;
}

template <auto kernel, value_type result> status read_rows(batch_of<result> batch, column_of<VARCHAR> text, const number_format& by) {
    // A format that is none shows with any text.
    xdec number;
    const status tried = read(by, {}, number);
    if (tried < BIFUN_OK && tried != BIFUN_NUMBER_FORMAT_MISMATCH && tried != BIFUN_NUMERIC_OVERFLOW) {
        return fail_batch(batch, tried);
    }
    return set_rows<kernel>(batch, constant_argument{by, true}, text);
}

template <auto kernel, value_type result> status read_rows(batch_of<result> batch, column_of<VARCHAR> text, constant_of<VARCHAR> format) {
    if (format.record->not_null == 0) {
        return null_rows(batch);
    }
    return read_rows<kernel>(batch, text, {batch.environment, string_of(*format.record, 0), {}});
}

template <auto kernel, value_type result>
status read_rows(batch_of<result> batch, column_of<VARCHAR> text, constant_of<VARCHAR> format, constant_of<VARCHAR> nls) {
    constexpr std::uint32_t longest_nls = 128;
    if (format.record->not_null == 0 || nls.record->not_null == 0) {
        return null_rows(batch);
    }
    if (nls.record->length < 1 || nls.record->length > longest_nls) {
        return fail_batch(batch, BIFUN_INVALID_NLS_PARAMETER);
    }
    return read_rows<kernel>(batch, text, {batch.environment, string_of(*format.record, 0), string_of(*nls.record, 0)});
}

} // namespace

status entry::bto_number_a_str(batch_of<DECIMAL> batch, column_of<VARCHAR> text) { return read_rows(batch, text); }
status entry::bto_number_av_str(batch_of<DECIMAL> batch, column_of<VARCHAR> text, constant_of<VARCHAR> format) {
    return read_rows<read>(batch, text, format);
}
status entry::bto_number_avv_str(batch_of<DECIMAL> batch, column_of<VARCHAR> text, constant_of<VARCHAR> format, constant_of<VARCHAR> nls) {
    return read_rows<read>(batch, text, format, nls);
}

status entry::bto_double_a_str(batch_of<DOUBLE> batch, column_of<VARCHAR> text) { return read_rows(batch, text); }
status entry::bto_double_av_str(batch_of<DOUBLE> batch, column_of<VARCHAR> text, constant_of<VARCHAR> format) {
    return read_rows<read_double>(batch, text, format);
}
status entry::bto_double_avv_str(batch_of<DOUBLE> batch, column_of<VARCHAR> text, constant_of<VARCHAR> format, constant_of<VARCHAR> nls) {
    return read_rows<read_double>(batch, text, format, nls);
}

status entry::bisnumeric_a_str(batch_of<BOOL> batch, column_of<VARCHAR> text) { return set_rows<is_number>(batch, text); }
status entry::bisnumeric_av_str(batch_of<BOOL> batch, column_of<VARCHAR> text, constant_of<VARCHAR> format) {
    return read_rows<is_number_under>(batch, text, format);
}
status entry::bisnumeric_avv_str(batch_of<BOOL> batch, column_of<VARCHAR> text, constant_of<VARCHAR> format, constant_of<VARCHAR> nls) {
    return read_rows<is_number_under>(batch, text, format, nls);
}

} // namespace bifun
