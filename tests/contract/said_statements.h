// SPDX-License-Identifier: Apache-2.0
// What the engine says of itself, said and unsaid.
#ifndef BIFUN_TESTS_CONTRACT_SAID_STATEMENTS_H
#define BIFUN_TESTS_CONTRACT_SAID_STATEMENTS_H

#include <cstddef>
#include <cstdint>
#include <iterator>

#include "engine/statements.h"

namespace contract {

// What the engine says of itself and other engines may not say, in the order of the record.
inline constexpr std::int32_t bifun_engine_statements::*engine_statements[] = {
    &bifun_engine_statements::setters_are_plain_stores, &bifun_engine_statements::free_bytes_are_open,
    &bifun_engine_statements::ascii_is_single_byte,     &bifun_engine_statements::decimal_layout,
    &bifun_engine_statements::datetime_layout,          &bifun_engine_statements::pads_as_described,
    &bifun_engine_statements::utf8_is_unicode,          &bifun_engine_statements::number_texts_as_described,
    &bifun_engine_statements::results_may_refer,        &bifun_engine_statements::columns_tell_texts};
inline constexpr unsigned all_statements = (1U << std::size(engine_statements)) - 1;

constexpr unsigned bit_of(std::int32_t bifun_engine_statements::*statement) {
    unsigned bit = 1;
    for (const auto each : engine_statements) {
        if (each == statement) {
            break;
        }
        bit <<= 1;
    }
    return bit;
}
inline constexpr unsigned number_texts_statement = bit_of(&bifun_engine_statements::number_texts_as_described);
inline constexpr unsigned results_refer = bit_of(&bifun_engine_statements::results_may_refer);

// Makes the engine unsay those whose bits are set, as long as this lives.
class unsaid {
  public:
    explicit unsaid(unsigned statements) {
        for (std::size_t i = 0; i < std::size(engine_statements); ++i) {
            if ((statements >> i & 1) != 0) {
                zq_engine_statements.*engine_statements[i] = 0;
            }
        }
    }
    ~unsaid() { zq_engine_statements = saved; }
    unsaid(const unsaid&) = delete;
    unsaid& operator=(const unsaid&) = delete;

  private:
    const bifun_engine_statements saved = zq_engine_statements;
};

} // namespace contract

#endif
