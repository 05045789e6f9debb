#include <charconv>
#include <cmath>
#include <cstring>
#include <string_view>

#include "bop/frame/status.h"
#include "engine/number_format.h"

namespace {

// Long enough for any double: -1.2345678901234567E-308, -0.000012345678901234567.
constexpr std::size_t longest_text = 32;

std::string_view text_of(double value, char (&room)[longest_text]) {
    constexpr double least_plain = 1e-5;
    constexpr double least_beyond_plain = 1e15;
    if (std::isnan(value)) {
        return "NaN";
    }
    if (std::isinf(value)) {
        return value < 0 ? "-Infinity" : "Infinity";
    }
    const double magnitude = std::fabs(value);
    const bool plain = magnitude == 0 || (magnitude >= least_plain && magnitude < least_beyond_plain);
    const auto notation = plain ? std::chars_format::fixed : std::chars_format::scientific;
    char* const end = std::to_chars(room, room + longest_text, value, notation).ptr;
    if (!plain) {
        *static_cast<char*>(std::memchr(room, 'e', static_cast<std::size_t>(end - room))) = 'E';
    }
    return {room, static_cast<std::size_t>(end - room)};
}

} // namespace

int32_t zq_dou2char(double value, char* buffer, uint32_t buffer_size, uint32_t* length) {
    char room[longest_text];
    const std::string_view text = text_of(value, room);
    if (text.size() >= buffer_size) {
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    std::memcpy(buffer, text.data(), text.size());
    buffer[text.size()] = '\0';
    *length = static_cast<std::uint32_t>(text.size());
    return BIFUN_OK;
}
