// Any bytes as texts, sets, patterns and numbers of any string function, in any character set and under any settings. Two rows per batch.
// The arguments are as before afterwards, the status is one that string functions have, results lie where the arguments let them, and they
// are the same whatever the engine says of itself.
#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "bop/bifun.h"
#include "bop/frame/catalogue.h"
#include "embedded/charset/database_charset.h"
#include "embedded/columns/column_storage.h"
#include "embedded/session/environment.h"
#include "engine/charset.h"
#include "engine/columns.h"
#include "engine/memory.h"

namespace {

using bifun::argument_kind;
using bifun::entry_point;
using bifun::value_type;

constexpr std::uint32_t row_count = 2;

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

struct reader {
    const std::uint8_t* at;
    const std::uint8_t* end;

    std::uint8_t byte() { return at < end ? *at++ : 0; }
    // Mostly small.
    std::int32_t number() {
        const std::uint8_t first = byte();
        if (first < 0xF0) {
            return static_cast<std::int8_t>(first < 0x78 ? first : first + 0x10);
        }
        std::uint32_t value = 0;
        for (int i = 0; i < 4; ++i) {
            value = value << 8 | byte();
        }
        return static_cast<std::int32_t>(value);
    }
};

// In a block of exactly its size, so that reading past it is caught.
struct text {
    std::unique_ptr<std::uint8_t[]> bytes;
    bifun_string value;
};

// Texts of these say more about characters than bytes at random, which are hardly ever some.
using alphabet = std::array<std::string_view, 8>;
constexpr alphabet alphabets[] = {{"a", "A", "0", " ", "\t", "\201a", "\2010\2010", "\xA6\xC1"},
                                  {"a", "A", "b", " ", "\t", "\xC3\xA9", "\xE4\xB8\x80", "\xF0\x9F\x98\x80"},
                                  {"a", "A", "b", " ", "\t", "\xB0\xA1", "\xA5\xE1", "\xA1\xB0"}};

text take_text(reader& input, const alphabet* characters) {
    const std::uint32_t blanks = input.byte() % 8;
    const std::uint32_t taken_bytes = std::min<std::uint32_t>(input.byte(), static_cast<std::uint32_t>(input.end - input.at));
    std::string bytes(input.at, input.at + taken_bytes);
    input.at += taken_bytes;
    if (characters != nullptr) {
        std::string written;
        for (const char byte : bytes) {
            written += (*characters)[static_cast<unsigned char>(byte) % characters->size()];
        }
        bytes = written;
    }
    const auto length = static_cast<std::uint32_t>(bytes.size());
    text taken{std::make_unique<std::uint8_t[]>(length), {}};
    std::ranges::copy(bytes, taken.bytes.get());
    taken.value = {length, blanks, length == 0 ? nullptr : taken.bytes.get()};
    return taken;
}

struct argument {
    std::vector<text> texts; // one, or as many as rows; empty for numbers
    std::vector<std::int32_t> numbers;
    std::vector<std::uint8_t> flags;
    bool is_constant;

    std::vector<bifun_string> values;
    bifun_column_data data;
    bifun_column column;
    bifun_string_constant text_constant;
    bifun_int_constant number_constant;
};

void take_argument(reader& input, const bifun::argument& kind, const alphabet* characters, argument& taken) {
    taken.is_constant = kind.kind == argument_kind::constant;
    const std::uint32_t count = taken.is_constant ? 1 : row_count;
    for (std::uint32_t row = 0; row < count; ++row) {
        taken.flags.push_back(input.byte() == 0xFF ? 0 : 1);
        if (kind.type == value_type::INT) {
            taken.numbers.push_back(input.number());
        } else {
            taken.texts.push_back(take_text(input, characters));
            taken.values.push_back(taken.texts.back().value);
        }
    }
    if (!taken.is_constant) {
        taken.data = {};
        taken.data.null_flags = taken.flags.data();
        taken.data.values = kind.type == value_type::INT ? static_cast<void*>(taken.numbers.data()) : taken.values.data();
        taken.column = {std::ranges::count(taken.flags, 0) == 0 ? 1U : 0U, nullptr, &taken.data};
    } else if (kind.type == value_type::INT) {
        taken.number_constant = {taken.flags[0], taken.numbers[0]};
    } else {
        const bifun_string& value = taken.values[0];
        taken.text_constant = {taken.flags[0], value.length, value.trailing_blanks, {}, nullptr};
        if (value.length > BIFUN_INLINE_LENGTH) {
            taken.text_constant.data = value.data;
        } else if (value.length != 0) {
            std::memcpy(taken.text_constant.inline_bytes, value.data, value.length);
        }
    }
}

// Every byte that a call may read.
std::string image_of(const argument& argument) {
    std::string image(argument.flags.begin(), argument.flags.end());
    const auto append = [&](const void* bytes, std::size_t size) { image.append(static_cast<const char*>(bytes), size); };
    append(argument.numbers.data(), argument.numbers.size() * sizeof(std::int32_t));
    append(argument.values.data(), argument.values.size() * sizeof(bifun_string));
    append(argument.text_constant.inline_bytes,
           argument.is_constant && !argument.values.empty() ? sizeof argument.text_constant.inline_bytes : 0);
    for (const text& text : argument.texts) {
        append(text.bytes.get(), text.value.length);
    }
    return image;
}

std::uint64_t full_length(const argument& argument, std::uint32_t row) {
    const bifun_string& value = argument.values[argument.is_constant ? 0 : row];
    return std::uint64_t{value.length} + value.trailing_blanks;
}

bool is_one_of(std::string_view builtin, std::initializer_list<std::string_view> builtins) {
    return std::ranges::count(builtins, builtin) != 0;
}

// The row, after it has been checked and read.
std::string print_row(const entry_point& entry, const std::vector<argument>& arguments, const zqengine::column_storage& result,
                      std::uint32_t row) {
    const bool shortens = is_one_of(entry.builtin, {"TRIM", "LTRIM", "RTRIM", "SUBSTR", "SUBSTRB", "LEFT", "RIGHT", "SUBSTRING_INDEX"});
    const bool searches = is_one_of(entry.builtin, {"INSTR", "INSTRB", "POSITION", "LOCATE"});
    const std::size_t source =
        is_one_of(entry.builtin, {"POSITION", "LOCATE"}) || (entry.builtin == "TRIM" && arguments.size() > 1) ? 1 : 0;
    if (entry.result == value_type::INT) {
        const std::int32_t position = zqengine::values_of<std::int32_t>(result)[row];
        require(!searches || (position >= 0 && static_cast<std::uint64_t>(position) <= full_length(arguments[source], row)));
        return ' ' + std::to_string(position);
    }
    const bifun_string& value = zqengine::values_of<bifun_string>(result)[row];
    require(!shortens || std::uint64_t{value.length} + value.trailing_blanks <= full_length(arguments[source], row));
    return " '" + std::string(reinterpret_cast<const char*>(value.data), value.length) + "'+" + std::to_string(value.trailing_blanks);
}

std::vector<const entry_point*> string_functions() {
    std::vector<const entry_point*> found;
    for (const entry_point& entry : bifun::entry_points) {
        if (std::string_view(entry.symbol).ends_with("_str") && std::ranges::all_of(entry.arguments(), [](const auto& argument) {
                return argument.type == value_type::VARCHAR || argument.type == value_type::INT;
            })) {
            found.push_back(&entry);
        }
    }
    return found;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::vector<const entry_point*> functions = string_functions();
    static bifun_environment session;
    reader input{data, data + size};
    const entry_point& entry = *functions[input.byte() % functions.size()];
    const std::uint8_t setting = input.byte();
    const std::uint32_t charset = setting % 3;
    (void)bifun_dll_var_init(setting >> 6, charset, setting >> 5 & 1);
    zqengine::set_database_charset(charset);

    std::vector<argument> arguments(entry.argument_count);
    std::vector<const void*> pointers;
    std::vector<std::string> images;
    for (std::size_t i = 0; i < entry.argument_count; ++i) {
        argument& argument = arguments[i];
        take_argument(input, entry.argument_list[i], (setting & 0x10) != 0 ? &alphabets[charset] : nullptr, argument);
        pointers.push_back(!argument.is_constant       ? static_cast<const void*>(&argument.column)
                           : !argument.numbers.empty() ? static_cast<const void*>(&argument.number_constant)
                                                       : &argument.text_constant);
        images.push_back(image_of(argument));
    }
    std::string outcomes[2];
    for (const std::int32_t said : {0, 1}) {
        zq_ascii_is_single_byte = bdta3_free_bytes_are_open = bdta3_setters_are_plain_stores = said;
        const zqengine::column_pointer result(zqengine::create_column(entry.result, row_count));
        bifun_memory_object* const memory = rt_memobj_create_ex(&session, 0, 256, "string_functions_fuzzer", __LINE__);
        const std::int32_t status =
            entry.invoke(dlsym(RTLD_DEFAULT, entry.symbol), &session, memory, pointers.data(), &result->column, row_count);
        rt_memobj_destroy(&session, memory);

        for (std::size_t i = 0; i < arguments.size(); ++i) {
            require(images[i] == image_of(arguments[i]));
        }
        require(status == BIFUN_OK || status == BIFUN_TRIM_SET_NOT_ONE_CHARACTER || status == BIFUN_INVALID_CHARACTER_STRING ||
                status == BIFUN_NEGATIVE_SUBSTRING_LENGTH || status == BIFUN_ARGUMENT_OUT_OF_DOMAIN);
        require(status == BIFUN_OK || result->column.no_nulls == 0);
        outcomes[said] = std::to_string(status);
        for (std::uint32_t row = 0; status == BIFUN_OK && row < row_count; ++row) {
            require(result->data.null_flags[row] <= 1);
            outcomes[said] += result->data.null_flags[row] == 1 ? print_row(entry, arguments, *result, row) : " NULL";
        }
    }
    // Where the engine reverses texts that the library can do without reversing, only the engine can fail.
    require(outcomes[0] == outcomes[1] || outcomes[0] == std::to_string(BIFUN_INVALID_CHARACTER_STRING));
    return 0;
}
