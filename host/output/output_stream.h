// SPDX-License-Identifier: Apache-2.0
// The standard output, buffered.
#ifndef BIFUN_HOST_OUTPUT_OUTPUT_STREAM_H
#define BIFUN_HOST_OUTPUT_OUTPUT_STREAM_H

#include <string>

namespace host {

// Text is appended to `text` and goes out in large pieces. A reader that has gone away raises output_closed, any other failure
// program_error. What has not been flushed when the stream goes is lost.
struct output_stream {
    int file;
    std::string text;
    bool flushed = false; // anything

    void flush();
    void flush_if_large() {
        constexpr std::size_t large = std::size_t{256} * 1024;
        if (text.size() >= large) {
            flush();
        }
    }
};

} // namespace host

#endif
