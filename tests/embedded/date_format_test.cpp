#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "embedded/datetime/text.h"
#include "embedded/session/environment.h"
#include "engine/date_format.h"
#include "engine/datetime.h"
#include "tests/contract/exact_block.h"

namespace {

zqtime value_of(const std::string& text) {
    zqtime value{};
    EXPECT_EQ(zqtime_from_char_ex(reinterpret_cast<const std::uint8_t*>(text.data()), static_cast<std::uint32_t>(text.size()), &value), 0)
        << text;
    return value;
}

std::string text_of(const zqtime& value) {
    char buffer[zqengine::datetime_text_size];
    return std::string(buffer, zqengine::write_datetime(value, zqengine::datetime_kind::datetime, buffer));
}

bool is_percent_format(const std::string& format) { return format.find('%') != std::string::npos; }

// The text, or the status where the format is bad. Texts lie in blocks of exactly their size.
std::string written(const std::string& value_text, const std::string& format_text, const std::string& language_text = "") {
    const zqtime value = value_of(value_text);
    const exact_block format(format_text);
    const exact_block nls(language_text);
    dfm_model model;
    std::int32_t status = 0;
    if (is_percent_format(format_text)) {
        status = zqtime_convert_fmt(nullptr, format.data(), format.length, &model);
    } else {
        (void)dfm_create(nullptr, &model);
        std::int32_t language = DFM_ENGLISH;
        status = nls.length == 0 ? 0 : to_char_nls_parse(nls.data(), nls.length, &language);
        EXPECT_EQ(dfm_set_lang(&model, language), 0);
        status = status == 0 ? dfm_parse(&model, format.data(), format.length) : status;
    }
    if (status != 0) {
        return std::to_string(status);
    }
    const exact_block buffer(std::string(model.room, '~'));
    std::uint32_t length = 0;
    const auto write = is_percent_format(format_text) ? date_to_char : dfm_char_get;
    EXPECT_EQ(write(nullptr, &model, &value, buffer.data(), &length), 0);
    EXPECT_LE(length, model.room);
    return {reinterpret_cast<const char*>(buffer.data()), length};
}

// The value, or the status.
std::string read(const std::string& text_text, const std::string& format_text) {
    const exact_block text(text_text);
    const exact_block format(format_text);
    const bool with_zone = format_text.find("TZ") != std::string::npos;
    dfm_model model;
    std::int32_t status = parse_date_fmt_with_len(nullptr, format.data(), format.length, with_zone ? 1 : 0, &model);
    zqtime value{};
    if (status == 0) {
        status = with_zone ? char_to_datetime_tz_simple_with_alen(nullptr, &model, text.data(), text.length, &value)
                           : char_to_date_simple_with_alen(&model, text.data(), text.length, DFM_DATETIME, &value);
    }
    return status == 0 ? text_of(value) : std::to_string(status);
}

// The parts of a table's row in backticks, and what its last cell holds.
struct page_row {
    std::vector<std::string> quoted;
    std::string last;
};

page_row row_of(const std::string& line) {
    page_row row;
    for (std::size_t begin = line.find('`'); begin != std::string::npos; begin = line.find('`', begin)) {
        const std::size_t end = line.find('`', begin + 1);
        std::string cell = line.substr(begin + 1, end - begin - 1);
        for (std::size_t bar = cell.find("\\|"); bar != std::string::npos; bar = cell.find("\\|")) {
            cell.erase(bar, 1);
        }
        row.quoted.push_back(cell);
        begin = end + 1;
    }
    const std::size_t end = line.find_last_not_of(" |");
    const std::size_t begin = line.rfind("| ", end);
    row.last = begin == std::string::npos ? "" : line.substr(begin + 2, end - begin - 1);
    return row;
}

bool is_result(const std::string& cell) { return cell.size() >= 2 && cell.front() == '\'' && cell.back() == '\''; }

TEST(DateFormat, ReferencePage) {
    std::ifstream page(DATE_FORMATS_PAGE);
    std::string section;
    int examples = 0;
    for (std::string line; std::getline(page, line);) {
        section = line.starts_with("## ") ? line : section;
        const page_row row = row_of(line);
        if (!line.starts_with("| ") || row.quoted.size() < 2) {
            continue;
        }
        if (section == "## Reading") {
            EXPECT_EQ(read(row.quoted[0], row.quoted[1]), row.last == "error" ? "-6118" : row.last) << line;
            ++examples;
            continue;
        }
        // | value | format | result | language |, or | elements | meaning | format | result | of the value that the section names.
        const std::size_t result = is_result(row.quoted.back()) ? row.quoted.size() - 1 : row.quoted.size() - 2;
        if (!is_result(row.quoted[result])) {
            continue;
        }
        const bool has_value = line.find(':') != std::string::npos && row.quoted[0].find(':') != std::string::npos;
        const std::string value = has_value                  ? row.quoted[0]
                                  : section == "## Elements" ? "2024-02-29 13:45:06.123456+08:00"
                                                             : "2024-02-29 13:45:06.123456";
        const std::string language = result + 1 < row.quoted.size() ? row.quoted.back() : "";
        const std::string expected = row.quoted[result].substr(1, row.quoted[result].size() - 2);
        EXPECT_EQ(written(value, row.quoted[result - 1], language), expected) << line;
        ++examples;
    }
    EXPECT_GT(examples, 95);
}

} // namespace
