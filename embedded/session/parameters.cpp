// SPDX-License-Identifier: Apache-2.0
#include "embedded/session/parameters.h"

#include <array>
#include <atomic>

#include "bop/frame/status.h"
#include "embedded/charset/database_charset.h"
#include "engine/datetime.h"
#include "engine/session.h"

namespace zqengine {
namespace {

struct parameter {
    std::int32_t number;
    bool (*allows)(std::int64_t value);
    std::atomic<std::int64_t> value;
};

bool is_zone(std::int64_t value) { return value == ZQTIME_NO_ZONE || (value >= -840 && value <= 840); }

bool is_switch(std::int64_t value) { return value == 0 || value == 1; }

constinit std::array<parameter, 2> parameters{{{INI_SHOW_FRACTION, is_switch, 0}, {INI_NOW_TIME_ZONE, is_zone, ZQTIME_NO_ZONE}}};

std::atomic<bool> dates_keep_time = false;

parameter* find_parameter(std::int32_t number) {
    for (parameter& candidate : parameters) {
        if (candidate.number == number) {
            return &candidate;
        }
    }
    return nullptr;
}

} // namespace

std::int32_t set_parameter(std::int32_t number, std::int64_t value) {
    parameter* const found = find_parameter(number);
    if (found == nullptr || !found->allows(value)) {
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    found->value.store(value, std::memory_order_relaxed);
    return BIFUN_OK;
}

void set_dates_keep_time(bool keep) { dates_keep_time.store(keep, std::memory_order_relaxed); }

} // namespace zqengine

void zq_settings_changed(const bifun_settings* settings) { zqengine::set_database_charset(settings->charset_code); }

int32_t ini_enable_oracle_date_fmt(void) { return zqengine::dates_keep_time.load(std::memory_order_relaxed) ? 1 : 0; }

int64_t ini_get_value(int32_t /*reserved*/, int32_t parameter) {
    const zqengine::parameter* const found = zqengine::find_parameter(parameter);
    return found != nullptr ? found->value.load(std::memory_order_relaxed) : 0;
}
