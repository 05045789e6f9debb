// SPDX-License-Identifier: Apache-2.0
#include "adapters/postgresql/errors.h"

#include "bop/frame/status.h"

#include "adapters/postgresql/api.h"

namespace postgresql_extension {
namespace {

int sql_state_of(std::int32_t status) {
    switch (status) {
    case BIFUN_OUT_OF_MEMORY:
        return ERRCODE_OUT_OF_MEMORY;
    case BIFUN_NEGATIVE_OVERLAY_LENGTH:
    case BIFUN_NEGATIVE_SUBSTRING_LENGTH:
        return ERRCODE_SUBSTRING_ERROR;
    case BIFUN_NUMERIC_OVERFLOW:
    case BIFUN_TOO_MANY_DIGITS:
        return ERRCODE_NUMERIC_VALUE_OUT_OF_RANGE;
    case BIFUN_INVALID_CHARACTER_STRING:
    case BIFUN_CHARACTER_CONVERSION_FAILED:
        return ERRCODE_CHARACTER_NOT_IN_REPERTOIRE;
    case BIFUN_TRIM_SET_NOT_ONE_CHARACTER:
        return ERRCODE_TRIM_ERROR;
    case BIFUN_DAY_NAME_TOO_LONG:
    case BIFUN_UNKNOWN_DAY_NAME:
    case BIFUN_INVALID_DATE_FORMAT:
        return ERRCODE_INVALID_DATETIME_FORMAT;
    case BIFUN_INVALID_DATETIME:
    case BIFUN_YEAR_ZERO:
        return ERRCODE_DATETIME_FIELD_OVERFLOW;
    case BIFUN_CHARACTER_RESULT_TOO_LONG:
    case BIFUN_RESULT_TOO_LONG:
        return ERRCODE_STRING_DATA_RIGHT_TRUNCATION;
    case BIFUN_NOT_A_NUMBER:
    case BIFUN_INVALID_JSON_PATH:
    case BIFUN_UNREADABLE_TEXT:
    case BIFUN_UNREADABLE_LARGE_TEXT:
        return ERRCODE_INVALID_TEXT_REPRESENTATION;
    case BIFUN_NUMBER_FORMAT_MISMATCH:
    case BIFUN_CONVERSION_FAILED:
        return ERRCODE_INVALID_CHARACTER_VALUE_FOR_CAST;
    case BIFUN_ARGUMENT_OUT_OF_DOMAIN:
    case BIFUN_INVALID_NLS_PARAMETER:
    case 0: // the binding's own: there is no member for the values
        return ERRCODE_INVALID_PARAMETER_VALUE;
    default:
        return ERRCODE_DATA_EXCEPTION;
    }
}

} // namespace

void report(const failure_text& failure) {
    ereport(ERROR, (errcode(sql_state_of(failure.status)), errmsg_internal("%s", failure.message),
                    failure.detail != nullptr ? errdetail_internal("%s", failure.detail) : 0));
    pg_unreachable();
}

} // namespace postgresql_extension
