// SPDX-License-Identifier: Apache-2.0
// A path, a newline and a document. What a path gives of a document is JSON, which gives the same again and has no white space to lose; a
// scalar that JSON_VALUE would take is the one that JSON_QUERY gives.
#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "bop/frame/status.h"
#include "engine/json.h"
#include "fuzz/require.h"
#include "tests/contract/exact_block.h"

namespace {

std::string query(json_reader* reader, const jpath* path, std::int32_t wrapper, std::int32_t& status) {
    const std::uint8_t* text = nullptr;
    std::uint32_t length = 0;
    status = jpath_get_json(nullptr, reader, path, wrapper, &text, &length);
    return status == 0 ? std::string(reinterpret_cast<const char*>(text), length) : std::string();
}

jpath* parsed(std::string_view text) {
    const exact_block characters(text);
    jpath* path = nullptr;
    std::uint32_t fault_at = 0;
    const std::int32_t status = jpath_parse(nullptr, characters.data(), characters.length, &path, &fault_at);
    require((status == 0) == (path != nullptr));
    require(status == 0 || (status == BIFUN_INVALID_JSON_PATH && fault_at <= characters.length));
    return path;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input{reinterpret_cast<const char*>(data), size};
    const std::size_t line = std::min(input.find('\n'), input.size());
    const exact_block text(input.substr(std::min(line + 1, input.size())));
    jpath* const path = parsed(input.substr(0, line));
    jpath* const root = parsed("$");
    json_reader* const reader = json_open(nullptr);
    json_reader* const again = json_open(nullptr);
    const std::int32_t parse_status = json_parse(nullptr, reader, text.data(), text.length);
    require(parse_status == 0 || parse_status == JSON_INVALID_TEXT || parse_status == JSON_TOO_DEEP);
    if (parse_status == 0 && path != nullptr) {
        std::int32_t status = 0;
        const std::string wrapped = query(reader, path, JPATH_WRAPPER, status);
        require(status == 0 || status == JSON_NO_ITEM || status == JSON_NO_SUCH_PART || status == JSON_WRONG_OPERAND);
        if (status == 0) {
            const exact_block given(wrapped);
            const std::int32_t deeper = json_parse(nullptr, again, given.data(), given.length);
            require(deeper == 0 || deeper == JSON_TOO_DEEP); // by the wrapper
            require(deeper != 0 || query(again, root, JPATH_NO_WRAPPER, status) == wrapped);
        }
        json_item item;
        const std::int32_t scalar = jpath_get_scalar(nullptr, reader, path, &item);
        const std::string single = query(reader, path, JPATH_NO_WRAPPER, status);
        require(scalar != 0 || status == 0);
        require(status != 0 || scalar == 0 || scalar == JSON_NO_SCALAR);
    }
    json_close(nullptr, again);
    json_close(nullptr, reader);
    jpath_free(nullptr, root);
    jpath_free(nullptr, path);
    return 0;
}
