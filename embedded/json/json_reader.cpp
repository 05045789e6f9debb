// SPDX-License-Identifier: Apache-2.0
// The operations of engine/json.h on documents.
#include <cstring>
#include <new>

#include "bop/frame/status.h"
#include "embedded/json/json_document.h"
#include "embedded/json/json_evaluation.h"
#include "embedded/json/json_path.h"
#include "embedded/memory/allocation.h"
#include "embedded/memory/pending_failure.h"
#include "engine/json.h"

using namespace zqengine;

// Results that are not in the document are written into the buffer.
struct json_reader {
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

bool is_space(char character) { return character == ' ' || character == '\n' || character == '\t' || character == '\r'; }

// The place of the quote that ends the string which begins there. A quote is escaped by an odd number of backslashes.
std::size_t end_of_string(std::string_view text, std::size_t begin) {
    std::size_t end = text.find('"', begin + 1);
    while (true) {
        std::size_t first = end;
        while (text[first - 1] == '\\') {
            --first;
        }
        if ((end - first) % 2 == 0) {
            return end;
        }
        end = text.find('"', end + 1);
    }
}

// Copies JSON without the white space between its strings and scalars.
char* write_compact(std::string_view text, char* out) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '"') {
            *out = text[i];
            out += is_space(text[i]) ? 0 : 1;
            continue;
        }
        const std::size_t end = end_of_string(text, i);
        std::memcpy(out, text.data() + i, end + 1 - i);
        out += end + 1 - i;
        i = end;
    }
    return out;
}

// The JSON of an item that is in the document; empty for others.
std::string_view source_of(const path_item& item) {
    if (item.node == nullptr) {
        return {};
    }
    return item.kind == JSON_STRING ? std::string_view(item.text.data() - 1, item.text.size() + 2) : item.text;
}

// Behind what the buffer has. Of strings only the name of a type is not in the document: nothing in it has to be escaped.
bool append_item(json_reader& reader, const path_item& item) {
    const std::string_view source = source_of(item);
    char* const room = make_room(reader, item.text.size() + 2);
    if (room == nullptr) {
        return false;
    }
    char* out = room;
    if (!source.empty()) {
        out = write_compact(source, out);
    } else {
        const bool quoted = item.kind == JSON_STRING;
        *out = '"';
        out += quoted ? 1 : 0;
        std::memcpy(out, item.text.data(), item.text.size());
        out += item.text.size();
        *out = '"';
        out += quoted ? 1 : 0;
    }
    reader.length += static_cast<std::size_t>(out - room);
    return true;
}

} // namespace

json_reader* json_open(bifun_environment* environment) {
    static_cast<void>(environment);
    void* const memory = must_fail() ? nullptr : allocate(sizeof(json_reader));
    return memory == nullptr ? nullptr : new (memory) json_reader{};
}

void json_close(bifun_environment* environment, json_reader* reader) {
    static_cast<void>(environment);
    if (reader != nullptr) {
        release_document(reader->document);
        release(reader->buffer, reader->capacity);
        reader->~json_reader();
        release(reader, sizeof *reader);
    }
}

int32_t json_parse(bifun_environment* environment, json_reader* reader, const uint8_t* text, uint32_t length) {
    static_cast<void>(environment);
    return pending_failure() && must_fail() ? std::int32_t{BIFUN_OUT_OF_MEMORY} : parse_document(text, length, reader->document);
}

int32_t jpath_get_scalar(bifun_environment* environment, json_reader* reader, const jpath* path, json_item* item) {
    static_cast<void>(environment);
    reader->length = 0;
    bool found = false;
    const auto place = [&](const path_item& given, std::string_view text) {
        *item = {.kind = given.kind,
                 .length = static_cast<std::uint32_t>(text.size()),
                 .text = reinterpret_cast<const std::uint8_t*>(text.data())};
    };
    auto take = [&](const path_item& given) -> std::int32_t {
        if (found) {
            return JSON_SEVERAL_ITEMS;
        }
        if (given.kind == JSON_ARRAY || given.kind == JSON_OBJECT) {
            return JSON_NO_SCALAR;
        }
        found = true;
        if (given.node != nullptr && !given.has_escapes) {
            place(given, given.text);
        } else {
            char* const room = make_room(*reader, given.text.size() + 1);
            if (room == nullptr) {
                return BIFUN_OUT_OF_MEMORY;
            }
            const char* const end = given.has_escapes
                                        ? write_characters(given.text, room)
                                        : static_cast<char*>(std::memcpy(room, given.text.data(), given.text.size())) + given.text.size();
            place(given, {room, static_cast<std::size_t>(end - room)});
        }
        return BIFUN_OK;
    };
    const item_receiver receiver{&take, [](void* to, const path_item& given) { return (*static_cast<decltype(take)*>(to))(given); }};
    const std::int32_t outcome = evaluate_path(reader->document, *path, receiver);
    return outcome < BIFUN_OK ? outcome : found ? std::int32_t{BIFUN_OK} : std::int32_t{JSON_NO_ITEM};
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
        if (make_room(*reader, 1) == nullptr) {
            return BIFUN_OUT_OF_MEMORY;
        }
        // The bracket may turn out not to be needed.
        reader->buffer[reader->length++] = count++ == 0 ? '[' : ',';
        source = count == 1 ? source_of(given) : source;
        return append_item(*reader, given) ? std::int32_t{BIFUN_OK} : std::int32_t{BIFUN_OUT_OF_MEMORY};
    };
    const item_receiver receiver{&take, [](void* to, const path_item& given) { return (*static_cast<decltype(take)*>(to))(given); }};
    const std::int32_t outcome = evaluate_path(reader->document, *path, receiver);
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
    *text = reinterpret_cast<const std::uint8_t*>(written.data());
    *length = static_cast<std::uint32_t>(written.size());
    return BIFUN_OK;
}
