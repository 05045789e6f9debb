/* SPDX-License-Identifier: Apache-2.0 */
/* JSON documents and the SQL/JSON paths into them.
 *
 * docs/json.md describes what is JSON and the language of paths. Texts are in the database character set and not
 * NUL-terminated; those of length 0 may be null. A batch has one reader and one path, and parses a document for each row. */
#ifndef BIFUN_ENGINE_JSON_H
#define BIFUN_ENGINE_JSON_H

#include "bop/frame/contract.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Statuses of this engine's own. */
enum {
    JSON_INVALID_TEXT = -7101,  /* the text is no JSON */
    JSON_TOO_DEEP = -7102,      /* arrays and objects in each other beyond JSON_MOST_LEVELS */
    JSON_NO_SUCH_PART = -7103,  /* a strict path asks for what the document does not have */
    JSON_NO_ITEM = -7104,       /* the path gives nothing */
    JSON_SEVERAL_ITEMS = -7105, /* it gives more than one item where one is wanted */
    JSON_NO_SCALAR = -7106,     /* it gives an array or object where a scalar is wanted */
    JSON_WRONG_OPERAND = -7107 /* a method or an operator has a value that it is not for, or no result */,
    JSON_NO_CHARACTER = -7108 /* the database character set has not a character of the result */
};

enum { JSON_MOST_LEVELS = 1024, JPATH_LONGEST_TEXT = 4000 };

enum json_kind { JSON_NULL = 0, JSON_FALSE = 1, JSON_TRUE = 2, JSON_NUMBER = 3, JSON_STRING = 4, JSON_ARRAY = 5, JSON_OBJECT = 6 };

/* A scalar: a string as its characters, all else as the document writes it, numbers with all digits. The bytes are those of the document or
 * of the reader, and stay until the next operation on the reader. */
typedef struct json_item {
    int32_t kind; /* of json_kind */
    uint32_t length;
    const uint8_t* text;
} json_item;

/* ---- paths ----------------------------------------------------------------------------------------------------------- */

/* A path, parsed. One thread at a time may use it. */
typedef struct jpath jpath;

/* `*path` gets the path of a text, to be freed by jpath_free. Returns 0; -503; another negative status where the text is no path or longer
 * than JPATH_LONGEST_TEXT bytes, and then `fault_at`, which may be null, gets the place of the first byte that does not fit, `length` where
 * the text ends too early. On failure `*path` is null. */
int32_t jpath_parse(bifun_environment* environment, const uint8_t* text, uint32_t length, jpath** path, uint32_t* fault_at);

/* Null does nothing. */
void jpath_free(bifun_environment* environment, jpath* path);

/* ---- documents ------------------------------------------------------------------------------------------------------- */

/* Memory for one document at a time. What parsing has made of the documents of a call may be kept in the environment for others over the
 * same documents. */
typedef struct json_reader json_reader;

/* Null when memory is exhausted. */
json_reader* json_open(bifun_environment* environment);

/* Null does nothing. */
void json_close(bifun_environment* environment, json_reader* reader);

/* Takes a document in place of the one before. The reader points to the text, which stays where and as it is for as long as the document
 * is asked. Returns 0; JSON_INVALID_TEXT, JSON_TOO_DEEP, -503, and then the reader has no document and must not be asked. */
int32_t json_parse(bifun_environment* environment, json_reader* reader, const uint8_t* text, uint32_t length);

/* The one scalar that the path gives. Returns 0; JSON_NO_SUCH_PART, JSON_NO_ITEM, JSON_SEVERAL_ITEMS, JSON_NO_SCALAR, JSON_WRONG_OPERAND,
 * JSON_NO_CHARACTER, -503. */
int32_t jpath_get_scalar(bifun_environment* environment, json_reader* reader, const jpath* path, json_item* item);

/* Whether what a path gives is put into an array: never, unless it is one item, always. */
enum jpath_wrapper { JPATH_NO_WRAPPER = 0, JPATH_CONDITIONAL_WRAPPER = 1, JPATH_WRAPPER = 2 };

/* What the path gives, as JSON without white space but in strings, all else as the document writes it. `text` is as in json_item. Returns
 * 0; JSON_NO_SUCH_PART, JSON_NO_ITEM, JSON_SEVERAL_ITEMS without a wrapper, JSON_WRONG_OPERAND, JSON_NO_CHARACTER, -6819 where further
 * items follow 268,435,455 bytes, -503. */
int32_t jpath_get_json(bifun_environment* environment, json_reader* reader, const jpath* path, int32_t wrapper, const uint8_t** text,
                       uint32_t* length);

/* ---- numbers --------------------------------------------------------------------------------------------------------- */

/* The nearest double of [space][sign]digits[.digits][E[sign]digits][space], with E in either case, digits missing before or behind the
 * point: of the numbers of JSON and of those that strings are. Halves to even. Returns 0; 109 where the text is no such number; -6102 where
 * it is beyond the largest double. On failure the result is untouched. */
int32_t json_get_double(const uint8_t* text, uint32_t length, double* result);

#ifdef __cplusplus
}
#endif

#endif
