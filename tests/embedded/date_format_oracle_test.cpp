// SPDX-License-Identifier: Apache-2.0
// Date formats against ICU's, libc's strftime, and themselves: what is written under random models is read back.
#include <gtest/gtest.h>
#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>

#include <ctime>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "embedded/charset/database_charset.h"
#include "engine/charset.h"
#include "engine/date_format.h"
#include "engine/datetime.h"
#include "layouts/calendar.h"

namespace {

const std::uint8_t* bytes_of(const std::string& text) { return reinterpret_cast<const std::uint8_t*>(text.data()); }
std::uint32_t length_of(const std::string& text) { return static_cast<std::uint32_t>(text.size()); }

dfm_model model_of(const std::string& format, std::int32_t language = DFM_ENGLISH) {
    dfm_model model;
    (void)dfm_create(nullptr, &model);
    EXPECT_EQ(dfm_set_lang(&model, language), 0);
    EXPECT_EQ(dfm_parse(&model, bytes_of(format), length_of(format)), 0) << format;
    return model;
}

std::string written(const dfm_model& model, const zqtime& value, decltype(dfm_char_get)* write = dfm_char_get) {
    std::uint8_t buffer[DFM_TEXT_SIZE];
    std::uint32_t length = 0;
    EXPECT_EQ(write(nullptr, &model, &value, buffer, &length), 0);
    return {reinterpret_cast<const char*>(buffer), length};
}

struct moment {
    std::int32_t year;
    std::uint32_t month, day, hour, minute, second, microsecond;
};

zqtime encoded(const moment& the) {
    zqtime value;
    EXPECT_EQ(zqtime_encode(&value, the.year, the.month, the.day, the.hour, the.minute, the.second, the.microsecond, ZQTIME_NO_ZONE), 0);
    return value;
}

struct random_moments {
    std::mt19937_64 random{20};

    std::uint32_t below(std::uint32_t limit) { return static_cast<std::uint32_t>(random() % limit); }

    // Of years from `first` to 9999; some days are those around the changeover and around new year.
    moment next(std::int32_t first) {
        moment the{.year = first + static_cast<std::int32_t>(below(static_cast<std::uint32_t>(10000 - first))),
                   .month = 1 + below(12),
                   .day = 1 + below(31),
                   .hour = below(24),
                   .minute = below(60),
                   .second = below(60),
                   .microsecond = below(3) == 0 ? 0 : below(1'000'000)};
        if (below(8) == 0) {
            the.year = first < 1582 ? 1582 : the.year;
            the.month = 10;
        } else if (below(4) == 0) {
            the.month = below(2) == 0 ? 1 : 12;
            the.day = the.month == 1 ? 1 + below(8) : 24 + below(8);
        }
        while (!bifun::calendar::date_exists(the.year, the.month, the.day)) {
            the.day = the.day > 15 ? the.day - 1 : the.day == 15 ? 4 : the.day - 1;
        }
        return the;
    }
};

struct icu_format {
    std::unique_ptr<icu::SimpleDateFormat> format;

    icu_format(const char* pattern, const icu::Locale& locale) {
        UErrorCode status = U_ZERO_ERROR;
        format = std::make_unique<icu::SimpleDateFormat>(icu::UnicodeString::fromUTF8(pattern), locale, status);
        format->setTimeZone(*icu::TimeZone::getGMT());
        EXPECT_TRUE(U_SUCCESS(status)) << pattern;
    }
    std::string text(UDate date) const {
        icu::UnicodeString characters;
        std::string text;
        format->format(date, characters).toUTF8String(text);
        return text;
    }
};

UDate icu_date(icu::GregorianCalendar& calendar, const moment& the) {
    calendar.clear();
    calendar.set(UCAL_EXTENDED_YEAR, the.year);
    calendar.set(UCAL_MONTH, static_cast<std::int32_t>(the.month) - 1);
    calendar.set(UCAL_DATE, static_cast<std::int32_t>(the.day));
    calendar.set(UCAL_HOUR_OF_DAY, static_cast<std::int32_t>(the.hour));
    calendar.set(UCAL_MINUTE, static_cast<std::int32_t>(the.minute));
    calendar.set(UCAL_SECOND, static_cast<std::int32_t>(the.second));
    UErrorCode status = U_ZERO_ERROR;
    const UDate date = calendar.getTime(status);
    EXPECT_TRUE(U_SUCCESS(status));
    return date + the.microsecond / 1000;
}

// Ours, ICU's, and the language. The calendars are the same: Julian up to 1582-10-04.
struct same_format {
    const char* ours;
    const char* icus;
    std::int32_t language = DFM_ENGLISH;
    bool is_read = true; // into the same day or moment
};

const same_format same_formats[] = {
    {"YYYY-MM-DD HH24:MI:SS.FF3", "yyyy-MM-dd HH:mm:ss.SSS"},
    {"DD.MM.YYYY", "dd.MM.yyyy"},
    {"FMDay, DD Month YYYY HH12:MI:SS AM", "EEEE, d MMMM y h:m:s a"},
    {"Dy DD-Mon-YYYY HH:MI PM", "EEE dd-MMM-yyyy hh:mm a"},
    {"FMDDDFM YYYY", "D yyyy"},
    {"IYYY-IW", "YYYY-ww", DFM_ENGLISH, false},
    {"FMYYYY AD, Month", "y G, MMMM", DFM_ENGLISH, false},
    {"FMYYYY年MonDD日 Day AMHH:MI", "y年LLLd日 EEEE ah:m", DFM_CHINESE},
    {"J", "g"},
    {"FMQ", "Q", DFM_ENGLISH, false},
};

TEST(DateFormatOracle, WritesAndReadsAsIcuDoes) {
    UErrorCode status = U_ZERO_ERROR;
    icu::GregorianCalendar calendar(*icu::TimeZone::getGMT(), status);
    calendar.setFirstDayOfWeek(UCAL_MONDAY);
    calendar.setMinimalDaysInFirstWeek(4);
    ASSERT_TRUE(U_SUCCESS(status));
    random_moments moments;
    for (const same_format& the : same_formats) {
        icu_format icus(the.icus, the.language == DFM_CHINESE ? icu::Locale::getSimplifiedChinese() : icu::Locale::getUK());
        icus.format->setCalendar(calendar);
        const dfm_model ours = model_of(the.ours, the.language);
        for (int i = 0; i < 4000; ++i) {
            const moment drawn = moments.next(std::string(the.ours).find("AD") == std::string::npos ? 1 : -4000);
            const zqtime value = encoded(drawn);
            std::string expected = icus.text(icu_date(calendar, drawn));
            for (const auto& [from, to] : {std::pair<std::string, std::string>{"Sept", "Sep"}, {"am", "AM"}, {"pm", "PM"}}) {
                const std::size_t at = expected.find(from);
                const bool is_september = from == "Sept" && expected.find("September") != std::string::npos;
                at != std::string::npos && !is_september ? expected.replace(at, from.size(), to) : expected;
            }
            ASSERT_EQ(written(ours, value), expected) << the.ours;
            if (the.is_read) {
                dfm_model reading;
                ASSERT_EQ(parse_date_fmt_with_len(nullptr, bytes_of(the.ours), length_of(the.ours), 0, &reading), 0) << the.ours;
                ASSERT_EQ(dfm_set_lang(&reading, the.language), 0);
                zqtime read;
                ASSERT_EQ(char_to_date_simple_with_alen(&reading, bytes_of(expected), length_of(expected), DFM_DATETIME, &read), 0)
                    << expected << " by " << the.ours;
                ASSERT_EQ(written(ours, read), expected);
                ASSERT_EQ(zqtime_diff_day(&read, &value), 0);
            }
        }
    }
}

// The specifiers that both have, with what libc writes for them.
TEST(DateFormatOracle, PercentFormatsAsLibc) {
    const std::pair<const char*, const char*> specifiers[] = {
        {"%a %b %d %e", "%a %b %d %-d"}, {"%H %I %j %m %c", "%H %I %j %m %-m"}, {"%i %M %p %r", "%M %B %p %I:%M:%S %p"},
        {"%S %T %U", "%S %T %U"},        {"%x-%v %w %W", "%G-%V %w %A"},        {"%Y %y %% %k %l", "%Y %y %% %-H %-I"}};
    random_moments moments;
    for (const auto& [ours, libcs] : specifiers) {
        dfm_model model;
        ASSERT_EQ(zqtime_convert_fmt(nullptr, bytes_of(ours), length_of(ours), &model), 0);
        for (int i = 0; i < 5000; ++i) {
            const moment drawn = moments.next(1600);
            std::tm parts{};
            parts.tm_year = drawn.year - 1900;
            parts.tm_mon = static_cast<int>(drawn.month) - 1;
            parts.tm_mday = static_cast<int>(drawn.day);
            parts.tm_hour = static_cast<int>(drawn.hour);
            parts.tm_min = static_cast<int>(drawn.minute);
            parts.tm_sec = static_cast<int>(drawn.second);
            (void)timegm(&parts); // the day of the week and of the year
            char expected[128];
            ASSERT_NE(std::strftime(expected, sizeof expected, libcs, &parts), 0U);
            ASSERT_EQ(written(model, encoded(drawn), date_to_char), expected) << ours;
        }
    }
}

// Weeks that libc has not: from the days of the week around them.
TEST(DateFormatOracle, WeeksOfPercentFormats) {
    const std::pair<const char*, const char*> cases[] = {{"2024-12-30", "53 52 2024-52"}, {"2024-01-06", "01 00 2023-53"},
                                                         {"2023-01-01", "00 01 2023-01"}, {"2021-01-03", "00 01 2021-01"},
                                                         {"2020-12-31", "53 52 2020-52"}, {"1582-10-15", "40 39 1582-39"}};
    dfm_model model;
    const std::string format = "%u %U %X-%V";
    ASSERT_EQ(zqtime_convert_fmt(nullptr, bytes_of(format), length_of(format), &model), 0);
    for (const auto& [date, expected] : cases) {
        zqtime value;
        ASSERT_EQ(zqtime_from_char_ex(reinterpret_cast<const std::uint8_t*>(date), 10, &value), 0);
        EXPECT_EQ(written(model, value, date_to_char), expected) << date;
    }
}

// The elements of random models that tell a whole moment, each in some form, with anything between.
std::string random_model(random_moments& moments, bool& has_time) {
    const auto one_of = [&](std::initializer_list<const char*> forms) {
        return std::string(forms.begin()[moments.below(static_cast<std::uint32_t>(forms.size()))]);
    };
    std::vector<std::string> elements;
    const std::uint32_t kind = moments.below(4);
    if (kind == 0) {
        elements = {"J"};
    } else {
        elements = {one_of({"YYYY", "SYYYY", "Y,YYY", "RRRR", "YYYY", "FMYYYY"})};
        if (kind == 1) {
            elements.emplace_back("DDD");
        } else {
            elements.push_back(one_of({"MM", "Month", "MON", "RM", "mm", "month"}));
            elements.push_back("DD");
        }
        if (moments.below(3) == 0) {
            elements.push_back(one_of({"Day", "DY", "D"}));
        }
    }
    has_time = moments.below(4) != 0;
    if (has_time) {
        if (moments.below(4) == 0) {
            elements.push_back("SSSSS" + one_of({".FF", ".FF6", ".FF9"}));
        } else {
            elements.push_back(one_of({"HH24", "HH12 AM", "a.m. HH"}));
            elements.emplace_back("MI");
            elements.push_back("SS" + one_of({".FF", ",FF6", ".FF7"}));
        }
    }
    std::shuffle(elements.begin(), elements.end(), moments.random);
    std::string model = one_of({"", "", "FX", "FM"});
    for (const std::string& element : elements) {
        model += element + one_of({" ", ", ", "/", "\"h\"", "年", " \"of\" "});
    }
    return model;
}

TEST(DateFormatOracle, ReadsWhatItWrites) {
    random_moments moments;
    for (int i = 0; i < 20000; ++i) {
        bool has_time = false;
        const std::string format = random_model(moments, has_time);
        const bool has_sign = format.find("SYYYY") != std::string::npos || format.find('J') != std::string::npos;
        moment drawn = moments.next(has_sign && format.find("RRRR") == std::string::npos ? -4712 : 100);
        if (!has_time) {
            drawn.hour = drawn.minute = drawn.second = drawn.microsecond = 0;
        }
        const std::int32_t language = moments.below(2) == 0 ? DFM_ENGLISH : DFM_CHINESE;
        const zqtime value = encoded(drawn);
        const std::string text = written(model_of(format, language), value);
        dfm_model model;
        if (format.size() > DFM_LONGEST_FORMAT) {
            continue;
        }
        ASSERT_EQ(parse_date_fmt_with_len(nullptr, bytes_of(format), length_of(format), 0, &model), 0) << format;
        ASSERT_EQ(dfm_set_lang(&model, language), 0);
        zqtime read;
        ASSERT_EQ(char_to_date_simple_with_alen(&model, bytes_of(text), length_of(text), DFM_DATETIME, &read), 0)
            << text << " by " << format;
        ASSERT_EQ(zqtime_cmp(&read, &value), 0) << text << " by " << format;
    }
}

TEST(DateFormatOracle, ChineseNamesInTheCharacterSets) {
    const std::pair<std::uint32_t, const char*> sets[] = {{ZQ_CHARSET_GB18030, "GB18030"}, {ZQ_CHARSET_EUC_KR, "EUC-KR"}};
    const std::string format = "BCMonthMONDAYDYAMa.m.";
    for (const auto& [code, name] : sets) {
        for (std::uint32_t i = 0; i < 14; ++i) {
            const zqtime value = encoded({i % 2 == 0 ? 0 : 2024, 1 + i % 12, 1 + i, i * 2 % 24, 0, 0, 0});
            zqengine::set_database_charset(ZQ_CHARSET_UTF8);
            const icu::UnicodeString expected = icu::UnicodeString::fromUTF8(written(model_of(format, DFM_CHINESE), value));
            zqengine::set_database_charset(code);
            const std::string text = written(model_of(format, DFM_CHINESE), value);
            EXPECT_EQ(icu::UnicodeString(text.data(), static_cast<std::int32_t>(text.size()), name), expected) << name << ' ' << i;
        }
    }
    zqengine::set_database_charset(ZQ_CHARSET_UTF8);
}

} // namespace
