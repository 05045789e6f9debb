// SPDX-License-Identifier: Apache-2.0
// A call of a function that a host has overloaded by types, evaluated batch by batch.
#ifndef BIFUN_ADAPTERS_BINDING_CALL_H
#define BIFUN_ADAPTERS_BINDING_CALL_H

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "adapters/binding/constant.h"
#include "adapters/binding/invocation.h"
#include "adapters/binding/signature.h"
#include "embedded/zqengine.h"
#include "engine/memory.h"

namespace binding {

struct column_destroyer {
    void operator()(bifun_column* column) const { zqengine_column_destroy(column); }
};
using column_pointer = std::unique_ptr<bifun_column, column_destroyer>;

// An interval as hosts have them.
struct interval {
    std::int32_t months;
    std::int32_t days;
    std::int64_t microseconds;
};

// Rows of an argument, which the host fills: `column.no_nulls`, the null flags, and the values as bop/frame/contract.h describes them. Both
// arrays have room for a batch, but a host may also point `data` to arrays of its own. Bytes of strings are the host's, and stay where they
// are until the results of the batch are consumed.
struct call_argument {
    column_pointer storage;
    bifun_column_data data;
    bifun_column column;
    std::vector<interval> intervals; // the values, where the type is interval_dt
    bool repeats;                    // row 0 is what all rows are: it alone is there
    bool stays;                      // row 0 is what it was in the last batch, as in all of them
};

template <class T> T* values_of(call_argument& argument) { return static_cast<T*>(argument.data.values); }

// A member that calls with such values are evaluated by.
struct bound_member {
    call_values values;
    const bifun::entry_point* entry; // null where there is none
    void* function;
    std::vector<column_pointer> results; // one for each step of f(f(a, b), c)
};

// How the last row was evaluated, of a call whose batches have one row: the next one differs in its values alone, unless its keyword is
// another one.
struct last_row {
    const bifun::entry_point* entry; // null where the next row has to be bound anew
    void* function;
    std::array<const void*, bifun::most_arguments> arguments;
    argument_set constants; // of the arguments that are passed as such, those that do not stay
    bifun_column* result;
    bifun::value_type given;
};

// What an executor has of its own: one per thread.
struct session {
    bifun_environment* environment;
    bifun_memory_object* memory;
    mem_heap_mark unused; // of the memory, before a call takes any
};
std::unique_ptr<session, void (*)(session*)> make_session(); // null where memory is exhausted

// The calls of one site, on one thread. Not moved once made.
struct call {
    const signature* form;
    std::vector<call_argument> arguments; // more than the signature has where it takes more
    std::uint32_t capacity;               // rows of a batch
    std::array<constant, bifun::most_arguments> constants;
    constant omitted; // what stands for the last argument of `omitted_of`, where that is omitted
    const bifun::entry_point* omitted_of;
    std::string keyword; // the last one that was looked up, as it was written
    std::optional<std::int32_t> keyword_code;
    std::array<column_pointer, bifun::most_arguments> months; // intervals of years and months, out of those of an argument
    column_pointer doubles;                                   // results of members that give integers where others give doubles
    std::vector<bound_member> members;
    last_row last;
};

// Throws std::bad_alloc. `argument_count` is that of the signature, or more where it takes more.
std::unique_ptr<call> make_call(const signature& form, std::size_t argument_count, std::uint32_t capacity);

// Takes results: row k of the column belongs to row `rows[k]` of the batch, or to row k where `rows` is empty. The column has the type of
// the signature's result, INTERVAL_YM or INTERVAL_DT for an interval, and no selection; null stands for NULL in all rows.
using result_store =
    std::function<void(const bifun_column* results, bifun::value_type type, std::span<const std::uint16_t> rows, std::uint32_t row_count)>;

// The interval in a row of such results.
interval interval_at(const bifun_column& results, bifun::value_type type, std::uint32_t row);

struct call_failure {
    std::int32_t status; // of the library; 0 where the call is refused before
    std::string message; // begins with the name of the built-in
    std::string call;    // with the values that it failed for; may be empty
};

std::string text_of(const call_failure& failed);

// Evaluates the first `row_count` rows of the arguments, 1 to the capacity. Rows may be stored in several parts. Nothing where that has
// succeeded; else some rows may have been stored. `find` gives the function that is exported under a name.
std::optional<call_failure> evaluate(call& made, const session& executor, std::uint32_t row_count, const result_store& store,
                                     void* (*find)(const char* symbol));

// Evaluates the next row of a call whose capacity is 1 as the last one was, which is quick, by its values alone. False where that is not
// how it has to be evaluated, or where it fails: then evaluate() has to, and tells why.
struct row_result {
    const bifun_column* column; // as a result_store takes it; of integers, too, where the signature's result is DOUBLE
    bifun::value_type type;
};
bool evaluate_again(call& made, const session& executor, row_result& result);

// How results of the type are stored in a batch column.
constexpr bifun::value_type result_value_type(const signature& form) { return value_type_of(form.result); }

} // namespace binding

#endif
