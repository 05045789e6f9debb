// SPDX-License-Identifier: Apache-2.0
#include "adapters/postgresql/settings.h"

#include <array>

#include "adapters/postgresql/errors.h"
#include "embedded/zqengine.h"
#include "engine/charset.h"
#include "engine/date_format.h"

#include "adapters/postgresql/api.h"

namespace postgresql_extension {
namespace {

int compatible_mode = 1;
bool case_sensitive = true;
int date_language = DFM_ENGLISH;
std::array<char*, format_count> formats; // by zqengine_format

bool library_has_changed = true;
bool session_has_changed = true;

struct format_setting {
    const char* name;
    const char* description;
    zqengine_format format;
};
constexpr format_setting format_settings[] = {
    {"bifun.date_format", "The format by which bifun functions read and write dates where a call gives none.", ZQENGINE_DATE_FORMAT},
    {"bifun.time_format", "The same for times.", ZQENGINE_TIME_FORMAT},
    {"bifun.timestamp_format", "The same for timestamps.", ZQENGINE_DATETIME_FORMAT},
    {"bifun.time_with_zone_format", "The same for times with a time zone.", ZQENGINE_TIME_WITH_ZONE_FORMAT},
    {"bifun.timestamp_with_zone_format", "The same for timestamps with a time zone.", ZQENGINE_DATETIME_WITH_ZONE_FORMAT},
};

const config_enum_entry languages[] = {{"english", DFM_ENGLISH, false}, {"chinese", DFM_CHINESE, false}, {nullptr, 0, false}};

bool check_format(char** value, void** /*extra*/, GucSource /*source*/) {
    if (*value == nullptr || **value == '\0') {
        return true;
    }
    bifun_environment* const tried = zqengine_environment_create();
    if (tried == nullptr) {
        return false;
    }
    zqengine_format_fault fault{};
    const std::int32_t status = zqengine_environment_set_format(tried, ZQENGINE_DATETIME_WITH_ZONE_FORMAT, *value,
                                                                static_cast<std::uint32_t>(strlen(*value)), &fault);
    zqengine_environment_destroy(tried);
    if (status != 0) {
        GUC_check_errdetail("%s, at byte %u.", fault.meaning, fault.offset + 1);
    }
    return status == 0;
}

void session_changes(const char* /*value*/, void* /*extra*/) { session_has_changed = settings_have_changed = true; }
void language_changes(int /*value*/, void* /*extra*/) { session_has_changed = settings_have_changed = true; }
void mode_changes(int /*value*/, void* /*extra*/) { library_has_changed = settings_have_changed = true; }
void case_changes(bool /*value*/, void* /*extra*/) { library_has_changed = settings_have_changed = true; }

std::uint32_t charset_of_database() {
    switch (GetDatabaseEncoding()) {
    case PG_UTF8:
        return ZQ_CHARSET_UTF8;
    case PG_EUC_KR:
        return ZQ_CHARSET_EUC_KR;
    default:
        ereport(ERROR, (errcode(ERRCODE_FEATURE_NOT_SUPPORTED),
                        errmsg("bifun does not have the database's encoding, %s", GetDatabaseEncodingName()),
                        errhint("It works in databases whose encoding is UTF8 or EUC_KR.")));
        pg_unreachable();
    }
}

void check(const failure_text& failure) {
    if (failure.message != nullptr) {
        report(failure);
    }
}

} // namespace

bool settings_have_changed = true;

void define_settings() {
    // Results of these two are not only of a session: indexes and constraints keep them. So whoever answers for the database sets them, at
    // best for all of it: ALTER DATABASE ... SET, or the configuration file.
    DefineCustomIntVariable("bifun.compatible_mode", "The compatible mode of bifun functions.",
                            "Indexes over these functions have to be built anew when it changes.", &compatible_mode, 1, 1, 3, PGC_SUSET, 0,
                            nullptr, mode_changes, nullptr);
    DefineCustomBoolVariable("bifun.case_sensitive", "Whether instr, instrb, position and replace tell upper from lower case.",
                             "Indexes over these functions have to be built anew when it changes.", &case_sensitive, true, PGC_SUSET, 0,
                             nullptr, case_changes, nullptr);
    DefineCustomEnumVariable("bifun.date_language", "The language of names in dates that bifun functions read and write.", nullptr,
                             &date_language, DFM_ENGLISH, languages, PGC_USERSET, 0, nullptr, language_changes, nullptr);
    for (const format_setting& known : format_settings) {
        DefineCustomStringVariable(known.name, known.description, nullptr, &formats[known.format], "", PGC_USERSET, 0, check_format,
                                   session_changes, nullptr);
    }
    MarkGUCPrefixReserved("bifun");
}

void hand_on_settings() {
    if (library_has_changed) {
        check(load_library({.compatible_mode = static_cast<std::uint32_t>(compatible_mode),
                            .charset_code = charset_of_database(),
                            .case_sensitive = case_sensitive ? 1U : 0U}));
        library_has_changed = false;
    }
    if (session_has_changed) {
        check(set_session(date_language, formats));
        session_has_changed = false;
    }
    settings_have_changed = false;
}

} // namespace postgresql_extension
