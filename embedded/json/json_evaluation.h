// SPDX-License-Identifier: Apache-2.0
// What a path gives of a document.
#ifndef BIFUN_EMBEDDED_JSON_JSON_EVALUATION_H
#define BIFUN_EMBEDDED_JSON_JSON_EVALUATION_H

#include <cstdint>
#include <string_view>

#include "embedded/json/json_document.h"
#include "embedded/json/json_path.h"

namespace zqengine {

constexpr std::uint32_t no_token = ~std::uint32_t{0};

// A value of the document, or a scalar that a method gives or a path has in itself. The text is what stands between the quotes of a string,
// else all of the value.
struct path_item {
    std::uint8_t kind; // of json_kind
    bool has_escapes;  // of strings
    std::string_view text;
    std::uint32_t token; // of the document; no_token where it is not in it
    std::uint32_t key;   // of the member that an object of keyvalue() stands for, whose object is `token`; else no_token
};

// Who is given the items, one by one in their order. `take` returns 0, a number above 0 where no further item is wanted, or a failure. The
// text of an item stays for as long as `take` runs. `counts`: it makes a difference how often an item is given.
struct item_receiver {
    void* to;
    std::int32_t (*take)(void* to, const path_item& item);
    bool counts;
};

path_item item_of(const json_document& document, std::uint32_t token);

// Whether a path does nothing but name members, all of objects, as most paths do. Then `token` is the value; no_token where a member is
// missing.
[[nodiscard]] bool find_value(const json_document& document, const jpath& path, std::uint32_t& token);

// Returns what the receiver has returned last, or JSON_NO_SUCH_PART, JSON_WRONG_OPERAND or -503.
[[nodiscard]] std::int32_t evaluate_path(const json_document& document, const jpath& path, const item_receiver& receiver);

} // namespace zqengine

#endif
