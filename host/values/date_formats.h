// SPDX-License-Identifier: Apache-2.0
// Date formats in queries and settings: what is wrong with one, and with a text that does not match.
#ifndef BIFUN_HOST_VALUES_DATE_FORMATS_H
#define BIFUN_HOST_VALUES_DATE_FORMATS_H

#include <optional>
#include <string>
#include <string_view>

#include "bop/frame/facts.h"
#include "embedded/session/environment.h"

namespace host {

// Texts are in the database character set and messages in UTF-8, as far as the format is.

// What keeps a text from being such a format, with the element and its place; nothing where it is one.
std::optional<std::string> find_format_fault(bifun::date_format use, std::string_view format);

std::string describe(const zqengine::format_problem& problem, std::string_view format);

// The first element that only dates have, with its place; nothing where there is none.
std::optional<std::string> find_date_element(bifun::date_format use, std::string_view format);

// A month where minutes are meant, as in HH:MM, with its place and what minutes are; nothing where there is none.
std::optional<std::string> find_month_behind_hour(bifun::date_format use, std::string_view format);

// "; it has the month ...", to stand behind what else is wrong with such a format; empty where nothing is found.
std::string month_behind_hour_too(bifun::date_format use, std::string_view format);

// Whether text that is read by the format model has a time of day.
bool reads_time(std::string_view format);

// Why dates without a zone cannot be read by a model, with the element and its place; empty where they can.
std::string explain_unreadable(const dfm_model& model);

// Why a text cannot be read by a model, with the place in the text and what was expected there; empty where it can. `shown` is the text as
// messages show it.
std::string explain_mismatch(const dfm_model& model, std::string_view text, std::string_view shown);

// The same for text that is read without a format.
std::string explain_default_mismatch();

} // namespace host

#endif
