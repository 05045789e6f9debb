// SPDX-License-Identifier: Apache-2.0
// JSON_QUERY: JSON as text.

#include "bop/json/batch_of_documents.h"
#include "bop/json/entry_points.h"

namespace bifun {
namespace {

value_or_null query(const documents& all, const bifun_string& document, string_room& room) {
    const std::uint8_t* text = nullptr;
    std::uint32_t length = 0;
    const status outcome = ask_document(
        all, document, [&] { return jpath_get_json(all.environment, all.reader, all.path, all.clauses->wrapper, &text, &length); });
    return outcome < BIFUN_OK ? react_by_text(all, outcome, room) : value_or_null(put_text(document, text, length, room));
}

status query_rows(batch_of<VARCHAR> batch, column_of<VARCHAR> document, constant_of<VARCHAR> path, const bifun_string_constant* clauses) {
    return with_documents(batch, path, clauses, json_function::query, JSON_RETURNS_VARCHAR,
                          [&](const documents& all) { return string_rows<query>(batch, shared(all), document); });
}

} // namespace

status entry::bjson_query_av_str(batch_of<VARCHAR> batch, column_of<VARCHAR> document, constant_of<VARCHAR> path) {
    return query_rows(batch, document, path, nullptr);
}
status entry::bjson_query_avv_str(batch_of<VARCHAR> batch, column_of<VARCHAR> document, constant_of<VARCHAR> path,
                                  constant_of<VARCHAR> clauses) {
    return query_rows(batch, document, path, clauses.record);
}

} // namespace bifun
