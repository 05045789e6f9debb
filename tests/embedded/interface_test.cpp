// SPDX-License-Identifier: Apache-2.0
// The C interface of the embedded engine.

#include <climits>
#include <memory>
#include <string>

#include <dlfcn.h>
#include <gtest/gtest.h>

#include "bop/bifun.h"
#include "bop/frame/status.h"
#include "embedded/columns/column_storage.h"
#include "embedded/memory/allocation.h"
#include "embedded/zqengine.h"
#include "engine/columns.h"
#include "engine/datetime.h"
#include "engine/decimal.h"
#include "engine/large_objects.h"
#include "engine/session.h"
#include "engine/statements.h"

namespace {

struct destroy {
    void operator()(bifun_column* column) const { zqengine_column_destroy(column); }
    void operator()(bifun_environment* environment) const { zqengine_environment_destroy(environment); }
    void operator()(zqengine_large_object_store* store) const { zqengine_large_object_store_destroy(store); }
    void operator()(bifun_large_object* object) const { zqengine_large_object_destroy(object); }
};
template <class T> using owned = std::unique_ptr<T, destroy>;

owned<bifun_column> create(int type, std::uint32_t capacity = 1) { return owned<bifun_column>(zqengine_column_create(type, capacity)); }

std::int32_t set_text(bifun_column& column, const std::string& text) {
    return zqengine_column_set_text(&column, 0, text.data(), static_cast<std::uint32_t>(text.size()));
}

std::string text_of(const bifun_column& column, std::uint32_t row = 0) {
    char buffer[8192];
    std::size_t length = 0;
    const std::int32_t status = zqengine_column_get_text(&column, row, buffer, sizeof buffer, &length);
    if (status != 0) {
        return status == ZQENGINE_NULL ? "NULL" : "status " + std::to_string(status);
    }
    EXPECT_EQ(buffer[length], '\0');
    return {buffer, length};
}

// What the text is when it is written again, or the status.
std::string read_and_write(int type, const std::string& text) {
    const owned<bifun_column> column = create(type);
    const std::int32_t status = set_text(*column, text);
    EXPECT_EQ(column->data->null_flags[0], status == 0 ? 1 : 0) << text;
    return status == 0 ? text_of(*column) : "status " + std::to_string(status);
}

struct text_case {
    int type;
    const char* text;
    const char* written; // null: the same
};

TEST(Interface, ValuesOfEveryTypeAreReadAndWrittenAsText) {
    constexpr const char* unreadable = "status -6806";
    constexpr const char* too_large = "status -6102";
    const text_case cases[] = {
        {ZQENGINE_BOOL, "true", nullptr},
        {ZQENGINE_BOOL, "false", nullptr},
        {ZQENGINE_BOOL, "1", unreadable},
        {ZQENGINE_INT, "-2147483648", nullptr},
        {ZQENGINE_INT, "+7", "7"},
        {ZQENGINE_INT, "+-7", unreadable},
        {ZQENGINE_INT, "2147483648", too_large},
        {ZQENGINE_INT, "1x", unreadable},
        {ZQENGINE_INT, "", unreadable},
        {ZQENGINE_BIGINT, "-9223372036854775808", nullptr},
        {ZQENGINE_BIGINT, "9223372036854775808", too_large},
        {ZQENGINE_DOUBLE, "0.1", nullptr},
        {ZQENGINE_DOUBLE, "-1.7976931348623157E+308", nullptr},
        {ZQENGINE_DOUBLE, "1e999", too_large},
        {ZQENGINE_DOUBLE, "NaN", nullptr},
        {ZQENGINE_DOUBLE, "-Infinity", nullptr},
        {ZQENGINE_DECIMAL, "-0.50", nullptr},
        {ZQENGINE_DECIMAL, " 1.5e3 ", "1500"},
        {ZQENGINE_DECIMAL, "1e200", too_large},
        {ZQENGINE_DECIMAL, "one", unreadable},
        {ZQENGINE_DATETIME, "2024-02-29 13:45:00.123456", nullptr},
        {ZQENGINE_DATETIME, "2024-02-29T13:45Z", "2024-02-29 13:45:00+00:00"},
        {ZQENGINE_DATETIME, "2023-02-29", unreadable},
        {ZQENGINE_INTERVAL_YM, "-1-02", nullptr},
        {ZQENGINE_INTERVAL_YM, "2147483647-11", nullptr},
        {ZQENGINE_INTERVAL_YM, "2147483648-0", unreadable},
        {ZQENGINE_INTERVAL_YM, "1-12", unreadable},
        {ZQENGINE_INTERVAL_YM, "1", unreadable},
        {ZQENGINE_INTERVAL_DT, "-2147483647 23:59:59.999999", nullptr},
        {ZQENGINE_INTERVAL_DT, "+0 1:2:3.0500", "0 01:02:03.05"},
        {ZQENGINE_INTERVAL_DT, "0 00:00:00", nullptr},
        {ZQENGINE_INTERVAL_DT, "0 00:00:60", unreadable},
        {ZQENGINE_INTERVAL_DT, "0 24:00:00", unreadable},
        {ZQENGINE_INTERVAL_DT, "0 00:00:00.", unreadable},
        {ZQENGINE_INTERVAL_DT, "0 00:00:00.1234567", unreadable},
        {ZQENGINE_INTERVAL_DT, "0 00:00", unreadable},
        {ZQENGINE_VARCHAR, "", nullptr},
        {ZQENGINE_VARCHAR, "two words  ", nullptr},
        {ZQENGINE_VARBINARY, "\xFF", nullptr},
        {ZQENGINE_BLOB, "1", "status -6803"},
    };
    for (const text_case& c : cases) {
        EXPECT_EQ(read_and_write(c.type, c.text), c.written == nullptr ? c.text : c.written) << c.type << " " << c.text;
    }
}

TEST(Interface, IntervalsOfAnyFieldsAreWrittenByTheirLength) {
    const owned<bifun_column> months = create(ZQENGINE_INTERVAL_YM);
    const bifun_interval_ym mixed = {1, -14};
    EXPECT_EQ(zqengine_column_set_interval_ym(months.get(), 0, &mixed), 0);
    EXPECT_EQ(text_of(*months), "-0-02");
    const owned<bifun_column> times = create(ZQENGINE_INTERVAL_DT);
    const bifun_interval_dt least = {INT_MIN, INT_MIN, INT_MIN, INT_MIN, INT_MIN};
    EXPECT_EQ(zqengine_column_set_interval_dt(times.get(), 0, &least), 0);
    EXPECT_EQ(text_of(*times), "-2238478296 13:57:55.483648");
}

TEST(Interface, SettersTakeTheirTypeAndRowsThatThereAre) {
    const std::int32_t wrong = BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    const xdec decimal = {};
    const zqtime datetime = {};
    const bifun_interval_ym months = {1, 2};
    const bifun_interval_dt time = {1, 2, 3, 4, 5};
    const owned<zqengine_large_object_store> store(zqengine_large_object_store_create());
    const owned<bifun_large_object> object(zqengine_large_object_create(store.get()));
    for (int type = ZQENGINE_BOOL; type <= ZQENGINE_BLOB; ++type) {
        const owned<bifun_column> column = create(type, 2);
        bifun_column* const c = column.get();
        ASSERT_NE(c, nullptr);
        EXPECT_EQ(zqengine_column_type(c), type);
        EXPECT_EQ(zqengine_column_capacity(c), 2U);
        const auto expected = [&](bool fits, std::uint32_t row) { return fits && row < 2 ? 0 : wrong; };
        for (const std::uint32_t row : {0U, 1U, 2U}) {
            EXPECT_EQ(zqengine_column_set_int(c, row, 1), expected(type == ZQENGINE_BOOL || type == ZQENGINE_INT, row)) << type;
            EXPECT_EQ(zqengine_column_set_bigint(c, row, 1), expected(type == ZQENGINE_BIGINT, row)) << type;
            EXPECT_EQ(zqengine_column_set_double(c, row, 1), expected(type == ZQENGINE_DOUBLE, row)) << type;
            EXPECT_EQ(zqengine_column_set_decimal(c, row, &decimal), expected(type == ZQENGINE_DECIMAL, row)) << type;
            EXPECT_EQ(zqengine_column_set_datetime(c, row, &datetime), expected(type == ZQENGINE_DATETIME, row)) << type;
            EXPECT_EQ(zqengine_column_set_interval_ym(c, row, &months), expected(type == ZQENGINE_INTERVAL_YM, row)) << type;
            EXPECT_EQ(zqengine_column_set_interval_dt(c, row, &time), expected(type == ZQENGINE_INTERVAL_DT, row)) << type;
            EXPECT_EQ(zqengine_column_set_large_object(c, row, object.get()), expected(type == ZQENGINE_BLOB, row)) << type;
            EXPECT_EQ(zqengine_column_set_string(c, row, "x", 1, 1), expected(type == ZQENGINE_VARCHAR, row)) << type;
            EXPECT_EQ(zqengine_column_set_string(c, row, "x", 1, 0), expected(type == ZQENGINE_VARCHAR || type == ZQENGINE_VARBINARY, row));
        }
        EXPECT_EQ(zqengine_column_set_large_object(c, 0, nullptr), wrong);
        EXPECT_EQ(c->data->null_flags[1], 1) << type;
        c->no_nulls = 1;
        EXPECT_EQ(zqengine_column_set_null(c, 1), 0);
        EXPECT_EQ(zqengine_column_set_null(c, 2), wrong);
        EXPECT_EQ(c->no_nulls, 0U) << "the promise is taken back";
        EXPECT_EQ(text_of(*c, 1), "NULL");
        EXPECT_EQ(text_of(*c, 2), "status -6803");
        c->no_nulls = 1;
        zqengine_column_clear(c);
        EXPECT_EQ(text_of(*c, 0), "NULL");
        EXPECT_EQ(c->no_nulls, 0U);
        if (type == ZQENGINE_VARCHAR) {
            c->data->null_flags[0] = 1; // as LTRIM does where it leaves a row without a value
            EXPECT_EQ(text_of(*c, 0), "");
        }
    }
    EXPECT_EQ(zqengine_column_create(ZQENGINE_BLOB + 1, 1), nullptr);
    EXPECT_EQ(zqengine_column_create(-1, 1), nullptr);
}

TEST(Interface, ColumnsTellWhatTheirTextsAre) {
    const owned<bifun_column> column = create(ZQENGINE_VARCHAR, 3);
    const auto told = [&column] {
        zqengine_column_tell_texts(column.get(), 9);
        return reinterpret_cast<std::uintptr_t>(column->data->engine_word);
    };
    ASSERT_EQ(zqengine_column_set_string(column.get(), 0, "ab", 2, 3), 0);
    EXPECT_EQ(told(), ZQ_TEXTS_ASCII);
    ASSERT_EQ(zqengine_column_set_string(column.get(), 2, "\xC3\xA9", 2, 0), 0);
    EXPECT_EQ(column->data->engine_word, nullptr) << "setting takes it back";
    EXPECT_EQ(told(), ZQ_TEXTS_UTF8);
    ASSERT_EQ(zqengine_column_set_text(column.get(), 1, "\xC3", 1), 0);
    EXPECT_EQ(told(), ZQ_TEXTS_ANY);
    ASSERT_EQ(zqengine_column_set_null(column.get(), 1), 0);
    EXPECT_EQ(told(), ZQ_TEXTS_UTF8) << "NULL is no text";
    zqengine_column_prepare(column.get(), 1);
    EXPECT_EQ(column->data->engine_word, nullptr);
    zqengine_column_set_known_texts(column.get(), ZQ_TEXTS_UTF8);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(column->data->engine_word), ZQ_TEXTS_UTF8);
}

TEST(Interface, TextThatDoesNotFitTellsItsLength) {
    const owned<bifun_column> column = create(ZQENGINE_VARCHAR);
    ASSERT_EQ(zqengine_column_set_string(column.get(), 0, "ab", 2, 3), 0);
    char buffer[6] = "?????";
    std::size_t length = 0;
    for (const std::size_t size : {0U, 1U, 5U}) {
        EXPECT_EQ(zqengine_column_get_text(column.get(), 0, buffer, size, &length), BIFUN_RESULT_TOO_LONG);
        EXPECT_EQ(length, 5U);
        EXPECT_STREQ(buffer, "?????");
    }
    EXPECT_EQ(zqengine_column_get_text(column.get(), 0, buffer, sizeof buffer, &length), 0);
    EXPECT_STREQ(buffer, "ab   ");
    ASSERT_EQ(zqengine_column_set_null(column.get(), 0), 0);
    EXPECT_EQ(zqengine_column_get_text(column.get(), 0, nullptr, 0, &length), ZQENGINE_NULL);
    EXPECT_EQ(length, 0U);
}

TEST(Interface, DatetimesAreWrittenAsTheirKind) {
    const owned<bifun_column> column = create(ZQENGINE_DATETIME);
    ASSERT_EQ(set_text(*column, "2024-02-29 13:45:00+08:00"), 0);
    EXPECT_EQ(zqengine_column_set_kind(column.get(), ZQDT_DATE), 0);
    EXPECT_EQ(text_of(*column), "2024-02-29");
    EXPECT_EQ(zqengine_column_set_kind(column.get(), ZQDT_TIME), 0);
    EXPECT_EQ(zqengine_column_set_kind(column.get(), 0), BIFUN_ARGUMENT_OUT_OF_DOMAIN);
    EXPECT_EQ(zqengine_column_set_kind(column.get(), 4), BIFUN_ARGUMENT_OUT_OF_DOMAIN);
    EXPECT_EQ(text_of(*column), "13:45:00+08:00");
}

TEST(Interface, SessionsHaveZoneLanguageAndFormats) {
    const owned<bifun_environment> session(zqengine_environment_create());
    bifun_environment* const s = session.get();
    EXPECT_EQ(zqengine_environment_set_time_zone(s, -840), 0);
    EXPECT_EQ(zqengine_environment_set_time_zone(s, 841), BIFUN_ARGUMENT_OUT_OF_DOMAIN);
    EXPECT_EQ(sess4_get_time_zone(s), -840);
    EXPECT_EQ(zqengine_environment_set_language(s, 2), BIFUN_ARGUMENT_OUT_OF_DOMAIN);
    EXPECT_EQ(zqengine_environment_set_language(s, DFM_CHINESE), 0);

    const auto set = [s](int which, const std::string& format, zqengine_format_fault* fault = nullptr) {
        return zqengine_environment_set_format(s, which, format.data(), static_cast<std::uint32_t>(format.size()), fault);
    };
    const auto shown = [s](zqdt_kind kind) {
        zqdt value{};
        EXPECT_EQ(zqtime_encode(&value.value, 2024, 2, 29, 13, 45, 0, 0, ZQTIME_NO_ZONE), 0);
        value.kind = kind;
        char text[ZQDT_TEXT_SIZE];
        return std::string(text, zqdt_to_char(s, &value, reinterpret_cast<std::uint8_t*>(text), sizeof text));
    };
    EXPECT_EQ(set(ZQENGINE_DATE_FORMAT, "DD.MM.YYYY"), 0);
    EXPECT_EQ(set(ZQENGINE_TIME_FORMAT, "HH24-MI"), 0);
    EXPECT_EQ(set(5, "YYYY"), BIFUN_ARGUMENT_OUT_OF_DOMAIN);
    zqengine_format_fault fault{};
    EXPECT_EQ(set(ZQENGINE_DATE_FORMAT, "YYYY-ZZ-DD", &fault), BIFUN_INVALID_DATE_FORMAT);
    EXPECT_EQ(std::string("YYYY-ZZ-DD").substr(fault.offset, fault.length), "ZZ") << fault.meaning;
    EXPECT_EQ(set(ZQENGINE_DATE_FORMAT, std::string(300, 'D'), &fault), BIFUN_INVALID_DATE_FORMAT);
    EXPECT_EQ(fault.length, 300U) << fault.meaning;
    EXPECT_EQ(set(ZQENGINE_TIME_FORMAT, "\"", nullptr), BIFUN_INVALID_DATE_FORMAT);
    EXPECT_EQ(shown(ZQDT_DATE), "29.02.2024") << "a fault leaves the format that there was";
    EXPECT_EQ(shown(ZQDT_TIME), "13-45");
    EXPECT_EQ(set(ZQENGINE_DATE_FORMAT, ""), 0);
    EXPECT_EQ(shown(ZQDT_DATE), "2024-02-29");

    EXPECT_EQ(zqengine_set_parameter(INI_SHOW_FRACTION, 2), BIFUN_ARGUMENT_OUT_OF_DOMAIN);
    EXPECT_EQ(zqengine_set_parameter(INI_SHOW_FRACTION, 1), 0);
    EXPECT_EQ(ini_get_value(0, INI_SHOW_FRACTION), 1);
    EXPECT_EQ(zqengine_set_parameter(INI_SHOW_FRACTION, 0), 0);
    zqengine_set_dates_keep_time(2);
    EXPECT_EQ(ini_enable_oracle_date_fmt(), 1);
    zqengine_set_dates_keep_time(0);
}

TEST(Interface, LargeObjectsAreWrittenAndRead) {
    const owned<zqengine_large_object_store> store(zqengine_large_object_store_create());
    const owned<bifun_large_object> object(zqengine_large_object_create(store.get()));
    EXPECT_EQ(zqengine_large_object_append(object.get(), "abc", 3), 0);
    EXPECT_EQ(zqengine_large_object_append(object.get(), "def", 3), 0);
    char bytes[4] = {};
    std::size_t read = 0;
    EXPECT_EQ(zqengine_large_object_read(object.get(), 2, bytes, 3, &read), 0);
    EXPECT_EQ(read, 3U);
    EXPECT_STREQ(bytes, "cde");
    EXPECT_EQ(zqengine_large_object_read(object.get(), -1, bytes, 3, &read), BIFUN_ARGUMENT_OUT_OF_DOMAIN);
    const owned<bifun_column> column = create(ZQENGINE_BLOB);
    EXPECT_EQ(zqengine_column_set_large_object(column.get(), 0, object.get()), 0);
    EXPECT_EQ(text_of(*column), "abcdef");
    const std::string rest(5000, '*'); // now it lies in a file
    EXPECT_EQ(zqengine_large_object_append(object.get(), rest.data(), rest.size()), 0);
    EXPECT_EQ(text_of(*column), "abcdef" + rest);
    EXPECT_EQ(zqengine_column_get_text(column.get(), 0, bytes, sizeof bytes, &read), BIFUN_RESULT_TOO_LONG);
    EXPECT_EQ(read, 5006U);
}

TEST(Interface, MemoryIsReleasedAndItsLackTold) {
    const std::int64_t before = zqengine::live_bytes();
    {
        const owned<bifun_environment> session(zqengine_environment_create());
        const owned<bifun_column> column = create(ZQENGINE_VARCHAR);
        zqengine::fail_step(1);
        EXPECT_EQ(bdta3_col_assign_str(session.get(), nullptr, column.get(), 0, nullptr, 0, 0), BIFUN_OUT_OF_MEMORY);
        EXPECT_EQ(zqengine_column_status(column.get()), BIFUN_OUT_OF_MEMORY);
        zqengine_column_clear(column.get());
        EXPECT_EQ(zqengine_column_status(column.get()), 0);
        EXPECT_EQ(set_text(*column, std::string(100000, 'x')), 0);
    }
    zqengine_column_destroy(nullptr);
    zqengine_environment_destroy(nullptr);
    zqengine_large_object_destroy(nullptr);
    zqengine_large_object_store_destroy(nullptr);
    EXPECT_EQ(zqengine::live_bytes(), before);
}

TEST(Interface, StatusesHaveMeanings) {
    EXPECT_STREQ(zqengine_status_meaning(BIFUN_OUT_OF_MEMORY), "out of memory");
    EXPECT_STREQ(zqengine_status_meaning(-6130), "invalid number format");
    EXPECT_STREQ(zqengine_status_meaning(-6131), "invalid NLS parameters");
    EXPECT_STREQ(zqengine_status_meaning(0), "no error");
    EXPECT_STREQ(zqengine_status_meaning(-1), "engine error");
}

// ---- columns of another make ----

TEST(InterfaceDeathTest, AColumnOfAnotherMakeIsNamed) {
    std::uint8_t flags[1] = {};
    bifun_string values[1] = {};
    bifun_column_data data{};
    data.null_flags = flags;
    data.values = values;
    EXPECT_DEATH(
        zqengine::require_own_column(&data, "bdta3_col_copy"),
        "libzqengine: bdta3_col_copy: the column is not of this engine: the columns that it writes are made by zqengine_column_create");
    EXPECT_DEATH(zqengine::require_own_column(nullptr, "bdta3_col_copy"), "not of this engine");
    const owned<bifun_column> own = create(ZQENGINE_VARCHAR);
    const bifun_column_data copy = *own->data;
    zqengine::require_own_column(own->data, "");
    zqengine::require_own_column(&copy, ""); // a part of a column, for one
#ifdef BIFUN_CHECK_COLUMNS
    bifun_column column{0, nullptr, &data};
    const bifun_string value{};
    size_t length = 0;
    EXPECT_DEATH(bdta3_col_assign_str(nullptr, nullptr, &column, 0, nullptr, 0, 0), "bdta3_col_assign_str");
    EXPECT_DEATH(bdta3_col_assign_bin(nullptr, nullptr, &column, 0, nullptr, 0), "bdta3_col_assign_bin");
    EXPECT_DEATH(bdta3_set_str_from_str_with_len(nullptr, nullptr, &column, 0, nullptr, 0), "bdta3_set_str_from_str_with_len");
    EXPECT_DEATH(bdta3_colstr_copy(nullptr, nullptr, &column, 0, &value), "bdta3_colstr_copy");
    EXPECT_DEATH(bdta3_colstr_assign_without_value(nullptr, nullptr, &data, 0, 0, 0), "bdta3_colstr_assign_without_value");
    EXPECT_DEATH(bdta3_col_space_alloc(nullptr, nullptr, &data, 0), "bdta3_col_space_alloc");
    EXPECT_DEATH(bdta3_col_copy(nullptr, nullptr, &column, own.get(), 1), "bdta3_col_copy");
    EXPECT_DEATH(zqengine_column_get_text(&column, 0, nullptr, 0, &length), "zqengine_column_get_text");

    // The library itself, which writes where the engine says that free bytes lie open.
    void* const library = dlopen(BIFUN_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    const auto concat = reinterpret_cast<decltype(&bconcat_aa_str)>(dlsym(library, "bconcat_aa_str"));
    ASSERT_NE(concat, nullptr);
    EXPECT_EQ(zqengine_column_set_string(own.get(), 0, "x", 1, 0), 0);
    EXPECT_DEATH(concat(nullptr, nullptr, own.get(), own.get(), &column, 1), "has no free bytes");
    dlclose(library);
#endif
}

} // namespace
