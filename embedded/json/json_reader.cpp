// SPDX-License-Identifier: Apache-2.0
// The operations of engine/json.h on documents.
#include <charconv>
#include <cstring>
#include <new>

#include "bop/frame/status.h"
#include "embedded/json/document_memory.h"
#include "embedded/json/json_charset.h"
#include "embedded/json/json_document.h"
#include "embedded/json/json_evaluation.h"
#include "embedded/json/json_path.h"
#include "embedded/json/json_strings.h"
#include "embedded/memory/allocation.h"
#include "embedded/memory/pending_failure.h"
#include "embedded/session/environment.h"
#include "engine/json.h"

using namespace zqengine;

// Results that are not in the document are written into the buffer.
struct json_reader {
    json_parser parser;
    document_recall recall;
    charset_converter to_utf8;   // of documents
    charset_converter from_utf8; // of results
    json_document document;
    char* buffer;
    std::size_t capacity;
    std::size_t length;
};

namespace {

// Room for so many further bytes behind those that the buffer has; null when memory is exhausted.
char* make_room(json_reader& reader, std::size_t size) {
    if (reader.capacity - reader.length < size) {
        const std::size_t capacity = (reader.length + size) * 2;
        char* const grown = static_cast<char*>(allocate(capacity));
        if (grown == nullptr) {
            return nullptr;
        }
        if (reader.length != 0) {
            std::memcpy(grown, reader.buffer, reader.length);
        }
        release(reader.buffer, reader.capacity);
        reader.buffer = grown;
        reader.capacity = capacity;
    }
    return reader.buffer + reader.length;
}

// PostgreSQL's, too. Items that a path gives over and over would fill any memory.
constexpr std::size_t longest_result = (std::size_t{1} << 28) - 1;

constexpr std::size_t copy_room = 16; // what may be overwritten behind a copy

void copy(const json_document& document, std::uint32_t begin, std::size_t length, char* out) {
    if (length <= copy_room && document.length - begin >= copy_room) {
        std::memcpy(out, document.text + begin, copy_room);
    } else {
        std::memcpy(out, document.text + begin, length);
    }
}

// Copies a value without the white space between its tokens.
char* write_compact(const json_document& document, std::uint32_t token, char* out) {
    const std::uint32_t end = behind_value(document, token);
    for (; token + 1 < end; ++token) {
        const std::uint32_t length = document.places[token + 1] - document.places[token];
        copy(document, document.places[token], length, out);
        out += length;
        while (is_json_space(out[-1])) {
            --out;
        }
    }
    const std::string_view last = source_of(document, token);
    copy(document, document.places[token], last.size(), out);
    return out + last.size();
}

bool append_text(json_reader& reader, std::string_view text) {
    char* const room = make_room(reader, text.size());
    if (room != nullptr && !text.empty()) {
        std::memcpy(room, text.data(), text.size());
        reader.length += text.size();
    }
    return room != nullptr;
}

bool append_value(json_reader& reader, std::uint32_t token) {
    char* const room = make_room(reader, source_of(reader.document, token).size() + copy_room);
    if (room != nullptr) {
        reader.length += static_cast<std::size_t>(write_compact(reader.document, token, room) - room);
    }
    return room != nullptr;
}

// Characters of a string, with escapes where there have to be some.
bool append_characters(json_reader& reader, std::string_view characters) {
    constexpr std::size_t longest_escape = 6;
    char* const room = make_room(reader, characters.size() * longest_escape + 2);
    if (room == nullptr) {
        return false;
    }
    char* const end = write_string(characters, room);
    reader.length += static_cast<std::size_t>(end - room);
    return true;
}

// An object of keyvalue().
bool append_pair(json_reader& reader, const path_item& pair) {
    char digits[24];
    const char* const end = std::to_chars(digits, digits + sizeof digits, pair.token).ptr;
    return append_text(reader, "{\"id\":") && append_text(reader, {digits, static_cast<std::size_t>(end - digits)}) &&
           append_text(reader, ",\"key\":") && append_value(reader, pair.key) && append_text(reader, ",\"value\":") &&
           append_value(reader, pair.key + 2) && append_text(reader, "}");
}

// Behind what the buffer has.
bool append_item(json_reader& reader, const path_item& item) {
    if (item.key != no_token) {
        return append_pair(reader, item);
    }
    if (item.token != no_token) {
        return append_value(reader, item.token);
    }
    if (item.kind != JSON_STRING) {
        return append_text(reader, item.text);
    }
    return item.has_escapes ? append_text(reader, "\"") && append_text(reader, item.text) && append_text(reader, "\"")
                            : append_characters(reader, item.text);
}

std::int32_t give(json_reader& reader, std::string_view result, const std::uint8_t** text, std::uint32_t* length) {
    std::int32_t status = BIFUN_OK;
    if (must_be_converted(result)) [[unlikely]] {
        status = convert_from_utf8(reader.from_utf8, result, result);
    }
    *text = reinterpret_cast<const std::uint8_t*>(result.data());
    *length = static_cast<std::uint32_t>(result.size());
    return status;
}

// What evaluate_path does, with fewer steps where there is one value to look up.
template <class Take> std::int32_t take_items(const json_document& document, const jpath& path, Take& take) {
    std::uint32_t token = 0;
    if (!find_value(document, path, token)) {
        const item_receiver receiver{&take, [](void* to, const path_item& given) { return (*static_cast<Take*>(to))(given); }, true};
        return evaluate_path(document, path, receiver);
    }
    if (token == no_token) {
        return path.strict ? std::int32_t{JSON_NO_SUCH_PART} : std::int32_t{BIFUN_OK};
    }
    return take(item_of(document, token));
}

} // namespace

// Without memory for what is kept all is parsed.
json_reader* json_open(bifun_environment* environment) {
    void* const memory = must_fail() ? nullptr : allocate(sizeof(json_reader));
    if (memory == nullptr) {
        return nullptr;
    }
    auto* const reader = new (memory) json_reader{};
    if (environment != nullptr) {
        if (environment->documents == nullptr) {
            environment->documents.reset(create_document_memory());
        }
        reader->recall.memory = environment->documents.get();
    }
    return reader;
}

void json_close(bifun_environment* environment, json_reader* reader) {
    static_cast<void>(environment);
    if (reader != nullptr) {
        release_parser(reader->parser);
        release_converter(reader->to_utf8);
        release_converter(reader->from_utf8);
        release(reader->buffer, reader->capacity);
        reader->~json_reader();
        release(reader, sizeof *reader);
    }
}

int32_t json_parse(bifun_environment* environment, json_reader* reader, const uint8_t* text, uint32_t length) {
    static_cast<void>(environment);
    if (pending_failure() && must_fail()) {
        return BIFUN_OUT_OF_MEMORY;
    }
    std::int32_t status = BIFUN_OK;
    if (std::string_view given(reinterpret_cast<const char*>(text), length); must_be_converted(given)) [[unlikely]] {
        status = convert_to_utf8(reader->to_utf8, given, given);
        if (status != BIFUN_OK) {
            return status;
        }
        text = reinterpret_cast<const std::uint8_t*>(given.data());
        length = static_cast<std::uint32_t>(given.size());
    }
    if (!recall_document(reader->recall, text, length, reader->document, status)) {
        status = parse_document(text, length, reader->parser, reader->document);
        if (status != BIFUN_OUT_OF_MEMORY) {
            keep_document(reader->recall, text, length, reader->document, status);
        }
    }
    return status;
}

int32_t jpath_get_scalar(bifun_environment* environment, json_reader* reader, const jpath* path, json_item* item) {
    static_cast<void>(environment);
    reader->length = 0;
    bool found = false;
    // Member by member: copied as one, a record that has just been written in parts would have to be waited for.
    const auto place = [&](const char* text, std::size_t length) {
        item->text = reinterpret_cast<const std::uint8_t*>(text);
        item->length = static_cast<std::uint32_t>(length);
    };
    auto take = [&](const path_item& given) -> std::int32_t {
        if (found) {
            return JSON_SEVERAL_ITEMS;
        }
        if (given.kind == JSON_ARRAY || given.kind == JSON_OBJECT) {
            return JSON_NO_SCALAR;
        }
        found = true;
        item->kind = given.kind;
        if (given.token != no_token && !given.has_escapes) {
            place(given.text.data(), given.text.size());
        } else {
            char* const room = make_room(*reader, given.text.size() + 1);
            if (room == nullptr) {
                return BIFUN_OUT_OF_MEMORY;
            }
            const char* const end = given.has_escapes
                                        ? write_characters(given.text, room)
                                        : static_cast<char*>(std::memcpy(room, given.text.data(), given.text.size())) + given.text.size();
            place(room, static_cast<std::size_t>(end - room));
        }
        return BIFUN_OK;
    };
    const std::int32_t outcome = take_items(reader->document, *path, take);
    if (outcome < BIFUN_OK || !found) {
        return outcome < BIFUN_OK ? outcome : std::int32_t{JSON_NO_ITEM};
    }
    return give(*reader, {reinterpret_cast<const char*>(item->text), item->length}, &item->text, &item->length);
}

int32_t jpath_get_json(bifun_environment* environment, json_reader* reader, const jpath* path, int32_t wrapper, const uint8_t** text,
                       uint32_t* length) {
    static_cast<void>(environment);
    reader->length = 0;
    std::uint32_t count = 0;
    std::string_view source; // of the first item
    auto take = [&](const path_item& given) -> std::int32_t {
        if (count == 1 && wrapper == JPATH_NO_WRAPPER) {
            return JSON_SEVERAL_ITEMS;
        }
        if (reader->length > longest_result) {
            return BIFUN_RESULT_TOO_LONG;
        }
        if (make_room(*reader, 1) == nullptr) {
            return BIFUN_OUT_OF_MEMORY;
        }
        // The bracket may turn out not to be needed.
        reader->buffer[reader->length++] = count++ == 0 ? '[' : ',';
        source = count == 1 && given.token != no_token && given.key == no_token ? source_of(reader->document, given.token) : source;
        return append_item(*reader, given) ? std::int32_t{BIFUN_OK} : std::int32_t{BIFUN_OUT_OF_MEMORY};
    };
    const std::int32_t outcome = take_items(reader->document, *path, take);
    if (outcome < BIFUN_OK || count == 0) {
        return outcome < BIFUN_OK ? outcome : std::int32_t{JSON_NO_ITEM};
    }
    const bool wraps = wrapper == JPATH_WRAPPER || count > 1;
    if (wraps) {
        char* const room = make_room(*reader, 1);
        if (room == nullptr) {
            return BIFUN_OUT_OF_MEMORY;
        }
        *room = ']';
        ++reader->length;
    }
    std::string_view written(reader->buffer, reader->length);
    written.remove_prefix(wraps ? 0 : 1);
    // What has lost nothing is as the document has it.
    written = !wraps && source.size() == written.size() ? source : written;
    return give(*reader, written, text, length);
}
