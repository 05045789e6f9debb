// SPDX-License-Identifier: Apache-2.0
#include "embedded/json/document_memory.h"

#include <cstring>
#include <new>

#include "bop/frame/status.h"
#include "embedded/memory/allocation.h"

namespace zqengine {

namespace {

bool is_same(const kept_document& kept, const std::uint8_t* text, std::uint32_t length) {
    return kept.document.length == length && (length == 0 || std::memcmp(kept.document.text, text, length) == 0);
}

// Gives up the documents from `first` on, which is less than there are.
void forget(kept_batch& batch, std::uint32_t first) {
    arena_free_to(batch.bytes, batch.documents[first].before);
    batch.count = first;
    batch.calls = 0;
    batch.hits = 0;
    batch.size = 0;
    for (std::uint32_t i = 0; i < first; ++i) {
        batch.size += batch.documents[i].document.length + batch.documents[i].document.token_count * 2 * sizeof(std::uint32_t);
    }
}

// The batch that begins with this document, or the one that has been asked longest ago, empty.
kept_batch& choose_batch(document_memory& memory, const std::uint8_t* text, std::uint32_t length) {
    kept_batch* oldest = memory.batches;
    for (kept_batch& batch : memory.batches) {
        if (batch.count != 0 && is_same(batch.documents[0], text, length)) {
            return batch;
        }
        oldest = batch.last_call < oldest->last_call ? &batch : oldest;
    }
    if (oldest->count != 0) {
        memory.pays = oldest->calls > 1;
        forget(*oldest, 0);
    }
    return *oldest;
}

bool reserve_document(kept_batch& batch) {
    if (batch.count < batch.capacity) {
        return true;
    }
    const std::uint32_t capacity = batch.capacity == 0 ? 64 : batch.capacity * 2;
    auto* const grown = static_cast<kept_document*>(allocate(capacity * sizeof(kept_document)));
    if (grown == nullptr) {
        return false;
    }
    if (batch.count != 0) {
        std::memcpy(grown, batch.documents, batch.count * sizeof(kept_document));
    }
    release(batch.documents, batch.capacity * sizeof(kept_document));
    batch.documents = grown;
    batch.capacity = capacity;
    return true;
}

} // namespace

document_memory* create_document_memory() {
    void* const memory = allocate(sizeof(document_memory));
    return memory == nullptr ? nullptr : new (memory) document_memory{};
}

void release_document_memory(document_memory* memory) {
    if (memory != nullptr) {
        for (kept_batch& batch : memory->batches) {
            arena_release(batch.bytes);
            release(batch.documents, batch.capacity * sizeof(kept_document));
        }
        release(memory, sizeof *memory);
    }
}

bool recall_document(document_recall& recall, const std::uint8_t* text, std::uint32_t length, json_document& document,
                     std::int32_t& status) {
    if (recall.memory == nullptr) {
        return false;
    }
    if (recall.batch == nullptr) {
        recall.batch = &choose_batch(*recall.memory, text, length);
        recall.batch->last_call = ++recall.memory->calls;
        ++recall.batch->calls;
    }
    kept_batch& batch = *recall.batch;
    const std::uint32_t position = recall.position++;
    if (position >= batch.count) {
        return false;
    }
    const kept_document& kept = batch.documents[position];
    if (!is_same(kept, text, length)) {
        recall.memory->pays = batch.hits > batch.count / 2;
        forget(batch, position);
        return false;
    }
    ++batch.hits;
    document = kept.document;
    document.text = text;
    status = kept.status;
    return true;
}

void keep_document(document_recall& recall, const std::uint8_t* text, std::uint32_t length, const json_document& document,
                   std::int32_t status) {
    if (recall.memory == nullptr) {
        return;
    }
    kept_batch& batch = *recall.batch;
    const bool is_next = recall.position == batch.count + 1;
    const bool is_of_use = batch.count == 0 || batch.hits != 0 || recall.memory->pays;
    const std::size_t token_count = status == BIFUN_OK ? document.token_count : 0;
    const std::size_t list_size = token_count * sizeof(std::uint32_t);
    const std::size_t size = 2 * list_size + length;
    if (!is_next || !is_of_use || size > document_memory::most_bytes - batch.size || !reserve_document(batch)) {
        return;
    }
    kept_document& kept = batch.documents[batch.count];
    kept = {.document = document, .status = status, .before = arena_top(batch.bytes)};
    kept.document.length = length;
    kept.document.token_count = static_cast<std::uint32_t>(token_count);
    if (size != 0) {
        std::uint8_t* const bytes = arena_take(batch.bytes, size, alignof(std::uint32_t));
        if (bytes == nullptr) {
            return;
        }
        if (token_count != 0) {
            std::memcpy(bytes, document.places, list_size);
            std::memcpy(bytes + list_size, document.closings, list_size);
        }
        if (length != 0) {
            std::memcpy(bytes + 2 * list_size, text, length);
        }
        kept.document.places = reinterpret_cast<const std::uint32_t*>(bytes);
        kept.document.closings = reinterpret_cast<const std::uint32_t*>(bytes + list_size);
        kept.document.text = bytes + 2 * list_size;
    }
    batch.size += size;
    ++batch.count;
}

} // namespace zqengine
