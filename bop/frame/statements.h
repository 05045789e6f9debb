// SPDX-License-Identifier: Apache-2.0
// What the engine says of itself: the only place where the library reads its record.
#ifndef BIFUN_FRAME_STATEMENTS_H
#define BIFUN_FRAME_STATEMENTS_H

#include <cstdint>

#include "engine/statements.h"

namespace bifun {

// The value of a statement, 0 where it is not made. Volatile: a compiler that takes the record for a whole one may not read a statement
// before its size.
template <auto statement> inline std::int32_t statement_of_engine() {
    if (&zq_engine_statements == nullptr) {
        return 0;
    }
    const volatile std::int32_t& value = zq_engine_statements.*statement;
    const auto offset = reinterpret_cast<std::uintptr_t>(&value) - reinterpret_cast<std::uintptr_t>(&zq_engine_statements);
    return offset + sizeof value <= zq_engine_statements.size ? value : 0;
}

inline bool setters_are_plain_stores() { return statement_of_engine<&bifun_engine_statements::setters_are_plain_stores>() != 0; }

inline bool free_bytes_are_open() { return statement_of_engine<&bifun_engine_statements::free_bytes_are_open>() != 0; }

inline bool ascii_is_single_byte() { return statement_of_engine<&bifun_engine_statements::ascii_is_single_byte>() != 0; }

inline bool utf8_is_unicode() { return statement_of_engine<&bifun_engine_statements::utf8_is_unicode>() != 0; }

inline bool decimals_are_packed() { return statement_of_engine<&bifun_engine_statements::decimal_layout>() == XDEC_LAYOUT_PACKED_128; }

inline bool datetimes_are_packed() { return statement_of_engine<&bifun_engine_statements::datetime_layout>() == ZQTIME_LAYOUT_PACKED; }

inline bool pads_as_described() { return statement_of_engine<&bifun_engine_statements::pads_as_described>() != 0; }

inline bool number_texts_are_as_described() { return statement_of_engine<&bifun_engine_statements::number_texts_as_described>() != 0; }

inline bool results_may_refer() { return statement_of_engine<&bifun_engine_statements::results_may_refer>() != 0; }

inline bool columns_tell_texts() { return statement_of_engine<&bifun_engine_statements::columns_tell_texts>() != 0; }

} // namespace bifun

#endif
