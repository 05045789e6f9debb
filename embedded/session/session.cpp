// SPDX-License-Identifier: Apache-2.0
#include "engine/session.h"
#include "embedded/session/environment.h"

namespace zqengine {
namespace {

session_model& model_of(bifun_environment& session, session_format which) { return session.formats[static_cast<std::size_t>(which)]; }

// For reading, today's date is asked for in every batch.
const dfm_model* find_model(bifun_environment* session, session_format which) {
    if (session == nullptr || !model_of(*session, which).is_set) {
        return nullptr;
    }
    dfm_model& model = model_of(*session, which).model;
    set_today(inside(model));
    return &model;
}

} // namespace

format_problem set_session_format(bifun_environment& session, session_format which, std::string_view format) {
    session_model& changed = model_of(session, which);
    (void)dfm_create(&session, &changed.model);
    const format_problem problem = parse_format_model(reinterpret_cast<const std::uint8_t*>(format.data()),
                                                      static_cast<std::uint32_t>(format.size()), inside(changed.model));
    changed.is_set = !format.empty() && problem.fault == format_fault::none;
    return problem;
}

} // namespace zqengine

using zqengine::find_model;
using zqengine::session_format;

int32_t sess4_get_time_zone(const bifun_environment* environment) { return environment != nullptr ? environment->time_zone : 0; }

const dfm_model* sess4_get_date_format(bifun_environment* environment) { return find_model(environment, session_format::date); }

const dfm_model* sess4_get_time_format(bifun_environment* environment) { return find_model(environment, session_format::time); }

const dfm_model* sess4_get_datetime_format(bifun_environment* environment) { return find_model(environment, session_format::datetime); }

const dfm_model* sess4_get_time_tz_format(bifun_environment* environment) {
    return find_model(environment, session_format::time_with_zone);
}

const dfm_model* sess4_get_datetimetz_format(bifun_environment* environment) {
    return find_model(environment, session_format::datetime_with_zone);
}
