// SPDX-License-Identifier: Apache-2.0
// What the rows of a batch of documents have in common: a path, the clauses, and a reader.
#ifndef BIFUN_JSON_BATCH_OF_DOCUMENTS_H
#define BIFUN_JSON_BATCH_OF_DOCUMENTS_H

#include "bop/frame/string_rows.h"
#include "bop/json/clauses.h"
#include "bop/json/returned_types.h"

namespace bifun {

struct documents {
    bifun_environment* environment;
    json_reader* reader;
    const jpath* path;
    const json_clauses* clauses;
};

// Calls `rows(documents)` with the path and the clauses, which may have one of `types` behind RETURNING; every row is NULL where one of
// them is.
template <value_type result, class Rows>
status with_documents(batch_of<result> batch, constant_of<VARCHAR> path, const bifun_string_constant* clauses, json_function of,
                      const char* types, const Rows& rows) {
    if (path.record->not_null == 0 || (clauses != nullptr && clauses->not_null == 0)) {
        return null_rows(batch);
    }
    json_clauses parsed;
    const status parsed_clauses = parse_clauses(clauses == nullptr ? bifun_string{} : string_of(*clauses, 0), of, types, parsed);
    if (parsed_clauses < BIFUN_OK) {
        return fail_batch(batch, parsed_clauses);
    }
    const bifun_string text = string_of(*path.record, 0);
    jpath* parsed_path = nullptr;
    const status compiled = jpath_parse(batch.environment, text.data, text.length, &parsed_path, nullptr);
    if (compiled < BIFUN_OK) {
        return fail_batch(batch, compiled == BIFUN_OUT_OF_MEMORY ? BIFUN_OUT_OF_MEMORY : BIFUN_INVALID_JSON_PATH);
    }
    json_reader* const reader = json_open(batch.environment);
    const status outcome =
        reader == nullptr ? fail_batch(batch, BIFUN_OUT_OF_MEMORY) : rows(documents{batch.environment, reader, parsed_path, &parsed});
    json_close(batch.environment, reader);
    jpath_free(batch.environment, parsed_path);
    return outcome;
}

// The beginning of every row: `ask()`, one of the engine's operations on the reader, is called with the row's document in it.
template <class Ask> status ask_document(const documents& all, const bifun_string& document, const Ask& ask) {
    const status parsed = json_parse(all.environment, all.reader, document.data, document.length);
    return parsed < BIFUN_OK ? parsed : status{ask()};
}

// What a row is where `failure` has come: `put(text)` puts the value of a clause there.
template <class Put> value_or_null react(const documents& all, status failure, const Put& put) {
    const json_outcome& outcome = failure == JSON_NO_ITEM ? all.clauses->on_empty : all.clauses->on_error;
    if (outcome.reaction == json_reaction::error || failure == BIFUN_OUT_OF_MEMORY) {
        return failure;
    }
    return outcome.reaction == json_reaction::null ? value_or_null::null() : value_or_null(put(outcome.value));
}

inline value_or_null react_by_text(const documents& all, status failure, string_room& room) {
    return react(all, failure, [&](const bifun_string& text) { return copy_text(room, text); });
}

// A text of the document, to which the row may refer, or one that is only there until the next row.
inline status put_text(const bifun_string& document, const std::uint8_t* text, std::uint32_t length, string_room& room) {
    const bifun_string value{length, 0, const_cast<std::uint8_t*>(text)};
    const bool is_in_document = text >= document.data && text < document.data + document.length;
    return is_in_document ? take_text(room, value) : copy_text(room, value);
}

} // namespace bifun

#endif
