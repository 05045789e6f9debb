// SPDX-License-Identifier: Apache-2.0
// Files of any bytes under all options of reading: queried and described.
#include <cstdint>
#include <string_view>

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include "fuzz/choices.h"
#include "fuzz/memory_file.h"
#include "fuzz/require.h"
#include "host/file_description.h"
#include "host/program_error.h"
#include "host/query_run.h"

namespace {

host::program_options choose_options(choices& chosen) {
    constexpr const char* delimiters[] = {"", "comma", "tab", ";", "bar", "0x1F", "a", "0xE4"};
    constexpr const char* encodings[] = {"",          "latin1",      "UTF-16",  "UTF-16LE", "UTF-7",
                                         "Shift_JIS", "ISO-2022-JP", "GB18030", "UTF-32",   "SCSU"};
    constexpr const char* settings[] = {"charset=utf-8", "charset=gb18030", "charset=euc-kr", "date_format=DD.MM.YYYY"};
    constexpr const char* types[] = {"",
                                     "column_1:CHAR(2)",
                                     "column_1:DATE,column_2:INT",
                                     "column_1:DECIMAL(5,2)",
                                     "column_1:DOUBLE,column_2:TIMESTAMP WITH TIME ZONE",
                                     "column_1:BOOL,column_2:VARCHAR(3)",
                                     "column_1:TIMESTAMP(2),column_2:SMALLINT",
                                     "column_1:DATE 'DD.MM.YY',column_2:DECIMAL(9,3)",
                                     "column_1:INTERVAL DAY TO SECOND"};
    constexpr const char* samples[] = {"", "1", "all"};
    constexpr const char* formats[] = {"csv", "table", "json", "markdown"};
    host::program_options options;
    options.library = BIFUN_LIBRARY;
    options.delimiter = chosen.of(delimiters);
    constexpr const char* quotes[] = {"\"", "'", "none", "\\", "0x80"};
    constexpr const char* escapes[] = {"none", "\\", "^", "\\n"};
    constexpr const char* nulls[] = {"", "NA", "\\N", "-"};
    options.quote = chosen.of(quotes);
    options.escape = chosen.of(escapes);
    constexpr const char* comments[] = {"none", "#", "h"};
    constexpr const char* decimals[] = {"", "comma", "point"};
    options.comment = chosen.of(comments);
    options.decimal = chosen.of(decimals);
    options.nulls.resize(chosen.below(3), chosen.of(nulls));
    options.reading.has_quoted_nulls = chosen.below(2) != 0;
    options.reading.fills_short_rows = chosen.below(2) != 0;
    options.reading.encoding = chosen.of(encodings);
    options.reading.skipped_lines = chosen.below(3);
    options.reading.ignores_errors = chosen.below(2) != 0;
    options.no_header = chosen.below(2) != 0;
    options.types = options.no_header ? chosen.of(types) : "";
    options.settings = {chosen.of(settings)};
    options.sample = chosen.of(samples);
    options.format = chosen.of(formats);
    options.batch_rows = chosen.below(2) == 0 ? 1024 : 2;
    return options;
}

// What a file holds may be an error, of which the program tells.
template <class Action> void attempt(const Action& action) {
    try {
        action();
    } catch (const host::program_error& error) {
        require(std::string_view(error.what()).size() > 1);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool is_quiet = dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDOUT_FILENO) == STDOUT_FILENO;
    require(is_quiet);
    choices chosen{{reinterpret_cast<const char*>(data), size}};
    const host::program_options options = choose_options(chosen);
    const memory_file file(chosen.bytes);
    attempt([&] { host::run_statement(options, {file.path}, fmt::format("SELECT * FROM \"{}\"", file.descriptor)); });
    attempt([&] { host::describe_file(file.path, options); });
    return 0;
}
