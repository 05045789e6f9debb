// SPDX-License-Identifier: Apache-2.0
// The catalogue's facts of arguments, found once: it has them by names, and binding a call asks for some thousand.
#ifndef BIFUN_ADAPTERS_BINDING_KNOWN_FACT_H
#define BIFUN_ADAPTERS_BINDING_KNOWN_FACT_H

#include <cstddef>

#include "bop/frame/catalogue.h"

namespace binding {

// bifun::fact_of, of an entry of bifun::entry_points.
const bifun::argument_fact& known_fact(const bifun::entry_point& entry, std::size_t position);

} // namespace binding

#endif
