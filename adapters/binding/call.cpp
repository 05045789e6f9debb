// SPDX-License-Identifier: Apache-2.0
#include "adapters/binding/call.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <new>
#include <string_view>
#include <unordered_map>

#include <fmt/format.h>

#include "adapters/binding/datetime_call.h"
#include "adapters/binding/invocation.h"
#include "adapters/binding/keyword_use.h"
#include "adapters/binding/known_fact.h"
#include "adapters/binding/library.h"
#include "adapters/binding/member_choice.h"
#include "adapters/binding/upper_case.h"
#include "engine/charset.h"
#include "engine/datetime.h"
#include "engine/memory.h"
#include "engine/statements.h"

namespace binding {
namespace {

using bifun::value_type;
using failure = std::optional<call_failure>;

column_pointer make_column(value_type type, std::uint32_t capacity) {
    column_pointer made(zqengine_column_create(static_cast<std::int32_t>(type), capacity));
    return made != nullptr ? std::move(made) : throw std::bad_alloc();
}

// ---- rows that are evaluated together ---------------------------------------------------------------------------------

// Which kind of interval a value can be. A member takes one kind, and what is 0 or NULL may be either.
enum class interval_kind : std::uint8_t { any, days, months, both };

interval_kind kind_of_interval(const call_argument& argument, std::uint32_t row) {
    const interval& value = argument.intervals[row];
    if (argument.data.null_flags[row] == 0) {
        return interval_kind::any;
    }
    const bool has_days = value.days != 0 || value.microseconds != 0;
    return value.months == 0 ? (has_days ? interval_kind::days : interval_kind::any)
           : has_days        ? interval_kind::both
                             : interval_kind::months;
}

std::uint32_t row_of(const call_argument& argument, std::uint32_t row) { return argument.repeats ? 0 : row; }

// The type of an argument; where there are more than the signature has, they are of the type of its second.
sql_type type_of(const call& made, std::size_t position) { return made.form->type_list[std::min(position, made.form->argument_count - 1)]; }

// What rows have in common that are evaluated together, as bytes.
void append_key(const call& made, std::size_t position, std::uint32_t row, std::string& key) {
    const call_argument& argument = made.arguments[position];
    const sql_type type = type_of(made, position);
    const char flag = static_cast<char>(argument.data.null_flags[row]);
    key += flag;
    if (type == sql_type::interval_dt) {
        key += static_cast<char>(kind_of_interval(argument, row));
    } else if (flag != 0 && bifun::is_string(value_type_of(type))) {
        const bifun_string& text = static_cast<const bifun_string*>(argument.data.values)[row];
        key.append(reinterpret_cast<const char*>(&text), offsetof(bifun_string, data));
        key.append(reinterpret_cast<const char*>(text.data), text.length);
    } else if (flag != 0) {
        const std::size_t width = bifun::value_width(value_type_of(type));
        key.append(static_cast<const char*>(argument.data.values) + row * width, width);
    }
}

using row_list = std::vector<std::uint16_t>;

// Whether rows may differ in the argument and cannot be evaluated together then.
bool is_key(const call& made, std::size_t position) {
    const bool tells = contains(made.form->constants, position) || type_of(made, position) == sql_type::interval_dt;
    return tells && !made.arguments[position].repeats;
}

bool needs_groups(const call& made, std::uint32_t row_count) {
    bool needs = false;
    for (std::size_t i = 0; i < made.arguments.size() && row_count > 1; ++i) {
        needs |= is_key(made, i);
    }
    return needs;
}

// The rows by what is a constant in every call. One empty list stands for all rows.
std::vector<row_list> group_rows(const call& made, std::uint32_t row_count) {
    std::vector<std::size_t> keys;
    for (std::size_t i = 0; i < made.arguments.size(); ++i) {
        if (is_key(made, i)) {
            keys.push_back(i);
        }
    }
    std::unordered_map<std::string, std::size_t> known;
    std::vector<row_list> groups;
    std::string key;
    for (std::uint32_t row = 0; row < row_count; ++row) {
        key.clear();
        for (const std::size_t position : keys) {
            append_key(made, position, row, key);
        }
        const auto [at, is_new] = known.try_emplace(key, groups.size());
        if (is_new) {
            groups.emplace_back();
        }
        groups[at->second].push_back(static_cast<std::uint16_t>(row));
    }
    if (groups.size() == 1) {
        groups[0].clear();
    }
    return groups;
}

// ---- what the values of a group tell ------------------------------------------------------------------------------------

std::string_view text_of(const call_argument& argument, std::uint32_t row) {
    const bifun_string& text = static_cast<const bifun_string*>(argument.data.values)[row];
    return {reinterpret_cast<const char*>(text.data), text.length};
}

failure read_keyword(call& made, std::string_view text, std::optional<std::int32_t>& code) {
    if (made.keyword_code && made.keyword == text) {
        code = made.keyword_code;
        return std::nullopt;
    }
    const bifun::keyword_list& keywords = made.form->keywords;
    if (const bifun::keyword* const known = find_keyword(keywords, upper_case(text))) {
        made.keyword = text;
        code = made.keyword_code = known->code;
        return std::nullopt;
    }
    std::vector<std::string_view> names;
    for (const bifun::keyword& word : keywords.words) {
        names.push_back(word.names.substr(0, word.names.find(' ')));
    }
    return call_failure{
        0, fmt::format("{} has no {} '{}'; there are {}", made.form->builtin, role_name(keywords.role), text, fmt::join(names, ", ")), ""};
}

bound_member& bind_member(call& made, const call_values& values, void* (*find)(const char* symbol)) {
    const auto known = std::ranges::find_if(made.members, [&](const bound_member& member) {
        return member.values.constants == values.constants && member.values.keyword == values.keyword &&
               member.values.intervals_of_months == values.intervals_of_months;
    });
    if (known != made.members.end()) {
        return *known;
    }
    const bifun::entry_point* entry = find_member(*made.form, values);
    entry = entry != nullptr && result_type(*made.form, values, *entry) ? entry : nullptr;
    return made.members.emplace_back(bound_member{values, entry, entry == nullptr ? nullptr : find(entry->symbol), {}});
}

// The values of a group, of which `row` is one, and the member for them: null where none takes them. `intervals` are those of no kind.
const bifun::entry_point* find_member_for(call& made, call_values& values, argument_set intervals, void* (*find)(const char* symbol)) {
    for (argument_set months = 0; months <= intervals; ++months) {
        if ((months & ~intervals) == 0) {
            call_values tried = values;
            tried.intervals_of_months |= months;
            if (const bifun::entry_point* const entry = bind_member(made, tried, find).entry) {
                values = tried;
                return entry;
            }
        }
    }
    return nullptr;
}

std::string quoted_value(const call& made, std::size_t position, std::uint32_t row) {
    constexpr std::size_t longest = 60;
    const call_argument& argument = made.arguments[position];
    const std::uint32_t shown = row_of(argument, row);
    if (argument.data.null_flags[shown] == 0) {
        return "NULL";
    }
    const sql_type type = type_of(made, position);
    if (type == sql_type::interval_dt) {
        const interval& value = argument.intervals[shown];
        return fmt::format("INTERVAL '{} months {} days {} microseconds'", value.months, value.days, value.microseconds);
    }
    std::string text(longest, ' ');
    std::size_t length = 0;
    if (bifun::is_string(value_type_of(type))) {
        text = text_of(argument, shown);
        length = text.size();
        if (length > longest) {
            length = longest;
            const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
            while (length > 0 && zq_char_start(bytes, static_cast<std::uint32_t>(text.size()), static_cast<std::uint32_t>(length)) == 0) {
                --length; // a character is not cut
            }
            return fmt::format("'{}...'", text.substr(0, length));
        }
        return fmt::format("'{}'", text);
    }
    bifun_column* const written = argument.storage.get();
    const std::size_t width = bifun::value_width(value_type_of(type));
    written->data->null_flags[0] = 1;
    std::memmove(written->data->values, static_cast<const std::uint8_t*>(argument.data.values) + shown * width, width);
    (void)zqengine_column_set_kind(written, type == sql_type::date ? ZQDT_DATE : has_date(type) ? ZQDT_DATETIME : ZQDT_TIME);
    return zqengine_column_get_text(written, 0, text.data(), text.size(), &length) == 0 ? text.substr(0, length) : "...";
}

std::string call_text(const call& made, std::uint32_t row) {
    std::vector<std::string> values;
    for (std::size_t i = 0; i < made.arguments.size(); ++i) {
        values.push_back(quoted_value(made, i, row));
    }
    return fmt::format("{}({})", made.form->builtin, fmt::join(values, ", "));
}

call_failure refusal(const call& made, const call_values& values, std::uint32_t row) {
    const std::optional<std::size_t> keyword = made.form->keyword;
    const std::string_view word = keyword ? text_of(made.arguments[*keyword], row_of(made.arguments[*keyword], row)) : std::string_view();
    return {0, explain_refusal(*made.form, values, word), call_text(made, row)};
}

// ---- intervals --------------------------------------------------------------------------------------------------------------

constexpr std::int64_t per_second = 1'000'000; // microseconds

template <class Visit> void for_each_row(const row_list& rows, std::uint32_t row_count, const Visit& visit) {
    for (std::uint32_t k = 0; k < row_count; ++k) {
        visit(rows.empty() ? k : rows[k]);
    }
}

// Writes the rows of an argument as the kind of interval that the member takes; returns false where one is beyond its range.
bool write_intervals(call_argument& argument, bifun_column& to, bool as_months, const row_list& rows, std::uint32_t row_count) {
    bool fits = true;
    const auto write = [&](std::uint32_t row) {
        const interval& value = argument.intervals[row];
        to.data->null_flags[row] = argument.data.null_flags[row];
        if (as_months) {
            static_cast<bifun_interval_ym*>(to.data->values)[row] = {value.months / 12, value.months % 12};
            return;
        }
        const std::int64_t seconds = value.microseconds / per_second;
        fits &= seconds / 3600 <= std::numeric_limits<std::int32_t>::max() && seconds / 3600 >= std::numeric_limits<std::int32_t>::min();
        static_cast<bifun_interval_dt*>(to.data->values)[row] = {
            value.days, static_cast<std::int32_t>(seconds / 3600), static_cast<std::int32_t>(seconds / 60 % 60),
            static_cast<std::int32_t>(seconds % 60), static_cast<std::int32_t>(value.microseconds % per_second)};
    };
    if (argument.repeats) {
        write(0);
    } else {
        for_each_row(rows, row_count, write);
    }
    to.no_nulls = argument.column.no_nulls;
    return fits;
}

// ---- a group -------------------------------------------------------------------------------------------------------------------

// Row 0 again and again.
const std::uint16_t* first_row_again(std::uint32_t capacity) {
    static const row_list zeros(std::numeric_limits<std::uint16_t>::max() + std::size_t{1});
    return capacity <= zeros.size() ? zeros.data() : nullptr;
}

const bifun_column* as_doubles(call& made, const bifun_column& integers, value_type type, std::uint32_t row_count) {
    if (made.doubles == nullptr) {
        made.doubles = make_column(value_type::DOUBLE, made.capacity);
    }
    auto* const doubles = static_cast<double*>(made.doubles->data->values);
    for (std::uint32_t k = 0; k < row_count; ++k) {
        doubles[k] = type == value_type::INT ? static_cast<const std::int32_t*>(integers.data->values)[k]
                                             : static_cast<double>(static_cast<const std::int64_t*>(integers.data->values)[k]);
    }
    std::memcpy(made.doubles->data->null_flags, integers.data->null_flags, row_count);
    made.doubles->no_nulls = integers.no_nulls;
    return made.doubles.get();
}

// One group's call: what invoke() is given, and where.
struct group_call {
    call& made;
    const session& executor;
    const row_list& rows;
    std::uint32_t row_count;
    std::array<bifun_column, bifun::most_arguments> columns{};
};

// Leaves out whole turns of the clock of the amounts by which times are moved.
void write_remainders(call_argument& argument, std::int64_t turn, const row_list& rows, std::uint32_t row_count) {
    const auto* const amounts = values_of<std::int64_t>(argument);
    auto* const remainders = static_cast<std::int64_t*>(argument.storage->data->values);
    const auto write = [&](std::uint32_t row) { remainders[row] = argument.data.null_flags[row] != 0 ? amounts[row] % turn : 0; };
    if (argument.repeats) {
        write(0);
    } else {
        for_each_row(rows, row_count, write);
    }
    argument.data.values = remainders;
}

// Gives parameter `parameter` of the member the argument at `position`.
bool pass_argument(group_call& group, invocation& invoked, std::size_t parameter, std::size_t position) {
    call& made = group.made;
    call_argument& argument = made.arguments[position];
    const auto [kind, type] = invoked.entry->arguments()[parameter];
    const bool is_interval = type_of(made, position) == sql_type::interval_dt;
    bifun_column* shown = &argument.column;
    if (is_interval) {
        const bool as_months = type == value_type::INTERVAL_YM;
        if (as_months && made.months[parameter] == nullptr) {
            made.months[parameter] = make_column(type, made.capacity);
        }
        shown = as_months ? made.months[parameter].get() : argument.storage.get();
        if (!write_intervals(argument, *shown, as_months, group.rows, group.row_count)) {
            return false;
        }
    }
    const std::uint32_t first_row = row_of(argument, group.rows.empty() ? 0 : group.rows[0]);
    if (kind == bifun::argument_kind::constant) {
        constant& value = made.constants[parameter];
        if (made.form->keyword == position) {
            value.as_int = {1, 0}; // the code is filled in by the caller
        } else {
            read_constant(*shown, type, first_row, value);
        }
        invoked.constants[parameter] = &value.as_int;
        return true;
    }
    if (made.capacity == 1) {
        invoked.columns[parameter] = shown;
        return true;
    }
    group.columns[parameter] = *shown;
    group.columns[parameter].selection = argument.repeats     ? first_row_again(made.capacity)
                                         : group.rows.empty() ? nullptr
                                                              : group.rows.data();
    invoked.columns[parameter] = &group.columns[parameter];
    return true;
}

// The value that stands for an argument that is omitted.
void pass_omitted(group_call& group, invocation& invoked, std::size_t parameter) {
    call& made = group.made;
    if (made.omitted_of != invoked.entry) {
        const value_type type = invoked.entry->arguments()[parameter].type;
        const std::string_view text = known_fact(*invoked.entry, parameter).if_omitted;
        const column_pointer column = make_column(type, 1);
        if (zqengine_column_set_text(column.get(), 0, text.data(), static_cast<std::uint32_t>(text.size())) != 0) {
            throw std::bad_alloc();
        }
        read_constant(*column, type, 0, made.omitted);
        made.omitted_of = invoked.entry;
    }
    invoked.constants[parameter] = &made.omitted.as_int;
}

call_failure describe_failure(const group_call& group, const invocation& invoked, std::int32_t status) {
    const failed_call failed = find_failure(invoked, status, group.row_count);
    const std::uint32_t k = failed.row.value_or(0);
    const std::uint32_t row = group.rows.empty() ? k : group.rows[k];
    return {failed.status, fmt::format("{}: {} {}", group.made.form->builtin, failed.status, zqengine_status_meaning(failed.status)),
            call_text(group.made, row)};
}

void keep_invocation(call& made, const invocation& invoked) {
    argument_set constants = 0;
    for (std::size_t i = 0; i < made.arguments.size(); ++i) {
        if (type_of(made, i) == sql_type::interval_dt) { // whose kind is that of the value
            return;
        }
        constants |= invoked.columns[i] == nullptr && !made.arguments[i].stays ? argument_set{1} << i : 0;
    }
    if (made.arguments.size() > made.form->argument_count) {
        return;
    }
    made.last = {invoked.entry, invoked.function, {}, constants, invoked.result, invoked.entry->result};
    for (std::size_t i = 0; i < invoked.entry->argument_count; ++i) {
        made.last.arguments[i] = invoked.columns[i] != nullptr ? invoked.columns[i] : invoked.constants[i];
    }
}

failure evaluate_group(group_call& group, const result_store& store, void* (*find)(const char* symbol)) {
    call& made = group.made;
    const signature& form = *made.form;
    const std::uint32_t first_row = group.rows.empty() ? 0 : group.rows[0];
    const auto store_nulls = [&] { store(nullptr, result_value_type(form), group.rows, group.row_count); };

    call_values values{.constants = form.constants, .keyword = std::nullopt};
    argument_set intervals_of_any_kind = 0;
    for (std::size_t i = 0; i < made.arguments.size(); ++i) {
        const call_argument& argument = made.arguments[i];
        const std::uint32_t row = row_of(argument, first_row);
        const argument_set bit = i < form.argument_count ? argument_set{1} << i : 0;
        values.constants |= argument.repeats ? bit : 0;
        if (form.keyword == i) {
            if (argument.data.null_flags[row] == 0) {
                store_nulls();
                return std::nullopt;
            }
            if (failure unknown = read_keyword(made, text_of(argument, row), values.keyword)) {
                return unknown;
            }
        } else if (type_of(made, i) == sql_type::interval_dt) {
            const interval_kind kind = kind_of_interval(argument, row);
            if (kind == interval_kind::both) {
                return call_failure{0, fmt::format("{}: an interval is of years and months, or of days and time", form.builtin),
                                    call_text(made, first_row)};
            }
            values.intervals_of_months |= kind == interval_kind::months ? bit : 0;
            intervals_of_any_kind |= kind == interval_kind::any ? bit : 0;
        }
    }

    if (values.keyword && form.argument_count == 3 && form.type_list[1] == sql_type::bigint) {
        if (const auto turn = count_round_the_clock(form.builtin, *values.keyword, form.type_list[2])) {
            write_remainders(made.arguments[1], *turn, group.rows, group.row_count);
        }
    }

    // f(a, b, c) is f(f(a, b), c), whose first argument is a column.
    const std::size_t steps = made.arguments.size() > form.argument_count ? made.arguments.size() - form.argument_count + 1 : 1;
    const bifun_column* left = nullptr;
    made.last.entry = nullptr;
    for (std::size_t step = 0; step < steps; ++step) {
        if (step > 0) {
            const call_argument& right = made.arguments[form.argument_count - 1 + step];
            values.constants = right.repeats ? argument_set{2} : 0;
        }
        const bifun::entry_point* const entry = find_member_for(made, values, step == 0 ? intervals_of_any_kind : 0, find);
        if (entry == nullptr) {
            return refusal(made, values, first_row);
        }
        bound_member& member = bind_member(made, values, find);
        while (member.results.size() <= step) {
            member.results.push_back(make_column(entry->result, made.capacity));
        }
        invocation invoked{entry, member.function, group.executor.environment, group.executor.memory, {}, {}, member.results[step].get()};
        bool has_null_constant = false;
        for (std::size_t i = 0; i < entry->argument_count; ++i) {
            if (step > 0 && i == 0) {
                invoked.columns[0] = left;
            } else if (i >= form.argument_count) {
                pass_omitted(group, invoked, i);
            } else if (!pass_argument(group, invoked, i, i + step)) {
                return call_failure{0, fmt::format("{}: an interval is out of range", form.builtin), call_text(made, first_row)};
            }
            if (form.keyword == i) {
                made.constants[i].as_int.value = *values.keyword;
            }
            has_null_constant |= invoked.constants[i] != nullptr && i < form.argument_count && made.constants[i].as_int.not_null == 0;
        }
        // Members whose NULL rule speaks of the first argument alone take constants by their length.
        if (has_null_constant && null_rule_of(*entry) == bifun::null_rule::first_only) {
            store_nulls();
            return std::nullopt;
        }
        const std::int32_t status = invoke(invoked, group.row_count);
        if (status != 0) {
            return describe_failure(group, invoked, status);
        }
        left = invoked.result;
        if (made.capacity == 1) {
            keep_invocation(made, invoked);
        }
    }

    const auto given = static_cast<value_type>(zqengine_column_type(left));
    if (form.result == sql_type::double_precision && given != value_type::DOUBLE) {
        store(as_doubles(made, *left, given, group.row_count), value_type::DOUBLE, group.rows, group.row_count);
    } else {
        store(left, given, group.rows, group.row_count);
    }
    return std::nullopt;
}

} // namespace

std::unique_ptr<session, void (*)(session*)> make_session() {
    constexpr std::uint32_t scratch_size = 64 * 1024;
    const auto destroy = [](session* ended) {
        rt_memobj_destroy(ended->environment, ended->memory);
        zqengine_environment_destroy(ended->environment);
        delete ended;
    };
    std::unique_ptr<session, void (*)(session*)> made(new session{zqengine_environment_create(), nullptr, {}}, destroy);
    if (made->environment != nullptr) {
        made->memory = rt_memobj_create_ex(made->environment, 0, scratch_size, __FILE__, __LINE__);
    }
    if (made->memory == nullptr) {
        made.reset();
    } else {
        made->unused = mem_heap_get_heap_top(static_cast<mem_heap*>(made->memory->heap));
    }
    return made;
}

namespace {

// Gives back what calls have taken.
void release_scratch(const session& executor) {
    mem_heap_free_heap_top(executor.environment, static_cast<mem_heap*>(executor.memory->heap), executor.unused);
}

} // namespace

std::unique_ptr<call> make_call(const signature& form, std::size_t argument_count, std::uint32_t capacity) {
    auto made = std::make_unique<call>();
    made->form = &form;
    made->capacity = capacity;
    made->arguments.resize(argument_count);
    for (std::size_t i = 0; i < argument_count; ++i) {
        call_argument& argument = made->arguments[i];
        const sql_type type = type_of(*made, i);
        argument.storage = make_column(value_type_of(type), capacity);
        if (texts_are_utf8()) {
            zqengine_column_set_known_texts(argument.storage.get(), ZQ_TEXTS_UTF8);
        }
        argument.data = *argument.storage->data;
        argument.column = {0, nullptr, &argument.data};
        argument.intervals.resize(type == sql_type::interval_dt ? capacity : 0);
    }
    return made;
}

std::optional<call_failure> evaluate(call& made, const session& executor, std::uint32_t row_count, const result_store& store,
                                     void* (*find)(const char* symbol)) {
    const auto evaluate_rows = [&](const row_list& rows) {
        group_call group{made, executor, rows, rows.empty() ? row_count : static_cast<std::uint32_t>(rows.size())};
        failure failed = evaluate_group(group, store, find);
        release_scratch(executor);
        return failed;
    };
    if (!needs_groups(made, row_count)) {
        return evaluate_rows({});
    }
    for (const row_list& rows : group_rows(made, row_count)) {
        if (failure failed = evaluate_rows(rows)) {
            return failed;
        }
    }
    return std::nullopt;
}

bool evaluate_again(call& made, const session& executor, row_result& result) {
    const last_row& last = made.last;
    if (last.entry == nullptr) {
        return false;
    }
    for (argument_set rest = last.constants; rest != 0; rest &= rest - 1) {
        const auto i = static_cast<std::size_t>(std::countr_zero(rest));
        const call_argument& argument = made.arguments[i];
        if (argument.data.null_flags[0] == 0) {
            return false;
        }
        if (made.form->keyword != i) {
            read_constant(argument.column, last.entry->argument_list[i].type, 0, made.constants[i]);
        } else if (text_of(argument, 0) != made.keyword) {
            return false;
        }
    }
    const std::int32_t status =
        invoke_entry(*last.entry, last.function, executor.environment, executor.memory, last.arguments.data(), last.result, 1);
    release_scratch(executor);
    result = {last.result, last.given};
    return status == 0;
}

interval interval_at(const bifun_column& results, value_type type, std::uint32_t row) {
    if (type == value_type::INTERVAL_YM) {
        const bifun_interval_ym& value = static_cast<const bifun_interval_ym*>(results.data->values)[row];
        return {value.years * 12 + value.months, 0, 0};
    }
    const bifun_interval_dt& value = static_cast<const bifun_interval_dt*>(results.data->values)[row];
    const std::int64_t seconds = std::int64_t{value.hours} * 3600 + std::int64_t{value.minutes} * 60 + value.seconds;
    return {0, value.days, seconds * per_second + value.microseconds};
}

std::string text_of(const call_failure& failed) {
    return failed.call.empty() ? failed.message : fmt::format("{}, in {}", failed.message, failed.call);
}

} // namespace binding
