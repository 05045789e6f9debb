// SPDX-License-Identifier: Apache-2.0
#include "host/sql/call_spelling.h"

#include <algorithm>

#include <fmt/format.h>

#include "bop/frame/catalogue.h"
#include "host/near_names.h"

namespace host {
namespace {

// How many arguments a form names: `$1` to the last.
std::size_t named_arguments(const bifun::parsed_call& form) {
    return static_cast<std::size_t>(std::ranges::count_if(form.arguments, [](std::string_view text) { return text.starts_with('$'); }));
}

std::size_t argument_index(char digit) { return static_cast<std::size_t>(digit - '1'); }

expression make_operand(std::string_view text, const std::vector<expression>& given, std::size_t offset) {
    if (text.starts_with('$')) {
        return given[argument_index(text[1])];
    }
    const bool is_literal = text.starts_with('\'');
    expression made{.kind = is_literal ? expression_kind::literal : expression_kind::keyword, .offset = offset};
    made.literal = is_literal ? literal_kind::string : literal_kind::null;
    made.text = is_literal ? text.substr(1, text.size() - 2) : text;
    return made;
}

} // namespace

bool is_own_syntax(std::string_view parser_name) {
    return std::ranges::any_of(bifun::spellings, [&](const bifun::spelling& known) {
        return std::ranges::find(known.parsed, parser_name, &bifun::parsed_call::name) != std::end(known.parsed);
    });
}

void spell_as_builtin(expression& call) {
    const bifun::parsed_call* form = nullptr;
    std::string_view builtin;
    for (const bifun::spelling& known : bifun::spellings) {
        for (const bifun::parsed_call& parsed : known.parsed) {
            if (parsed.name == call.name && named_arguments(parsed) <= call.operands.size()) {
                form = &parsed;
                builtin = known.builtin;
            }
        }
    }
    if (form == nullptr) {
        return;
    }
    std::vector<expression> operands;
    for (std::size_t i = 0; i < std::size(form->arguments) && !form->arguments[i].empty(); ++i) {
        operands.push_back(make_operand(form->arguments[i], call.operands, call.offset));
    }
    const auto rest = static_cast<std::ptrdiff_t>(named_arguments(*form));
    operands.insert(operands.end(), call.operands.begin() + rest, call.operands.end());
    call.name = builtin;
    call.operands = std::move(operands);
}

std::string meaning_with_names(const bifun::builtin& builtin) {
    std::string text(builtin.meaning);
    std::string_view separator = "; also ";
    for (std::string_view names = bifun::spelling_of(builtin.name).names; !names.empty();) {
        const std::string_view name = names.substr(0, names.find(' '));
        text.append(separator).append(name);
        separator = ", ";
        names.remove_prefix(std::min(name.size() + 1, names.size()));
    }
    return text;
}

} // namespace host
