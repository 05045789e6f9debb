#include "host/datetime_call.h"

#include <algorithm>

#include <fmt/format.h>

#include "engine/datetime.h"
#include "host/near_names.h"

namespace host {
namespace {

struct named_code {
    std::string_view name;
    std::int32_t code;
};

// The first name of each code is the one that messages show.
constexpr named_code date_fields[] = {
    {"YEAR", ZQTIME_YEAR},
    {"MONTH", ZQTIME_MONTH},
    {"DAY", ZQTIME_DAY},
    {"HOUR", ZQTIME_HOUR},
    {"MINUTE", ZQTIME_MINUTE},
    {"SECOND", ZQTIME_SECOND},
    {"MILLISECOND", ZQTIME_SUBSECOND},
    {"QUARTER", ZQTIME_QUARTER},
    {"DAYOFYEAR", ZQTIME_DAY_OF_YEAR},
    {"WEEK", ZQTIME_WEEK},
    {"WEEKDAY", ZQTIME_WEEKDAY},
    {"YYYY", ZQTIME_YEAR},
    {"YY", ZQTIME_YEAR},
    {"MM", ZQTIME_MONTH},
    {"M", ZQTIME_MONTH},
    {"DD", ZQTIME_DAY},
    {"D", ZQTIME_DAY},
    {"HH", ZQTIME_HOUR},
    {"MI", ZQTIME_MINUTE},
    {"N", ZQTIME_MINUTE},
    {"SS", ZQTIME_SECOND},
    {"S", ZQTIME_SECOND},
    {"MS", ZQTIME_SUBSECOND},
    {"QQ", ZQTIME_QUARTER},
    {"Q", ZQTIME_QUARTER},
    {"DY", ZQTIME_DAY_OF_YEAR},
    {"Y", ZQTIME_DAY_OF_YEAR},
    {"WK", ZQTIME_WEEK},
    {"WW", ZQTIME_WEEK},
    {"DW", ZQTIME_WEEKDAY},
};

constexpr named_code extract_fields[] = {
    {"YEAR", ZQTIME_YEAR},
    {"MONTH", ZQTIME_MONTH},
    {"DAY", ZQTIME_DAY},
    {"HOUR", ZQTIME_HOUR},
    {"MINUTE", ZQTIME_MINUTE},
    {"SECOND", ZQTIME_SECOND},
    {"MICROSECOND", ZQTIME_SUBSECOND},
    {"TIMEZONE_HOUR", ZQTIME_ZONE_HOUR},
    {"TIMEZONE_MINUTE", ZQTIME_ZONE_MINUTE},
};

constexpr named_code trim_modes[] = {{"BOTH", 0}, {"LEADING", 579}, {"TRAILING", 580}};

struct keyword_call {
    std::string_view builtin;
    std::string_view role;
    std::span<const named_code> words;
};

constexpr keyword_call keyword_calls[] = {
    {"EXTRACT", "field", extract_fields}, {"DATEPART", "field", date_fields},    {"DATEADD", "field", date_fields},
    {"DATEDIFF", "field", date_fields},   {"BIGDATEDIFF", "field", date_fields}, {"TRIM", "mode", trim_modes},
};

const keyword_call* find_keyword_call(std::string_view builtin) {
    const auto* const found = std::ranges::find(keyword_calls, builtin, &keyword_call::builtin);
    return found == std::end(keyword_calls) ? nullptr : found;
}

// ---- EXTRACT ---------------------------------------------------------------------------------------------------------

struct extract_members {
    sql_type type;
    const char* whole;   // of the fields that are whole numbers
    const char* seconds; // with their fraction; null where there are none
    std::vector<std::int32_t> fields;
};

const extract_members* find_extract_members(sql_type type) {
    static const std::vector<extract_members> all = {
        {sql_type::date, "bextract_date_va_date", nullptr, {ZQTIME_YEAR, ZQTIME_MONTH, ZQTIME_DAY}},
        {sql_type::time, "bextract_time_va_date", "bextract_time_ex_va_date", {ZQTIME_HOUR, ZQTIME_MINUTE}},
        {sql_type::timestamp,
         "bextract_datetime_va_date",
         "bextract_time_ex_va_date",
         {ZQTIME_YEAR, ZQTIME_MONTH, ZQTIME_DAY, ZQTIME_HOUR, ZQTIME_MINUTE}},
        {sql_type::time_with_zone,
         "bextract_time_tz_va_date",
         "bextract_time_ex_va_date",
         {ZQTIME_HOUR, ZQTIME_MINUTE, ZQTIME_ZONE_HOUR, ZQTIME_ZONE_MINUTE}},
        {sql_type::timestamp_with_zone,
         "bextract_datetime_tz_va_date",
         "bextract_time_ex_va_date",
         {ZQTIME_YEAR, ZQTIME_MONTH, ZQTIME_DAY, ZQTIME_HOUR, ZQTIME_MINUTE, ZQTIME_ZONE_HOUR, ZQTIME_ZONE_MINUTE}},
        {sql_type::interval_ym, "bextract_iv_ym_va_date", nullptr, {ZQTIME_YEAR, ZQTIME_MONTH}},
        {sql_type::interval_dt,
         "bextract_iv_dt_va_date",
         "bextract_iv_dt_ex_va_date",
         {ZQTIME_DAY, ZQTIME_HOUR, ZQTIME_MINUTE, ZQTIME_SUBSECOND}},
        {sql_type::varchar,
         "bextract_str_va_date",
         "bextract_str_ex_va_date",
         {ZQTIME_YEAR, ZQTIME_MONTH, ZQTIME_DAY, ZQTIME_HOUR, ZQTIME_MINUTE}},
    };
    // NULL has every field.
    const auto found = std::ranges::find(all, type == sql_type::null ? sql_type::timestamp_with_zone : type, &extract_members::type);
    return found == all.end() ? nullptr : &*found;
}

// ---- dates and times -------------------------------------------------------------------------------------------------

constexpr std::string_view functions_of_dates[] = {
    "YEAR",           "MONTH",         "DAY",       "DAYOFMONTH", "DAYOFYEAR", "QUARTER",  "DAYOFWEEK",    "DAYNAME",
    "MONTHNAME",      "ADD_DAYS",      "ADD_WEEKS", "ADD_MONTHS", "DATE_ADD",  "DATE_SUB", "DAYS_BETWEEN", "WEEKS_BETWEEN",
    "MONTHS_BETWEEN", "YEARS_BETWEEN", "LAST_DAY",  "NEXT_DAY",   "TO_DAYS",
};

constexpr bool is_time_field(std::int32_t field) { return field >= ZQTIME_HOUR && field <= ZQTIME_SUBSECOND; }

} // namespace

std::optional<std::int32_t> keyword_code(std::string_view builtin, std::string_view word) {
    const keyword_call* const call = find_keyword_call(builtin);
    if (call == nullptr) {
        return std::nullopt;
    }
    const auto found = std::ranges::find_if(call->words, [&](const named_code& known) { return equal_ignoring_case(known.name, word); });
    return found == call->words.end() ? std::nullopt : std::optional(found->code);
}

std::vector<std::string> keyword_names(std::string_view builtin) {
    std::vector<std::string> names;
    std::vector<std::int32_t> seen;
    for (const named_code& known : find_keyword_call(builtin)->words) {
        if (std::ranges::find(seen, known.code) == seen.end()) {
            names.emplace_back(known.name);
            seen.push_back(known.code);
        }
    }
    return names;
}

std::string_view keyword_role(std::string_view builtin) {
    const keyword_call* const call = find_keyword_call(builtin);
    return call == nullptr ? std::string_view() : call->role;
}

extract_member find_extract_member(std::int32_t field, sql_type type) {
    const extract_members* const members = find_extract_members(type);
    if (members == nullptr) {
        return {.symbol = nullptr, .field_names = {}};
    }
    std::string names;
    for (const named_code& known : extract_fields) {
        const bool has = std::ranges::find(members->fields, known.code) != members->fields.end() ||
                         (known.code == ZQTIME_SECOND && members->seconds != nullptr);
        names += has ? fmt::format("{}{}", names.empty() ? "" : ", ", known.name) : "";
    }
    const bool is_whole = std::ranges::find(members->fields, field) != members->fields.end();
    return {.symbol = is_whole ? members->whole : field == ZQTIME_SECOND ? members->seconds : nullptr, .field_names = std::move(names)};
}

std::optional<datetime_refusal> find_datetime_refusal(std::string_view builtin, std::int32_t field, std::span<const sql_type> datetimes) {
    const bool of_dates = std::ranges::find(functions_of_dates, builtin) != std::end(functions_of_dates) ||
                          (field != 0 && builtin != "EXTRACT" && !is_time_field(field));
    for (std::size_t i = 0; i < datetimes.size(); ++i) {
        if (of_dates && !has_date(datetimes[i])) {
            return datetime_refusal{i, fmt::format("{} needs a date here, and this is of type {}", builtin, sql_type_name(datetimes[i]))};
        }
        if (has_date(datetimes[i]) != has_date(datetimes[0])) {
            return datetime_refusal{
                i, fmt::format("{} cannot have {} and {}", builtin, sql_type_name(datetimes[0]), sql_type_name(datetimes[i]))};
        }
    }
    return std::nullopt;
}

sql_type datetime_result(std::string_view builtin, std::int32_t field, std::span<const sql_type> datetimes, sql_type amount) {
    if (datetimes.empty()) {
        return sql_type::timestamp;
    }
    sql_type common = datetimes.front();
    for (const sql_type type : datetimes) {
        common = std::max(common, type); // dates before timestamps, both before those with a zone
    }
    const bool gets_time = (builtin == "DATEADD" && is_time_field(field)) ||
                           (builtin == "ADD_DAYS" && (amount == sql_type::decimal || amount == sql_type::double_precision));
    return common == sql_type::date && gets_time ? sql_type::timestamp : common;
}

} // namespace host
