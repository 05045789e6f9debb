// SPDX-License-Identifier: Apache-2.0
#include "host/output/output_stream.h"

#include <cerrno>
#include <cstring>

#include <unistd.h>

#include "host/program_error.h"

namespace host {

void output_stream::flush() {
    std::size_t written = 0;
    while (written < text.size()) {
        const ssize_t count = write(file, text.data() + written, text.size() - written);
        if (count >= 0) {
            written += static_cast<std::size_t>(count);
            flushed = true;
            continue;
        }
        if (errno == EINTR) {
            continue;
        }
        const int error = errno;
        text.clear();
        if (error == EPIPE || error == EBADF) {
            throw output_closed{};
        }
        fail("the output cannot be written: {}", std::strerror(error));
    }
    text.clear();
}

} // namespace host
