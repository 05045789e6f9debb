// The library's only state: three settings, written once when an engine loads it.

#include <cstdint>

#include "bop/bifun.h"

bifun_settings global_bifun_var;

std::int32_t bifun_dll_var_init(std::uint32_t compatible_mode, std::uint32_t charset_code, std::uint32_t case_sensitive) {
    global_bifun_var = {compatible_mode, charset_code, case_sensitive};
    return BIFUN_OK;
}
