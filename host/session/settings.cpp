// SPDX-License-Identifier: Apache-2.0
#include "host/session/settings.h"

#include <algorithm>
#include <iterator>

#include "embedded/datetime/text.h"
#include "embedded/session/parameters.h"
#include "engine/datetime.h"
#include "engine/session.h"
#include "host/near_names.h"
#include "host/program_error.h"
#include "host/values/date_formats.h"
#include "host/values/value_text.h"

namespace host {
namespace {

struct setting {
    std::string_view name;
    std::string values;                                                   // as an error lists them
    bool (*assign)(session_settings& settings, const std::string& value); // false for a value that it cannot have
};

// A number in text of one digit from `least` to `most`.
bool read_digit(const std::string& text, char least, char most, std::uint32_t& number) {
    number = text.empty() ? 0 : static_cast<std::uint32_t>(text[0] - '0');
    return text.size() == 1 && text[0] >= least && text[0] <= most;
}

template <zqengine::session_format which> bool assign_format(session_settings& settings, const std::string& value) {
    settings.date_formats[static_cast<std::size_t>(which)] = value;
    return true; // begin_session tells, when the character set is known
}

constexpr std::string_view format_names[] = {"date_format", "time_format", "datetime_format", "time_tz_format", "datetime_tz_format"};

const std::vector<setting>& all_settings() {
    static const std::vector<setting> settings = {
        {"compatible_mode", "1, 2, 3",
         [](session_settings& s, const std::string& value) { return read_digit(value, '1', '3', s.library.compatible_mode); }},
        {"charset", fmt::format("{}", fmt::join(charset_names(), ", ")),
         [](session_settings& s, const std::string& value) {
             const charset* const set = find_charset(value);
             s.text_charset = set == nullptr ? s.text_charset : set;
             s.library.charset_code = s.text_charset->code;
             return set != nullptr;
         }},
        {"case_sensitive", "0, 1",
         [](session_settings& s, const std::string& value) { return read_digit(value, '0', '1', s.library.case_sensitive); }},
        {"time_zone", "Z and what lies between -14:00 and +14:00",
         [](session_settings& s, const std::string& value) {
             zqtime midnight;
             const bool read = read_any_datetime("00:00" + value, midnight) == sql_type::time_with_zone;
             s.given_zone = read ? zqtime_get_tz(&midnight) : 0;
             return read;
         }},
        {"date_language", "ENGLISH, CHINESE",
         [](session_settings& s, const std::string& value) {
             const std::string nls = "NLS_DATE_LANGUAGE=" + value;
             return to_char_nls_parse(reinterpret_cast<const std::uint8_t*>(nls.data()), static_cast<std::uint32_t>(nls.size()),
                                      &s.language) == 0;
         }},
        {"oracle_date", "0, 1",
         [](session_settings& s, const std::string& value) {
             std::uint32_t keep = 0;
             const bool read = read_digit(value, '0', '1', keep);
             s.dates_keep_time = keep != 0;
             return read;
         }},
        {format_names[0], "", assign_format<zqengine::session_format::date>},
        {format_names[1], "", assign_format<zqengine::session_format::time>},
        {format_names[2], "", assign_format<zqengine::session_format::datetime>},
        {format_names[3], "", assign_format<zqengine::session_format::time_with_zone>},
        {format_names[4], "", assign_format<zqengine::session_format::datetime_with_zone>},
    };
    return settings;
}

constexpr std::string_view parameter_prefix = "param.";

void assign_parameter(session_settings& settings, std::string_view name, const std::string& value) {
    std::int32_t number = 0;
    std::int64_t assigned = 0;
    if (!read_number(name.substr(parameter_prefix.size()), number) || !read_number(value, assigned)) {
        fail("--set: \"{}={}\" is not of the form param.NUMBER=NUMBER", name, value);
    }
    settings.parameters.emplace_back(number, assigned);
}

void assign(session_settings& settings, std::string_view name, const std::string& value) {
    if (equal_ignoring_case(name.substr(0, parameter_prefix.size()), parameter_prefix)) {
        return assign_parameter(settings, name, value);
    }
    const auto& known = all_settings();
    const auto found = std::ranges::find_if(known, [&](const setting& s) { return equal_ignoring_case(s.name, name); });
    if (found == known.end()) {
        fail("--set: there is no setting {}; there are {} and param.NUMBER", name, fmt::join(setting_names(), ", "));
    }
    if (!found->assign(settings, value)) {
        fail("--set: {} cannot be \"{}\"; it can be {}", found->name, value, found->values);
    }
}

std::string in_database_charset(const session_settings& settings, const std::string& text) {
    const std::optional<std::string> converted = from_utf8(*settings.text_charset, text);
    if (!converted) {
        fail("--set: \"{}\" is not text of the character set {}", text, settings.text_charset->name);
    }
    return *converted;
}

} // namespace

std::vector<std::string_view> setting_names() {
    std::vector<std::string_view> names;
    std::ranges::transform(all_settings(), std::back_inserter(names), &setting::name);
    return names;
}

session_settings read_settings(const std::vector<std::string>& assignments) {
    const charset* const standard = find_charset("utf-8");
    session_settings settings{
        .library = {.compatible_mode = 1, .charset_code = standard->code, .case_sensitive = 1},
        .text_charset = standard,
        .given_zone = std::nullopt,
        .parameters = {},
        .language = DFM_ENGLISH,
        .date_formats = {},
        .dates_keep_time = false,
    };
    for (const std::string& assignment : assignments) {
        const std::size_t sign = assignment.find('=');
        if (sign == std::string::npos) {
            fail("--set: \"{}\" is not of the form NAME=VALUE", assignment);
        }
        assign(settings, std::string_view(assignment).substr(0, sign), assignment.substr(sign + 1));
    }
    return settings;
}

void begin_session(const session_settings& settings) {
    std::vector<std::pair<std::int32_t, std::int64_t>> parameters;
    if (settings.given_zone) {
        parameters.emplace_back(INI_NOW_TIME_ZONE, *settings.given_zone);
    }
    parameters.insert(parameters.end(), settings.parameters.begin(), settings.parameters.end());
    for (const auto& [number, value] : parameters) {
        if (zqengine::set_parameter(number, value) != 0) {
            fail("--set: there is no parameter {}, or it cannot be {}", number, value);
        }
    }
    zqengine::set_dates_keep_time(settings.dates_keep_time);
    for (std::size_t i = 0; i < settings.date_formats.size(); ++i) {
        const std::string text = in_database_charset(settings, settings.date_formats[i]);
        const auto fault = text.empty() ? std::nullopt : find_format_fault(bifun::date_format::model, text);
        if (fault) {
            fail("--set: {}: {}{}", format_names[i], *fault, month_behind_hour_too(bifun::date_format::model, text));
        }
        const auto which = static_cast<zqengine::session_format>(i);
        const bool is_of_times = which == zqengine::session_format::time || which == zqengine::session_format::time_with_zone;
        const auto of_date = is_of_times ? find_date_element(bifun::date_format::model, text) : std::nullopt;
        if (of_date) {
            fail("--set: {}: a time has no date, and the date format has {}{}", format_names[i], *of_date,
                 month_behind_hour_too(bifun::date_format::model, text));
        }
    }
}

std::vector<std::string> remarks_on_formats(const session_settings& settings) {
    std::vector<std::string> remarks;
    for (std::size_t i = 0; i < settings.date_formats.size(); ++i) {
        const std::string& text = settings.date_formats[i];
        if (const std::optional<std::string> month = find_month_behind_hour(bifun::date_format::model, text)) {
            remarks.push_back(fmt::format("--set {}: the format '{}' {}", format_names[i], text, *month));
        }
    }
    return remarks;
}

void set_up_environment(const session_settings& settings, bifun_environment& environment) {
    environment.time_zone = settings.time_zone();
    environment.language = settings.language;
    for (std::size_t i = 0; i < settings.date_formats.size(); ++i) {
        (void)zqengine::set_session_format(environment, static_cast<zqengine::session_format>(i),
                                           in_database_charset(settings, settings.date_formats[i]));
    }
}

} // namespace host
