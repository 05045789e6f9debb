// SPDX-License-Identifier: Apache-2.0
// The library's state: three settings, written once when an engine loads it.

#include <cstdint>

#include "bop/bifun.h"
#include "bop/frame/instruction_sets.h"
#include "engine/session.h"

bifun_settings global_bifun_var;

std::int32_t bifun_dll_var_init(std::uint32_t compatible_mode, std::uint32_t charset_code, std::uint32_t case_sensitive) {
    global_bifun_var = {compatible_mode, charset_code, case_sensitive};
    bifun_instruction_sets::choose_again();
    if (zq_settings_changed != nullptr) {
        zq_settings_changed(&global_bifun_var);
    }
    return BIFUN_OK;
}
