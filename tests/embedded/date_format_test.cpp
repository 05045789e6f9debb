// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "embedded/datetime/text.h"
#include "embedded/session/environment.h"
#include "engine/date_format.h"
#include "engine/datetime.h"
#include "engine/session.h"
#include "tests/contract/exact_block.h"
#include "tests/embedded/quoted_cells.h"

namespace {

using zqengine::date_model;
using zqengine::kept_format;

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
std::string written(const std::string& value_text, const std::string& format_text, const std::string& language_text = "",
                    const bifun_environment* environment = nullptr) {
    const zqtime value = value_of(value_text);
    const exact_block format(format_text);
    const exact_block nls(language_text);
    dfm_model model;
    std::int32_t status = 0;
    if (is_percent_format(format_text)) {
        status = zqtime_convert_fmt(environment, format.data(), format.length, &model);
    } else {
        (void)dfm_create(environment, &model);
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
    EXPECT_EQ(write(environment, &model, &value, buffer.data(), &length), 0);
    EXPECT_LE(length, model.room);
    return {reinterpret_cast<const char*>(buffer.data()), length};
}

// The value, or the status.
std::string read(const std::string& text_text, const std::string& format_text, const bifun_environment* environment = nullptr) {
    const exact_block text(text_text);
    const exact_block format(format_text);
    const bool with_zone = format_text.find("TZ") != std::string::npos;
    dfm_model model;
    std::int32_t status = parse_date_fmt_with_len(environment, format.data(), format.length, with_zone ? 1 : 0, &model);
    zqtime value{};
    if (status == 0) {
        status = with_zone ? char_to_datetime_tz_simple_with_alen(environment, &model, text.data(), text.length, &value)
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
    page_row row{quoted_cells(line), {}};
    const std::size_t end = line.find_last_not_of(" |");
    const std::size_t begin = line.rfind("| ", end);
    row.last = begin == std::string::npos ? "" : line.substr(begin + 2, end - begin - 1);
    return row;
}

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
        const std::size_t result = is_text(row.quoted.back()) ? row.quoted.size() - 1 : row.quoted.size() - 2;
        if (!is_text(row.quoted[result])) {
            continue;
        }
        const bool has_value = line.find(':') != std::string::npos && row.quoted[0].find(':') != std::string::npos;
        const std::string value = has_value                  ? row.quoted[0]
                                  : section == "## Elements" ? "2024-02-29 13:45:06.123456+08:00"
                                                             : "2024-02-29 13:45:06.123456";
        const std::string language = result + 1 < row.quoted.size() ? row.quoted.back() : "";
        const std::string expected = text_in(row.quoted[result]);
        EXPECT_EQ(written(value, row.quoted[result - 1], language), expected) << line;
        ++examples;
    }
    EXPECT_GT(examples, 95);
}

TEST(DateFormat, BadFormats) {
    for (const char* const format :
         {"x", "YYYYX", "E", "FF0", "HH25", "9", "\"", "YYYY\"a", "MONTHTH", "DAYSP", "FFTH", "TZHTH", "AMSP", "YYYY\tMM", "\x7F"}) {
        EXPECT_EQ(written("2024-02-29", format), "-6127") << format;
        EXPECT_EQ(read("2024", format), "-6127") << format;
    }
    EXPECT_EQ(written("2024-02-29", std::string(76, '-')), "-6127");
    EXPECT_EQ(written("2024-02-29", std::string("-\0", 2)), "-6127");
    EXPECT_EQ(written("2024-02-29", "%Y %"), "-6127");
    EXPECT_EQ(written("2024-02-29", std::string(74, '-') + "%d"), "-6127");
    EXPECT_EQ(written("2024-02-29", std::string(73, '-') + "%d"), std::string(73, '-') + "29");
    EXPECT_EQ(written("2024-02-29", ""), "");
}

// Elements that cannot be read, or not together.
TEST(DateFormat, FormatsThatCannotBeReadBy) {
    for (const char* const format :
         {"Q",     "WW",      "IW",     "W",          "CC",       "SCC",       "IYYY",    "I",       "YEAR",    "SYEAR",  "DDTH",
          "DDSP",  "YYYY YY", "MM MON", "MONTH RM",   "D DAY",    "HH24 HH12", "HH HH12", "HH24 AM", "AM A.M.", "J YYYY", "J DD",
          "J DDD", "DDD MM",  "DDD DD", "SSSSS HH24", "SSSSS MI", "SSSSS AM",  "FF",      "FF MI",   "AM",      "BC",     "SYYYY BC"}) {
        EXPECT_EQ(read("2024", format), "-6127") << format;
    }
    for (const char* const format : {"TZR TZH", "TZM", "YYYY TZH TZH"}) {
        EXPECT_EQ(read("2024", format), "-6127") << format;
    }
    dfm_model model;
    const std::string zoned = "YYYY TZH";
    const exact_block format(zoned);
    EXPECT_EQ(parse_date_fmt_with_len(nullptr, format.data(), format.length, 0, &model), -6127);
    zqtime value{};
    EXPECT_EQ(dfm_create(nullptr, &model), 0);
    EXPECT_EQ(dfm_parse(&model, format.data(), format.length), 0);
    EXPECT_EQ(char_to_date_simple_with_alen(&model, format.data(), format.length, DFM_DATETIME, &value), -6127);
}

// The boundaries of numbers, what may be left out, and what is too much: text, format and value.
TEST(DateFormat, Reading) {
    constexpr const char* error = "-6118";
    const char* const cases[][3] = {
        {"2024-12-31 23:59:59", "YYYY-MM-DD HH24:MI:SS", "2024-12-31 23:59:59"},
        {"2024-12-31 24:00:00", "YYYY-MM-DD HH24:MI:SS", error},
        {"2024-12-31 23:60:00", "YYYY-MM-DD HH24:MI:SS", error},
        {"2024-12-31 23:59:60", "YYYY-MM-DD HH24:MI:SS", error},
        {"2024-13-01 00:00:00", "YYYY-MM-DD HH24:MI:SS", error},
        {"2024-00-01", "YYYY-MM-DD", error},
        {"2023-02-29", "YYYY-MM-DD", error},
        {"1500-02-29", "YYYY-MM-DD", "1500-02-29 00:00:00"},
        {"1582-10-04", "YYYY-MM-DD", "1582-10-04 00:00:00"},
        {"1582-10-14 01", "YYYY-MM-DD HH24", "1582-10-15 01:00:00"},
        {"0000-01-01", "YYYY-MM-DD", "0000-01-01 00:00:00"},
        {"2024-0x-01", "YYYY-MM-DD", error},
        {"2024-01-0/", "YYYY-MM-DD", error},
        {"2024-01-0:", "YYYY-MM-DD", error},
        {"  2024 - 02 - 29  ", "YYYY-MM-DD", "2024-02-29 00:00:00"},
        {"2024-02-29 13:", "YYYY-MM-DD HH24:MI", error},
        {"2024-02-29 13: ", "YYYY-MM-DD HH24:MI", error},
        {"2024-02-29 13", "YYYY-MM-DD HH24:MI", "2024-02-29 13:00:00"},
        {"", "YYYY", error},
        {" ", "HH24", error},
        {"2024-02-29.5", "YYYY-MM-DD.SS", "2024-02-29 00:00:05"},
        {"12 AM 2024-02-29", "HH AM YYYY-MM-DD", "2024-02-29 00:00:00"},
        {"12 PM 2024-02-29", "HH AM YYYY-MM-DD", "2024-02-29 12:00:00"},
        {"12 2024-02-29", "HH YYYY-MM-DD", "2024-02-29 00:00:00"},
        {"13 AM 2024-02-29", "HH AM YYYY-MM-DD", error},
        {"0 AM 2024-02-29", "HH AM YYYY-MM-DD", error},
        {"86399 2024-02-29", "SSSSS YYYY-MM-DD", "2024-02-29 23:59:59"},
        {"86400 2024-02-29", "SSSSS YYYY-MM-DD", error},
        {"366 2024", "DDD YYYY", "2024-12-31 00:00:00"},
        {"366 2023", "DDD YYYY", error},
        {"355 1582", "DDD YYYY", "1582-12-31 00:00:00"},
        {"356 1582", "DDD YYYY", error},
        {"0", "J", "-4712-01-01 00:00:00"},
        {"5373484", "J", "9999-12-31 00:00:00"},
        {"5373485", "J", error},
        {"4713 BC 1 1", "YYYY BC MM DD", "-4712-01-01 00:00:00"},
        {"4714 BC 1 1", "YYYY BC MM DD", error},
        {"0 AD 1 1", "YYYY BC MM DD", error},
        {"-4713-01-01", "SYYYY-MM-DD", error},
        {"+2024-01-01", "SYYYY-MM-DD", "2024-01-01 00:00:00"},
        {"1,2024-01-01", "Y,YYY-MM-DD", error},
        {"May 5 2024", "Month DD YYYY", "2024-05-05 00:00:00"},
        {"sEPTEMBER5 2024", "MonDD YYYY", "2024-09-05 00:00:00"},
        {"SEPTEMBER 5 2024", "FXMon DD YYYY", error},
        {"viii 5 2024", "RM DD YYYY", "2024-08-05 00:00:00"},
        {"XIII 5 2024", "RM DD YYYY", error},
        {"5 2024-02-29", "D YYYY-MM-DD", "2024-02-29 00:00:00"},
        {"6 2024-02-29", "D YYYY-MM-DD", error},
        {"2024-02-29 1:2:3.", "YYYY-MM-DD HH24:MI:SS.FF", error},
        {"2024-02-29 01:02:03.12", "YYYY-MM-DD HH24:MI:SS.FF3", "2024-02-29 01:02:03.12"},
        {"2024-02-29 01:02:03.1234", "YYYY-MM-DD HH24:MI:SS.FF3", error},
        {"2024-02-29 01:02:03.123", "YYYY-MM-DD HH24:MI:SS.FF3", "2024-02-29 01:02:03.123"},
        {"2024-02-29 01:02:03.123456789", "YYYY-MM-DD HH24:MI:SS.FF9", "2024-02-29 01:02:03.123456"},
        {"2024-02-29 01 +14", "YYYY-MM-DD HH24 TZH", "2024-02-29 01:00:00+14:00"},
        {"2024-02-29 01 +14:01", "YYYY-MM-DD HH24 TZR", error},
        {"2024-02-29 01 8", "YYYY-MM-DD HH24 TZH", "2024-02-29 01:00:00+08:00"},
        {"2024-02-29 01 +08:60", "YYYY-MM-DD HH24 TZH:TZM", error},
        {"2024-02-29", "FXYYYY-MM-DD", "2024-02-29 00:00:00"},
        {" 2024-02-29", "FXYYYY-MM-DD", error},
        {"2024-02-29 ", "FXYYYY-MM-DD", error},
        {"2024-02-29", "FXYYYY-MM-DD HH24", error},
        {"29th 2024 02", "DD\"th\" YYYY MM", "2024-02-29 00:00:00"},
        {"29TH 2024 02", "DD\"th\" YYYY MM", error},
    };
    for (const auto& [text, format, value] : cases) {
        EXPECT_EQ(read(text, format), value) << text << " by " << format;
    }
}

// What a text leaves out is taken from today; years of two digits lie next to this one.
TEST(DateFormat, ReadingTakesFromToday) {
    const auto parts_of_today = [] {
        zqtime now;
        EXPECT_EQ(zqtime_tz_now(0, ZQTIME_NO_ZONE, &now), 0);
        return text_of(now).substr(0, 7);
    };
    const std::string month = parts_of_today();
    const std::string time = read("10:05", "HH24:MI");
    if (month == parts_of_today()) { // else a month has begun meanwhile
        EXPECT_EQ(time, month + "-01 10:05:00");
        EXPECT_EQ(read("29", "DD"), month + "-29 00:00:00");
        EXPECT_EQ(read("1900", "YYYY").substr(0, 7), "1900" + month.substr(4));
    }
    const int year = std::stoi(month.substr(0, 4));
    EXPECT_EQ(read("07-01-01", "YY-MM-DD").substr(0, 4), std::to_string(year / 100 * 100 + 7));
    EXPECT_EQ(read("7-01-01", "Y-MM-DD").substr(0, 4), std::to_string(year / 10 * 10 + 7));
    EXPECT_EQ(read("007-01-01", "YYY-MM-DD").substr(0, 4), std::to_string(year / 1000 * 1000 + 7));
    for (int two_digits = 0; two_digits < 100; ++two_digits) {
        const std::string text = std::to_string(100 + two_digits).substr(1) + "-01-01";
        const int rounded = std::stoi(read(text, "RR-MM-DD").substr(0, 4));
        EXPECT_EQ(rounded % 100, two_digits);
        EXPECT_EQ((rounded + 50) / 100, (year % 100 < 50 ? year / 100 * 100 + 50 : year / 100 * 100 + 100) / 100) << text;
        EXPECT_EQ(read(text, "RRRR-MM-DD"), read(text, "RR-MM-DD"));
    }
    EXPECT_EQ(read("0049-01-01", "RRRR-MM-DD"), "0049-01-01 00:00:00");
}

TEST(DateFormat, Languages) {
    std::int32_t language = 7;
    for (const char* const nls : {"", "NLS_DATE_LANGUAGE", "NLS_DATE_LANGUAGE=", "NLS_DATE_LANGUAGE=GERMAN", "NLS_DATE_LANGUAGE='ENGLISH",
                                  "ENGLISH", "NLS_DATE_LANGUAGE=ENGLISH'", "NLS_DATE_LANGUAGE='ENGLISH\"", "NLS_DATE_LANGUAGE=ENGLISHX"}) {
        const exact_block text{std::string(nls)};
        EXPECT_EQ(to_char_nls_parse(text.data(), text.length, &language), -6131) << nls;
    }
    EXPECT_EQ(language, 7);
    dfm_model model;
    EXPECT_EQ(dfm_create(nullptr, &model), 0);
    EXPECT_EQ(dfm_set_lang(&model, 2), -6803);
}

// Whatever came before, good or bad, in another language or as a %-format of the same text.
TEST(DateFormat, SessionKeepsTheLastModels) {
    const std::string value = "2024-02-29 13:45:00";
    const char* const chinese = "NLS_DATE_LANGUAGE=CHINESE";
    const std::string long_format = "YYYY" + std::string(71, '-');
    bifun_environment environment;
    std::mt19937 random(11);
    for (int i = 0; i < 3000; ++i) {
        const std::string formats[] = {
            "YYYY-MM-DD", "YYYY-MM-DY",      "MONTH", "YYYY-MM-DD QQ", "YYYY\"%Y\"MM",      "%Y-%m-%d", "%Y-%m-%", "%W %M", "MM",
            long_format,  long_format + "-", "",      "HH12:MI",       "YYYY-MM-DD TZH:TZM"};
        const std::string& format = formats[random() % std::size(formats)];
        const std::string language = random() % 2 == 0 ? chinese : "";
        ASSERT_EQ(written(value, format, language, &environment), written(value, format, language)) << format;
        ASSERT_EQ(read("2024-02-29", format, &environment), read("2024-02-29", format)) << format;
    }
    EXPECT_EQ(written(value, "YYYY", "", &environment), "2024");
    kept_format<date_model>& kept = environment.date_models.kept[environment.date_models.last];
    kept.parsed.plan.length = 2; // stays, for the same text is not parsed again
    EXPECT_EQ(written(value, "MM", "", &environment), "02");
    EXPECT_EQ(written(value, "YYYY", "", &environment), "20");
}

// What a model says of its texts is what the operation writes, and nothing is said of others.
TEST(DateFormat, FixedTexts) {
    const char* const formats[] = {"YYYY-MM-DD HH24:MI:SS",
                                   "DD.MM.YYYY",
                                   "YY/YYY",
                                   "RRRR\"abc\"SSMI",
                                   "YYYY-MM-DD HH24:MI:SS.FF3",
                                   "FMDD",
                                   "HH12",
                                   "MON",
                                   "YYYY AD",
                                   "\"0123456789012345678901234567890123456789\"YYYYMMDD",
                                   "DDTH",
                                   "-"};
    int said = 0;
    for (const char* const format : formats) {
        dfm_model model;
        EXPECT_EQ(dfm_create(nullptr, &model), 0);
        ASSERT_EQ(dfm_parse(&model, reinterpret_cast<const std::uint8_t*>(format), static_cast<std::uint32_t>(strlen(format))), 0);
        said += model.fixed.length != 0 ? 1 : 0;
        for (const char* const value : {"2024-02-29 13:45:06.789", "0000-12-31 00:00:00", "9999-01-01 23:59:59"}) {
            std::string text;
            const std::string digits = written(value, "YYYYMMDD\"00\"HH24MISS");
            for (std::uint32_t i = 0; i < model.fixed.length; ++i) {
                const std::uint8_t order = model.fixed.order[i];
                ASSERT_TRUE(order < 16 ? model.fixed.others[i] == 0 : order == 0x80);
                text.push_back(order < 16 ? digits[order] : static_cast<char>(model.fixed.others[i]));
            }
            EXPECT_TRUE(text.empty() || text == written(value, format)) << format;
        }
    }
    EXPECT_EQ(said, 6);
}

// The session's formats, and what is written without them.
TEST(DateFormat, SessionFormats) {
    bifun_environment session;
    const auto shown = [&](const char* text, std::int32_t kind) {
        zqdt given;
        const zqtime value = value_of(text);
        zqdt_encode_fast(&given, &value, kind);
        std::uint8_t buffer[ZQDT_TEXT_SIZE];
        const std::uint32_t length = zqdt_to_char(&session, &given, buffer, sizeof buffer);
        EXPECT_EQ(zqdt_to_char(&session, &given, buffer, length - 1), 0U);
        return std::string(reinterpret_cast<const char*>(buffer), length);
    };
    EXPECT_EQ(shown("2024-02-29 13:45:06.5", ZQDT_DATE), "2024-02-29");
    EXPECT_EQ(shown("2024-02-29 13:45:06.5-03:30", ZQDT_TIME), "13:45:06 -03:30");
    EXPECT_EQ(shown("-0044-02-29 13:45:06.5", ZQDT_DATETIME), "-044-02-29 13:45:06");
    EXPECT_EQ(shown("-4712-02-29 13:45:06.5", ZQDT_DATE), "-4712-02-29");
    using zqengine::session_format;
    session.language = DFM_CHINESE;
    session.time_zone = 90;
    const std::pair<session_format, const char*> formats[] = {{session_format::date, "DD. MON"},
                                                              {session_format::time, "HH24\"h\" TZR"},
                                                              {session_format::datetime, "YYYY/MM/DD HH24"},
                                                              {session_format::time_with_zone, "HH24 TZR"},
                                                              {session_format::datetime_with_zone, "YYYY MM TZH"}};
    for (const auto& [which, format] : formats) {
        EXPECT_EQ(zqengine::set_session_format(session, which, format).fault, zqengine::format_fault::none);
    }
    EXPECT_EQ(shown("2024-02-29", ZQDT_DATE), "29. 2月 ");
    EXPECT_EQ(shown("13:45:06", ZQDT_TIME), "13h +01:30");
    EXPECT_EQ(shown("13:45:06-03:30", ZQDT_TIME), "13 -03:30");
    EXPECT_EQ(shown("2024-02-29 13:45:06", ZQDT_DATETIME), "2024/02/29 13");
    EXPECT_EQ(shown("2024-02-29 13:45:06-03:30", ZQDT_DATETIME), "2024 02 -03");

    const auto read_ex2 = [&](const std::string& text) {
        const exact_block bytes(text);
        zqtime value{};
        const std::int32_t status = zqtime_from_char_ex2(&session, bytes.data(), bytes.length, &value);
        return status == 0 ? text_of(value) : std::to_string(status);
    };
    EXPECT_EQ(read_ex2("2024/2/9 7"), "2024-02-09 07:00:00");
    EXPECT_EQ(read_ex2("2024-02-09T07:30"), "2024-02-09 07:30:00");
    EXPECT_EQ(read_ex2("soon"), "109");

    EXPECT_EQ(zqengine::set_session_format(session, session_format::date, "XX").fault, zqengine::format_fault::unknown_element);
    EXPECT_EQ(sess4_get_date_format(&session), nullptr);
    EXPECT_EQ(zqengine::set_session_format(session, session_format::time, "").fault, zqengine::format_fault::none);
    EXPECT_EQ(sess4_get_time_format(&session), nullptr);
    EXPECT_EQ(sess4_get_datetime_format(nullptr), nullptr);

    zqtime zoned{};
    EXPECT_EQ(zqtime_from_char_with_tz(&session, reinterpret_cast<const std::uint8_t*>("2024-02-29"), 10, &zoned), 0);
    EXPECT_EQ(text_of(zoned), "2024-02-29 00:00:00+01:30");
    EXPECT_EQ(zqtime_from_char_with_tz(&session, reinterpret_cast<const std::uint8_t*>("x"), 1, &zoned), 109);
}

TEST(DateFormat, WhatATextCanBe) {
    const std::pair<const char*, zq_format_use> uses[] = {{"YYYY", ZQ_FORMAT_OF_DATES},  {"-", ZQ_FORMAT_OF_DATES},
                                                          {"999", ZQ_FORMAT_OF_NUMBERS}, {"X", ZQ_FORMAT_OF_NUMBERS},
                                                          {"TM", ZQ_FORMAT_OF_NUMBERS},  {"YYYYX", ZQ_FORMAT_OF_NOTHING}};
    for (const auto& [format, use] : uses) {
        EXPECT_EQ(
            zqtime_dt_fmt_is_for_xdec_and_date(reinterpret_cast<const std::uint8_t*>(format), static_cast<std::uint32_t>(strlen(format))),
            use)
            << format;
    }
}

} // namespace
