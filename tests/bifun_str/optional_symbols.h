// What the embedded engine says of itself beyond the required, to be unsaid for a while: then the library must ask it everything.
#ifndef BIFUN_TESTS_BIFUN_STR_OPTIONAL_SYMBOLS_H
#define BIFUN_TESTS_BIFUN_STR_OPTIONAL_SYMBOLS_H

#include <cstdint>

#include "engine/charset.h"
#include "engine/columns.h"

struct optional_symbols {
    explicit optional_symbols(bool said) { say(said ? 1 : 0); }
    ~optional_symbols() { say(1); }
    optional_symbols(const optional_symbols&) = delete;
    optional_symbols& operator=(const optional_symbols&) = delete;

    static void say(std::int32_t said) { zq_ascii_is_single_byte = bdta3_free_bytes_are_open = bdta3_setters_are_plain_stores = said; }
};

#endif
