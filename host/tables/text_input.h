// SPDX-License-Identifier: Apache-2.0
// The text of a file in the character set of the database.
#ifndef BIFUN_HOST_TABLES_TEXT_INPUT_H
#define BIFUN_HOST_TABLES_TEXT_INPUT_H

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "host/tables/input_file.h"
#include "host/values/charset_text.h"

namespace host {

struct text_conversion;

// Reads a file, converted where it is in another character set than that of the database: the one that a byte order mark names, or else
// `encoding`, any name that ICU knows; empty for the database's own. The byte order mark itself is no text. What cannot be converted is an
// error, or with `marks_errors` becomes a byte that is no part of any character, so that its field is found to be bad.
// Said where bytes are no text. Windows has more characters than latin1, in bytes that are controls there: it is the safer of the two.
constexpr std::string_view naming_encoding = "; name the file's encoding, as in --encoding windows-1252";

class text_input {
  public:
    text_input(std::string path, std::string encoding, const charset& set, bool marks_errors);
    ~text_input();
    text_input(const text_input&) = delete;
    text_input& operator=(const text_input&) = delete;

    // Reads at least one byte and at most `room`; 0 at the end.
    std::size_t read(char* to, std::size_t room);

    // Goes back to the beginning. Of what is no file that can be rewound, all that is read is kept for this, which is possible once and
    // before stop_keeping.
    void rewind();
    void stop_keeping();

    [[nodiscard]] const input_file& file() const { return file_; }

  private:
    std::size_t read_file(char* to, std::size_t room);
    std::size_t convert(char* to, std::size_t room);
    void convert_between(char*& target, const char* end);
    void fill_between();
    void begin();

    input_file file_;
    std::string encoding_;
    const charset& charset_;
    bool marks_errors_;

    bool begun_ = false;
    std::string first_bytes_;                     // read to look for a byte order mark, and not handed on yet
    std::unique_ptr<text_conversion> conversion_; // null where none is needed

    bool keeps_;
    std::deque<std::string> kept_; // as it was read
    std::size_t kept_at_ = 0;      // what lies before it in the first has been read again
};

} // namespace host

#endif
