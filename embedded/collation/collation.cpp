// SPDX-License-Identifier: Apache-2.0
#include "engine/collation.h"

#include <unicode/ucol.h>
#include <unicode/unorm2.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <cstring>

#include "bop/frame/status.h"
#include "embedded/charset/ascii.h"
#include "embedded/charset/database_charset.h"
#include "embedded/collation/root_weights.h"
#include "embedded/collation/sort_name.h"
#include "embedded/memory/allocation.h"
#include "embedded/memory/pending_failure.h"
#include "engine/charset.h"
#include "engine/number_format.h"

namespace zqengine {
namespace {

struct key_bytes {
    std::uint8_t* key;
    std::int32_t room;
};

UCollator* open_collator(const sort_name& name, UErrorCode& status) {
    UCollator* const collator = ucol_open(name.locale, &status);
    // Without _CI and _AI the strength is that of the language tag, if it names one.
    if (U_SUCCESS(status) && name.strength != sort_strength::letters_accents_and_case) {
        ucol_setStrength(collator, name.strength == sort_strength::letters ? UCOL_PRIMARY : UCOL_SECONDARY);
    }
    return collator;
}

} // namespace
} // namespace zqengine

using namespace zqengine;

namespace zqengine {

// Room that grows with the texts.
template <class T> struct growing_room {
    T* elements;
    std::size_t size;
};

} // namespace zqengine

struct nls_collation {
    sort_name name;
    UCollator* collator; // null for the order of bytes
    root_levels root;    // of the collator
    growing_room<std::uint32_t> code_points;
    growing_room<UChar> units;
    growing_room<UChar> folded;
};

namespace zqengine {
namespace {

template <class T> void give_back(growing_room<T>& room) {
    release(room.elements, room.size * sizeof(T));
    room = {nullptr, 0};
}

// Returns whether there is room for so many; what was there is gone where it had to grow.
template <class T> bool make_room(growing_room<T>& room, std::size_t size) {
    if (room.elements == nullptr || room.size < size) {
        give_back(room);
        const std::size_t grown = size + size / 2 + 64;
        room.elements = static_cast<T*>(allocate(grown * sizeof(T)));
        room.size = room.elements == nullptr ? 0 : grown;
    }
    return room.elements != nullptr;
}

// Of a text of which all characters are known one by one. Returns whether it is.
bool make_root_key(const nls_collation& order, const std::uint8_t* text, std::uint32_t length, const key_bytes& to,
                   std::uint64_t& written) {
    if (!order.root.are_roots || length > longest_root_text) {
        return false;
    }
    std::uint32_t code_points[longest_root_text];
    std::uint32_t count = leading_ascii(text, length);
    std::copy(text, text + count, code_points);
    if (count < length) {
        count += zq_get_char_unicode_vals(text + count, length - count, code_points + count);
    }
    const std::int32_t size = root_key(code_points, count, order.root.strength, to.key, static_cast<std::uint32_t>(to.room));
    written = static_cast<std::uint64_t>(size);
    return size >= 0;
}

// The text in UTF-16, U+FFFD in place of what Unicode has not. Returns the number of units, or -1 where there is no room.
std::int32_t to_units(nls_collation& order, const std::uint8_t* text, std::uint32_t length) {
    if (!make_room(order.units, length)) {
        return -1;
    }
    UChar* const units = order.units.elements;
    std::uint32_t count = leading_ascii(text, length);
    std::copy(text, text + count, units);
    if (count < length) {
        if (!make_room(order.code_points, length)) {
            return -1;
        }
        const std::uint32_t others = zq_get_char_unicode_vals(text + count, length - count, order.code_points.elements);
        for (std::uint32_t i = 0; i < others; ++i) { // a character of two units has four bytes
            U16_APPEND_UNSAFE(units, count, order.code_points.elements[i]);
        }
    }
    return static_cast<std::int32_t>(count);
}

// The units decomposed, in `folded`, without the marks on letters. Returns their number.
std::int32_t take_accents_off(nls_collation& order, std::int32_t count, UErrorCode& status) {
    constexpr std::size_t longest_decomposition = 4;
    if (!make_room(order.folded, static_cast<std::size_t>(count) * longest_decomposition)) {
        status = U_MEMORY_ALLOCATION_ERROR;
        return 0;
    }
    UChar* const units = order.folded.elements;
    const std::int32_t decomposed = unorm2_normalize(unorm2_getNFDInstance(&status), order.units.elements, count, units,
                                                     static_cast<std::int32_t>(order.folded.size), &status);
    UChar* const end = U_FAILURE(status)
                           ? units
                           : std::remove_if(units, units + decomposed, [](UChar unit) { return u_charType(unit) == U_NON_SPACING_MARK; });
    return static_cast<std::int32_t>(end - units);
}

// Without case, or without case and accents, in UTF-8, which sorts as code points do.
std::uint64_t folded_key(nls_collation& order, std::int32_t count, const key_bytes& to, UErrorCode& status) {
    constexpr std::size_t longest_folding = 3;
    if (order.name.strength == sort_strength::letters) {
        count = take_accents_off(order, count, status);
        std::swap(order.units, order.folded);
    }
    if (!make_room(order.folded, static_cast<std::size_t>(count) * longest_folding)) {
        status = U_MEMORY_ALLOCATION_ERROR;
        return 0;
    }
    const std::int32_t folded = u_strFoldCase(order.folded.elements, static_cast<std::int32_t>(order.folded.size), order.units.elements,
                                              count, U_FOLD_CASE_DEFAULT, &status);
    std::int32_t written = 0;
    u_strToUTF8(reinterpret_cast<char*>(to.key), to.room, &written, order.folded.elements, folded, &status);
    status = status == U_BUFFER_OVERFLOW_ERROR ? U_ZERO_ERROR : status;
    return static_cast<std::uint64_t>(written);
}

std::uint64_t key_of(nls_collation& order, const std::uint8_t* text, std::uint32_t length, const key_bytes& to, UErrorCode& status) {
    std::uint64_t written = 0;
    if (make_root_key(order, text, length, to, written)) {
        return written;
    }
    const std::int32_t units = to_units(order, text, length);
    if (units < 0) {
        status = U_MEMORY_ALLOCATION_ERROR;
        return 0;
    }
    if (order.name.is_binary) {
        return folded_key(order, units, to, status);
    }
    const std::int32_t size = ucol_getSortKey(order.collator, order.units.elements, units, to.key, to.room);
    status = size == 0 ? U_MEMORY_ALLOCATION_ERROR : status;
    // Without the zero at the end: there is none before it, so that it says no more than the length.
    return static_cast<std::uint64_t>(size) - 1;
}

bool is_order_of_bytes(const sort_name& name) { return name.is_binary && name.strength == sort_strength::letters_accents_and_case; }

} // namespace
} // namespace zqengine

std::int32_t nls_sort_open(bifun_environment* /*environment*/, const std::uint8_t* nls, std::uint32_t length, nls_collation** collation) {
    sort_name name{{}, false, sort_strength::letters_accents_and_case};
    if (length != 0 && !parse_sort_name(nls, length, name)) {
        return ZQ_INVALID_NLS_PARAMETERS;
    }
    auto* const order = must_fail() ? nullptr : static_cast<nls_collation*>(allocate(sizeof(nls_collation)));
    if (order == nullptr) {
        return BIFUN_OUT_OF_MEMORY;
    }
    *order = {name, nullptr, {}, {}, {}, {}};
    UErrorCode status = U_ZERO_ERROR;
    if (!name.is_binary) {
        order->collator = open_collator(name, status);
        order->root = U_SUCCESS(status) ? levels_of(order->collator) : root_levels{};
    }
    if (U_FAILURE(status)) {
        nls_sort_close(nullptr, order);
        return status == U_MEMORY_ALLOCATION_ERROR ? std::int32_t{BIFUN_OUT_OF_MEMORY} : std::int32_t{ZQ_INVALID_NLS_PARAMETERS};
    }
    *collation = order;
    return BIFUN_OK;
}

std::int32_t nls_sort_key(nls_collation* collation, const std::uint8_t* text, std::uint32_t length, std::uint8_t* key, std::uint32_t room,
                          std::uint64_t* key_length) {
    constexpr std::uint32_t longest_text = 0x7FFFFFFF / 32; // keys are not as many times as long
    if (is_order_of_bytes(collation->name)) {
        std::copy(text, text + std::min(length, room), key);
        *key_length = length;
        return BIFUN_OK;
    }
    if (length > longest_text || must_fail()) {
        return BIFUN_OUT_OF_MEMORY;
    }
    UErrorCode status = U_ZERO_ERROR;
    *key_length = key_of(*collation, text, length, {key, static_cast<std::int32_t>(std::min(room, 0x7FFFFFFFU))}, status);
    return U_FAILURE(status) ? BIFUN_OUT_OF_MEMORY : BIFUN_OK;
}

void nls_sort_close(bifun_environment* /*environment*/, nls_collation* collation) {
    if (collation != nullptr) {
        ucol_close(collation->collator);
        give_back(collation->code_points);
        give_back(collation->units);
        give_back(collation->folded);
        release(collation, sizeof(nls_collation));
    }
}
