#include "engine/session.h"
#include "embedded/session/environment.h"

int32_t sess4_get_time_zone(const bifun_environment* environment) { return environment != nullptr ? environment->time_zone : 0; }
