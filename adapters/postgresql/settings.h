// SPDX-License-Identifier: Apache-2.0
// The settings bifun.* of PostgreSQL, and what the library and the session of the engine get of them.
#ifndef BIFUN_ADAPTERS_POSTGRESQL_SETTINGS_H
#define BIFUN_ADAPTERS_POSTGRESQL_SETTINGS_H

#include "adapters/postgresql/call_site.h"

namespace postgresql_extension {

void define_settings();

// Hands on what has changed since the last call. Ends with an error of PostgreSQL where the library cannot be loaded, or does not have the
// database's encoding.
extern bool settings_have_changed;
void hand_on_settings();
inline void apply_settings() {
    if (settings_have_changed) {
        hand_on_settings();
    }
}

} // namespace postgresql_extension

#endif
