#include "host/settings.h"

#include <algorithm>
#include <iterator>

#include "host/near_names.h"
#include "host/program_error.h"

namespace host {
namespace {

struct setting {
    std::string_view name;
    std::vector<std::string> values;
    void (*assign)(session_settings& settings, const std::string& value);
};

const std::vector<setting>& all_settings() {
    static const std::vector<setting> settings = {
        {"compatible_mode",
         {"1", "2", "3"},
         [](session_settings& s, const std::string& value) { s.library.compatible_mode = static_cast<std::uint32_t>(value[0] - '0'); }},
        {"charset", charset_names(),
         [](session_settings& s, const std::string& value) {
             s.text_charset = find_charset(value);
             s.library.charset_code = s.text_charset->code;
         }},
        {"case_sensitive",
         {"0", "1"},
         [](session_settings& s, const std::string& value) { s.library.case_sensitive = static_cast<std::uint32_t>(value[0] - '0'); }},
    };
    return settings;
}

void assign(session_settings& settings, std::string_view name, std::string value) {
    const auto& known = all_settings();
    const auto found = std::ranges::find_if(known, [&](const setting& s) { return equal_ignoring_case(s.name, name); });
    if (found == known.end()) {
        std::vector<std::string_view> names;
        std::ranges::transform(known, std::back_inserter(names), &setting::name);
        fail("--set: there is no setting {}; there are {}", name, fmt::join(names, ", "));
    }
    const charset* const set = found->name == "charset" ? find_charset(value) : nullptr;
    value = set == nullptr ? value : std::string(set->name);
    if (std::ranges::find(found->values, value) == found->values.end()) {
        fail("--set: {} cannot be \"{}\"; it can be {}", found->name, value, fmt::join(found->values, ", "));
    }
    found->assign(settings, value);
}

} // namespace

session_settings read_settings(const std::vector<std::string>& assignments) {
    const charset* const standard = find_charset("utf-8");
    session_settings settings{
        .library = {.compatible_mode = 1, .charset_code = standard->code, .case_sensitive = 1},
        .text_charset = standard,
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

} // namespace host
