// The library's settings, as given with --set.
#ifndef BIFUN_HOST_SETTINGS_H
#define BIFUN_HOST_SETTINGS_H

#include <string>
#include <vector>

#include "bop/frame/contract.h"
#include "host/charset_text.h"

namespace host {

struct session_settings {
    bifun_settings library;
    const charset* text_charset;
};

// Reads "NAME=VALUE" texts over the defaults: compatible_mode=1, charset=utf-8, case_sensitive=1.
session_settings read_settings(const std::vector<std::string>& assignments);

} // namespace host

#endif
