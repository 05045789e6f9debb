/* SPDX-License-Identifier: Apache-2.0 */
/* Text in the database character set, which is one for the whole process and is told to the library by bifun_dll_var_init.
 *
 * Offsets and lengths are in bytes, counted from 0; positions are in characters, counted from 1. Text may be malformed: from the left on,
 * the character at a place is the valid one that begins there, if the text has all its bytes, and else the one byte. So a byte that begins
 * no valid character is a character, and so is every byte of one that the end of the text or a wrong byte cuts off. All operations tell the
 * same characters. No operation reads outside the text that it is given, which may be null where its length is 0. Operations take no
 * environment and allocate nothing. */
#ifndef BIFUN_ENGINE_CHARSET_H
#define BIFUN_ENGINE_CHARSET_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The codes of bifun_settings.charset_code. */
enum { ZQ_CHARSET_GB18030 = 0, ZQ_CHARSET_UTF8 = 1, ZQ_CHARSET_EUC_KR = 2 };

/* ---- lengths and places -------------------------------------------------------------------------------------------- */

/* The length of the character that begins at `character`, told by as few of its bytes as possible and without knowing where the text ends:
 * at least 1, and possibly more than the text has left. For a valid and whole character it is that of zq_mb_char_get_len_ex. Where a lead
 * byte does not tell the length, as in GB18030, the byte behind it is read too, and must be readable even where the text ends before it. */
uint32_t zq_mb_char_get_len(const uint8_t* character);

/* The length of the character, with `remaining` bytes left: at least 1, and more than `remaining` only where that is 0. */
uint32_t zq_mb_char_get_len_ex(const uint8_t* character, uint32_t remaining);

/* The number of characters. */
uint32_t zq_mbstrlen_ex(const uint8_t* text, uint32_t length);

/* Writes for every byte the position of the character that it belongs to, and returns the number of characters. */
uint32_t zq_mbstrlen_cposition_ex(const uint8_t* text, uint32_t length, uint32_t* positions);

/* The offset behind the first `characters` characters; `length` where there are fewer. The second one also tells how many there were. */
uint32_t zq_mbsninc_ex(const uint8_t* text, uint32_t length, uint32_t characters);
uint32_t zq_mbsninc_count_ex(const uint8_t* text, uint32_t length, uint32_t characters, uint32_t* stepped);

/* The offset behind the first character; 0 for an empty text. */
uint32_t zq_mbsinc_ex(const uint8_t* text, uint32_t length);

/* The offset of the character at `position`, from 1 (0 is taken as 1); `length` behind the last one. */
uint32_t zq_mbget_byte_offset(const uint8_t* text, uint32_t length, uint32_t position);

/* The length of at most `characters` characters from position `start`, from 1 (0 is taken as 1), on. */
uint32_t zq_mbget_bytelen(const uint8_t* text, uint32_t length, uint32_t start, uint32_t characters);

/* Non-zero where the byte at `offset`, below `length`, is the first of a character. */
int32_t zq_char_start(const uint8_t* text, uint32_t length, uint32_t offset);

/* Non-zero where one of `count` characters, of which these are the lengths, has more than one byte. */
int32_t zq_translate_from_str_has_mb(const uint32_t* lengths, uint32_t count);

/* ---- changing text in place ----------------------------------------------------------------------------------------- */

/* Upper and lower case, character by character, by Unicode's simple mappings, where the other case has as many bytes. What is no valid
 * character stays. */
void zq_mbsupper_ex(uint8_t* text, uint32_t length);
void zq_mbslower_ex(uint8_t* text, uint32_t length);

/* The upper case of an ASCII character; other bytes as they are. */
uint8_t zqupper(uint8_t character);

/* Reverses the order of the characters, whose bytes keep theirs. The reversed text is made of the same characters, so doing it twice gives
 * the text back, malformed or not. Returns `text`, or null where a byte that is no valid character would join those that come to stand
 * behind it, as a cut off lead byte does with the character before it in GB18030; then the text is unchanged. */
uint8_t* zq_mbsrev_ex(uint8_t* text, uint32_t length);

/* The same for compatible modes other than 2; in that one the bytes are reversed. */
uint8_t* zq_mbsrev_with_compatible_mode(uint8_t* text, uint32_t length, uint32_t compatible_mode);

/* Puts in place of a character of `length` bytes its neighbour among the characters of as many bytes, in the order of these: the next one
 * where `step` is 1, the one before it where it is -1. Returns 0; -6803 where it has none, or is not valid or not one of Unicode's, and
 * then it stays. */
int32_t zq_mb_char_step(uint8_t* character, uint32_t length, int32_t step);

/* ---- trimming ------------------------------------------------------------------------------------------------------- */

/* Advance `*text` and shorten `*length`: trim_left behind the leading characters that are characters of the set, trim_left_space behind the
 * leading blanks (0x20). */
void trim_left(const uint8_t* set, uint32_t set_length, const uint8_t** text, uint32_t* length);
void trim_left_space(const uint8_t** text, uint32_t* length);

/* ---- conversions ---------------------------------------------------------------------------------------------------- */

/* Copies the valid characters of a text in the engine's character set `number` (10 GB18030, 1 UTF-8, 6 EUC-KR, any other single bytes,
 * which all are valid), leaving out the others, to `valid`, which has room for `length` bytes, may be `text`, or is null. Returns how many
 * bytes these are; `*characters`, unless null, gets how many characters. */
uint32_t zq_get_valid_chars(int32_t number, const uint8_t* text, uint32_t length, uint8_t* valid, uint32_t* characters);

/* Writes the Unicode code point of every character, 0xFFFD for one that has none, and returns the number of characters. `code_points` has
 * room for `length` entries. */
uint32_t zq_get_char_unicode_vals(const uint8_t* text, uint32_t length, uint32_t* code_points);

#ifdef __cplusplus
}
#endif

#endif
