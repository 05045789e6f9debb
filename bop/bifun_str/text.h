// What the string families share: what is known of texts before a row is seen, and the full text of one value.
#ifndef BIFUN_STR_TEXT_H
#define BIFUN_STR_TEXT_H

#include <algorithm>

#include "bop/frame/scratch.h"
#include "bop/frame/statements.h"
#include "bop/frame/string_rows.h"
#include "engine/charset.h"

namespace bifun {

// What scratch allocations of the string families name as their source.
constexpr const char* string_source_file = "bop/bifun_str";

// How characters are told. For a kernel that has to know, an argument: fixed(text_operations_of_engine()).
struct text_operations {
    bool ascii_is_single_byte; // so that nobody has to be asked about text of such bytes
};

inline text_operations text_operations_of_engine() { return {ascii_is_single_byte()}; }

// Whether every character of the stored bytes is known to have one byte, without asking the engine.
inline bool has_single_bytes(const text_operations& texts, const bifun_string& value) {
    return texts.ascii_is_single_byte && is_ascii(value.data, value.length);
}

// The same for the first `count` stored bytes.
inline bool begins_with_single_bytes(const text_operations& texts, const bifun_string& value, std::uint32_t count) {
    return texts.ascii_is_single_byte && begins_with_ascii(value.data, count);
}

// What a call gives for a row. A record, not a reference to the loop's result: that stays in registers then.
template <class Outcome> struct string_outcome {
    bifun_string value;
    Outcome outcome;
};

inline bool is_empty(const bifun_string& value) { return value.length == 0 && value.trailing_blanks == 0; }

inline std::uint64_t full_length(const bifun_string& value) { return std::uint64_t{value.length} + value.trailing_blanks; }

// The full text in `target`, which has room for it.
inline void write_full_text(std::uint8_t* target, const bifun_string& value) {
    if (value.length != 0) {
        std::memcpy(target, value.data, value.length);
    }
    std::memset(target + value.length, blank, value.trailing_blanks);
}

} // namespace bifun

#endif
