// SPDX-License-Identifier: Apache-2.0
// Statements over corpus/t.csv, by the way that the program's own take. A text that begins as ASCII is a statement as it is; behind another
// byte the rest are choices, out of which settings and a statement are made, which must give the same rows in batches of another size.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <sys/stat.h>

#include "fuzz/choices.h"
#include "fuzz/made_statement.h"
#include "fuzz/memory_file.h"
#include "fuzz/require.h"
#include "host/program_error.h"
#include "host/query_run.h"

namespace {

// Where the standard output goes, and what has come there since it was last taken.
struct captured_output {
    memory_file file{""};

    captured_output() { require(dup2(file.descriptor, STDOUT_FILENO) == STDOUT_FILENO); }
    std::string take() const {
        struct stat state {};
        require(fstat(file.descriptor, &state) == 0);
        std::string text(static_cast<std::size_t>(state.st_size), '\0');
        require(pread(file.descriptor, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()));
        require(ftruncate(file.descriptor, 0) == 0 && lseek(file.descriptor, 0, SEEK_SET) == 0);
        return text;
    }
};

// The output, or nothing after an error, which must say something.
std::optional<std::string> run(const host::program_options& options, const std::string& sql) {
    static const captured_output captured;
    try {
        host::run_statement(options, {BIFUN_FUZZ_CORPUS "/t.csv"}, sql);
    } catch (const host::program_error& error) {
        require(std::string_view(error.what()).size() > 1);
        static_cast<void>(captured.take());
        return std::nullopt;
    }
    return captured.take();
}

host::program_options usual_options() {
    host::program_options options;
    options.library = BIFUN_LIBRARY;
    options.types = types_of_t;
    return options;
}

host::program_options choose_options(choices& chosen) {
    constexpr const char* formats[] = {"csv", "table", "tsv", "json", "jsonl", "markdown"};
    constexpr const char* settings[] = {
        "compatible_mode=1",     "compatible_mode=2", "compatible_mode=3", "charset=gb18030",
        "charset=euc-kr",        "case_sensitive=0",  "time_zone=-09:30",  "date_format=DD MON YYYY",
        "date_language=CHINESE", "oracle_date=1",     "param.529=1",       "datetime_format=YYYYMMDDHH24MISSFF3",
        "time_format=HH12:MI AM"};
    host::program_options options = usual_options();
    options.format = chosen.of(formats);
    for (std::size_t count = chosen.below(3); count > 0; --count) {
        options.settings.emplace_back(chosen.of(settings));
    }
    return options;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    constexpr unsigned char first_choices = 0x80;
    static const bool table_can_be_read = run(usual_options(), "SELECT * FROM t").has_value();
    require(table_can_be_read);
    if (size == 0 || data[0] < first_choices) {
        static_cast<void>(run(usual_options(), std::string(bytes)));
        return 0;
    }
    choices chosen{bytes.substr(1)};
    host::program_options options = choose_options(chosen);
    constexpr std::uint32_t sizes[] = {1, 2, 3, 5};
    const std::uint32_t small_batch = chosen.of(sizes);
    const made_statement made = make_statement(chosen);
    const std::optional<std::string> whole = run(options, made.sql);
    options.batch_rows = small_batch;
    const std::optional<std::string> in_parts = run(options, made.sql);
    require((whole.has_value() == in_parts.has_value() || made.has_limit) &&
            (!whole || !in_parts || !made.is_repeatable || *whole == *in_parts));
    return 0;
}
