// What the string families share: characters and bytes of one value, and its full text.
#ifndef BIFUN_STR_TEXT_H
#define BIFUN_STR_TEXT_H

#include "bop/frame/attempt_rows.h"
#include "bop/frame/scratch.h"
#include "bop/frame/statements.h"
#include "engine/charset.h"

namespace bifun {

// What scratch allocations of the string families name as their source.
constexpr const char* string_source_file = "bop/bifun_str";

// Whether every character of the stored bytes is known to have one byte, without asking the engine. `ascii` is ascii_is_single_byte().
template <class Bytes> bool has_single_bytes(Bytes /*how*/, bool ascii, const bifun_string& value) {
    return ascii && Bytes::is_ascii(value.data, value.length);
}

// What a call gives for a row. A record, not a reference to the loop's result: that stays in registers then.
struct string_outcome {
    bifun_string value;
    status outcome;
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
