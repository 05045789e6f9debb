// SPDX-License-Identifier: Apache-2.0
// Result rows in the formats that are written.
#ifndef BIFUN_HOST_OUTPUT_OUTPUT_H
#define BIFUN_HOST_OUTPUT_OUTPUT_H

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "bop/frame/contract.h"
#include "host/evaluation/plan.h"
#include "host/output/output_stream.h"
#include "host/values/charset_text.h"

namespace host {

enum class output_format : std::uint8_t { table, csv, tsv, json, json_lines, markdown };

// By its name or the extension of files in it; nothing where there is none.
std::optional<output_format> find_output_format(std::string_view name);
constexpr std::string_view output_formats[] = {"table", "csv", "tsv", "json", "jsonl", "markdown"};
constexpr std::string_view output_format_names = "table, csv, tsv, json, jsonl and markdown";

// Writes the rows of one result. Nothing is written before the first batch, so that a query that fails at once prints nothing.
class result_output {
  public:
    result_output(output_format format, output_stream& stream, const std::vector<result_column>& columns, const charset& set);

    // Writes the first `row_count` rows of the columns, as seen through their selection vectors.
    void write_rows(std::span<const bifun_column* const> columns, std::uint32_t row_count);

    // Writes what is still held back and what closes the result. Without any rows this is a heading, or an empty array.
    void finish();

    // Does the same after an error, except that a result of which nothing has been written stays empty.
    void abandon();

  private:
    void begin();
    void write_delimited_row(std::span<const bifun_column* const> columns, std::uint32_t row);
    void write_json_row(std::span<const bifun_column* const> columns, std::uint32_t row);
    void write_markdown_row(std::span<const bifun_column* const> columns, std::uint32_t row);
    void write_markdown_heading();
    [[nodiscard]] std::string cell_of(const bifun_column& column, sql_type type, std::uint32_t row) const;
    void hold_table_row(std::span<const bifun_column* const> columns, std::uint32_t row);
    void write_held_rows();

    output_format format_;
    output_stream& stream_;
    std::vector<result_column> columns_;
    const charset& charset_;
    char delimiter_;
    bool begun_ = false;
    std::uint64_t rows_ = 0;

    std::vector<std::string> json_keys_;
    std::vector<std::vector<std::string>> held_rows_; // of a table whose widths are not settled yet
    std::size_t held_text_ = 0;                       // of these, in bytes
    std::vector<std::size_t> widths_;
    bool widths_settled_ = false;
};

} // namespace host

#endif
