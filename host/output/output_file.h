// SPDX-License-Identifier: Apache-2.0
// The file that --output names, which is written whole or not at all.
#ifndef BIFUN_HOST_OUTPUT_OUTPUT_FILE_H
#define BIFUN_HOST_OUTPUT_OUTPUT_FILE_H

#include <string>

namespace host {

// Until it is committed, everything goes to a temporary file beside it, which goes when this goes or a signal ends the program. What is no
// regular file, such as a terminal or a pipe, is written as it comes. One at a time. All errors are program_error.
class output_file {
  public:
    explicit output_file(std::string path);
    ~output_file();
    output_file(const output_file&) = delete;
    output_file& operator=(const output_file&) = delete;

    [[nodiscard]] int descriptor() const { return file_; }

    // Forgets what has been written; false where that is not possible.
    bool restart();

    // Puts the file in its place, with the permissions of the one that was there.
    void commit();

  private:
    std::string path_;
    std::string temporary_; // empty where the file is written as it comes
    int file_ = -1;
};

} // namespace host

#endif
