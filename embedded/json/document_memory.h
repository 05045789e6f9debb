// SPDX-License-Identifier: Apache-2.0
// The parsed documents of the last calls of a session, so that several calls over a column parse each of its documents once.
//
// Calls come one after the other, each over all rows of a batch, and so over the same documents in the same order. A document is known
// again by its bytes, of which there is a copy, at its place in that order: where it lies says nothing, as columns are used again.
// Documents are kept once a call has asked for those of another, and in later batches as long as that pays; of a call that has none beside
// it only the first one is kept.
#ifndef BIFUN_EMBEDDED_JSON_DOCUMENT_MEMORY_H
#define BIFUN_EMBEDDED_JSON_DOCUMENT_MEMORY_H

#include <cstddef>
#include <cstdint>

#include "embedded/json/json_document.h"
#include "embedded/memory/arena.h"

namespace zqengine {

struct kept_document {
    json_document document; // of the copy
    std::int32_t status;    // of parsing
    arena_mark before;      // what it has in the arena
};

// The documents of a call, the first ones that there is room for.
struct kept_batch {
    kept_document* documents;
    std::uint32_t count;
    std::uint32_t capacity;
    arena bytes;
    std::size_t size; // of what lies in the arena
    std::uint64_t last_call;
    std::uint32_t calls; // that have asked for it
    std::uint32_t hits;
};

struct document_memory {
    // Batches of so many columns at a time, each of so many bytes.
    static constexpr std::uint32_t batch_count = 4;
    static constexpr std::size_t most_bytes = std::size_t{8} << 20;

    kept_batch batches[batch_count];
    std::uint64_t calls;
    bool pays; // the last batch that was given up has been asked for again
};

// A call that goes through its documents one by one.
struct document_recall {
    document_memory* memory; // null: nothing is kept
    kept_batch* batch;       // null before the first document
    std::uint32_t position;  // of the next document
};

// Null where memory is exhausted. Null is released as well.
[[nodiscard]] document_memory* create_document_memory();
void release_document_memory(document_memory* memory);

// The next document of a call. Where it is known, `document` is of the text that is given, `status` is what parsing returned, and the
// result is true.
[[nodiscard]] bool recall_document(document_recall& recall, const std::uint8_t* text, std::uint32_t length, json_document& document,
                                   std::int32_t& status);

// Behind recall_document that has not known it: what parsing has made of it, which is kept if it is of use. `status` is 0, or the text's
// own.
void keep_document(document_recall& recall, const std::uint8_t* text, std::uint32_t length, const json_document& document,
                   std::int32_t status);

} // namespace zqengine

#endif
