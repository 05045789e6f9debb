// The host's own operators: comparisons and the three-valued logic of conditions.
//
// A condition is a BOOL column. Its value slot holds 1 for true and 0 for false as well as for unknown, whose null flag is 0: IF and
// LNNVL read nothing but the slot.
#ifndef BIFUN_HOST_EVALUATION_COMPARISON_H
#define BIFUN_HOST_EVALUATION_COMPARISON_H

#include <cstdint>
#include <vector>

#include "bop/frame/contract.h"
#include "bop/frame/value_type.h"
#include "embedded/columns/column_storage.h"
#include "host/sql/operators.h"

namespace host {

// The row of a column that is seen through its selection vector.
inline std::uint32_t row_of(const bifun_column& column, std::uint32_t row) {
    return column.selection == nullptr ? row : column.selection[row];
}

struct string_rules {
    bool fold_case;         // ASCII letters compare without regard to their case
    bool two_byte_trailers; // GB18030: a byte above 0x80 is followed by one that belongs to it and may look like ASCII
};

// Compares `row_count` rows of two columns of one type, each seen through its selection vector, into `result`. Trailing blanks of
// strings are not significant: the shorter text is compared as if filled with blanks. NaN equals nothing.
void compare_columns(bifun::value_type type, comparison_operator operation, const bifun_column& left, const bifun_column& right,
                     string_rules rules, bifun_column& result, std::uint32_t row_count);

// Values to look others up in: a column without NULLs and its rows in ascending order.
struct sorted_values {
    zqengine::column_pointer column;
    std::vector<std::uint32_t> rows;
};

sorted_values sort_values(zqengine::column_pointer column, string_rules rules);

// Whether each row of `tested`, whose type is that of the values, equals one of them, into `result`; unknown for NULL.
void find_values(const sorted_values& values, const bifun_column& tested, string_rules rules, bifun_column& result,
                 std::uint32_t row_count);

// `result` AND `operand`, `result` OR `operand`, into `result`; its rows are dense.
void and_condition(bifun_column& result, const bifun_column& operand, std::uint32_t row_count);
void or_condition(bifun_column& result, const bifun_column& operand, std::uint32_t row_count);

// Changes a condition in place; unknown stays unknown.
void negate_condition(bifun_column& result, std::uint32_t row_count);

// Every row of `result` to one value.
void fill_condition(bifun_column& result, bool value, std::uint32_t row_count);

// Copies a condition densely.
void copy_condition(bifun_column& result, const bifun_column& operand, std::uint32_t row_count);

// Sets the value slots to what the rule above asks for, whatever a function has left in them.
void normalise_condition(bifun_column& condition, std::uint32_t row_count);

} // namespace host

#endif
