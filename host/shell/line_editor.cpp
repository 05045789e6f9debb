// SPDX-License-Identifier: Apache-2.0
#include "host/shell/line_editor.h"

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <filesystem>
#include <new>

#include <fcntl.h>
#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "host/messages.h"
#include "host/output/display_width.h"
#include "host/session/interruption.h"

namespace host {
namespace {

constexpr int most_remembered = 1000;

// libedit counts in characters.
int characters_in(std::string_view text) {
    return static_cast<int>(std::ranges::count_if(text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

void write_to_terminal(const std::string& text) {
    static_cast<void>(std::fputs(text.c_str(), stdout));
    static_cast<void>(std::fflush(stdout));
}

std::string in_columns(const std::vector<std::string>& texts) {
    winsize size{};
    constexpr std::size_t usual_width = 80;
    const std::size_t terminal = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : usual_width;
    std::size_t width = 1;
    for (const std::string& text : texts) {
        width = std::max(width, display_width(text) + 2);
    }
    const std::size_t in_line = std::max<std::size_t>(terminal / width, 1);
    std::string shown = "\n";
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const bool ends_line = i + 1 == texts.size() || (i + 1) % in_line == 0;
        shown.append(texts[i]).append(ends_line ? 0 : width - display_width(texts[i]), ' ').append(ends_line ? "\n" : "");
    }
    return shown;
}

// What all of them begin with, in whole characters.
std::string_view common_beginning(const std::vector<std::string>& texts) {
    std::string_view common = texts.front();
    for (const std::string& text : texts) {
        common = common.substr(0, static_cast<std::size_t>(std::ranges::mismatch(common, text).in1 - common.begin()));
    }
    const std::string& first = texts.front();
    while (!common.empty() && common.size() < first.size() && (static_cast<unsigned char>(first[common.size()]) & 0xC0U) == 0x80U) {
        common.remove_suffix(1);
    }
    return common;
}

line_editor* owner_of(EditLine* editor) {
    void* owner = nullptr;
    el_get(editor, EL_CLIENTDATA, &owner);
    return static_cast<line_editor*>(owner);
}

// What could be read may be gone, for a terminal drops its keys at Ctrl-C. Nobody else is to find the terminal so.
ssize_t read_without_waiting(char& byte) {
    const int flags = fcntl(STDIN_FILENO, F_GETFL);
    fcntl(STDIN_FILENO, F_SETFL, flags | O_NONBLOCK);
    const ssize_t count = ::read(STDIN_FILENO, &byte, 1);
    const int error = errno;
    fcntl(STDIN_FILENO, F_SETFL, flags);
    errno = error;
    return count;
}

} // namespace

line_editor::line_editor(std::string history_file, std::function<completions(std::string_view)> complete)
    : history_file_(std::move(history_file)), complete_(std::move(complete)) {
    static_cast<void>(std::setlocale(LC_CTYPE, ""));
    if (std::strcmp(nl_langinfo(CODESET), "UTF-8") != 0) {
        static_cast<void>(std::setlocale(LC_CTYPE, "C.UTF-8")); // the program speaks nothing else
    }
    editor_ = el_init("bifun", stdin, stdout, stderr);
    history_ = history_init();
    if (editor_ == nullptr || history_ == nullptr) {
        throw std::bad_alloc();
    }
    el_set(editor_, EL_CLIENTDATA, this);
    el_set(editor_, EL_PROMPT, prompt_of);
    el_set(editor_, EL_EDITOR, "emacs");
    el_set(editor_, EL_SIGNAL, 1);
    el_set(editor_, EL_GETCFN, next_character);
    el_set(editor_, EL_ADDFN, "bifun-complete", "complete what stands before the cursor", complete_at_cursor);
    el_set(editor_, EL_BIND, "\t", "bifun-complete", nullptr);
    el_set(editor_, EL_BIND, "^R", "em-inc-search-prev", nullptr);
    begin_history();
    el_source(editor_, nullptr); // ~/.editrc has the last word
}

line_editor::~line_editor() {
    history_end(history_);
    el_end(editor_);
}

void line_editor::begin_history() {
    HistEvent event;
    history(history_, &event, H_SETSIZE, most_remembered);
    history(history_, &event, H_SETUNIQUE, 1);
    el_set(editor_, EL_HIST, history, history_);
    if (history_file_.empty()) {
        return;
    }
    std::error_code failed;
    std::filesystem::create_directories(std::filesystem::path(history_file_).parent_path(), failed);
    constexpr mode_t owner_alone = 0600;
    const int file = open(history_file_.c_str(), O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC, owner_alone);
    if (file < 0) {
        print_message(fmt::format("{} cannot be written, and the history is not kept: {}", history_file_, std::strerror(errno)));
        history_file_.clear();
        return;
    }
    close(file);
    // Each shell appends to it, so that it grows until one begins.
    if (history(history_, &event, H_LOAD, history_file_.c_str()) > most_remembered) {
        history(history_, &event, H_SAVE, history_file_.c_str());
    }
}

line_outcome line_editor::read(const char* prompt, std::string& line) {
    prompt_ = prompt;
    interrupted_ = false;
    int size = 0;
    const char* const text = el_gets(editor_, &size);
    if (interrupted_) {
        write_to_terminal("^C\n");
        return line_outcome::abandoned;
    }
    if (text == nullptr || size <= 0) {
        return line_outcome::input_ended;
    }
    line = text;
    while (line.ends_with('\n') || line.ends_with('\r')) {
        line.pop_back();
    }
    return line_outcome::entered;
}

void line_editor::remember(const std::string& statement) {
    HistEvent event;
    history(history_, &event, H_ENTER, statement.c_str());
    if (history_file_.empty()) {
        return;
    }
    if (std::FILE* const file = std::fopen(history_file_.c_str(), "ae")) {
        static_cast<void>(std::fseek(file, 0, SEEK_END)); // the first entry of the file writes its heading
        history(history_, &event, H_NSAVE_FP, std::size_t{0}, file);
        static_cast<void>(std::fclose(file));
    }
}

// libedit's own would miss a Ctrl-C that comes between two of its reads.
int line_editor::next_character(EditLine* editor, wchar_t* character) {
    std::mbstate_t state{};
    for (;;) {
        if (!wait_for_input(STDIN_FILENO)) {
            line_editor& owner = *owner_of(editor);
            owner.interrupted_ = take_interruption();
            if (owner.interrupted_) {
                errno = EINTR;
                return -1;
            }
            el_set(editor, EL_REFRESH); // the window has another size, or the program goes on after a stop
            continue;
        }
        char byte = 0;
        const ssize_t count = read_without_waiting(byte);
        if (count < 0 && (errno == EAGAIN || errno == EINTR)) {
            continue;
        }
        if (count <= 0) {
            return static_cast<int>(count);
        }
        const std::size_t decoded = std::mbrtowc(character, &byte, 1, &state);
        if (decoded == static_cast<std::size_t>(-1)) {
            state = {}; // no character
        } else if (decoded != static_cast<std::size_t>(-2)) {
            return 1;
        }
    }
}

char* line_editor::prompt_of(EditLine* editor) { return owner_of(editor)->prompt_.data(); }

unsigned char line_editor::complete_at_cursor(EditLine* editor, int /*key*/) {
    const LineInfo* const line = el_line(editor);
    const std::string_view before(line->buffer, static_cast<std::size_t>(line->cursor - line->buffer));
    const completions found = owner_of(editor)->complete_(before);
    if (found.texts.empty()) {
        return CC_REFRESH_BEEP;
    }
    const std::string_view common = common_beginning(found.texts);
    if (found.texts.size() == 1 || common.size() > found.replaced) {
        el_deletestr(editor, characters_in(before.substr(before.size() - found.replaced)));
        return el_insertstr(editor, std::string(common).c_str()) == 0 ? CC_REFRESH : CC_REFRESH_BEEP;
    }
    write_to_terminal(in_columns(found.texts));
    return CC_REDISPLAY;
}

std::string history_path() {
    const char* const state = std::getenv("XDG_STATE_HOME");
    const char* const home = std::getenv("HOME");
    if (state != nullptr && state[0] == '/') {
        return std::string(state) + "/bifun/history";
    }
    return home == nullptr || home[0] == '\0' ? "" : std::string(home) + "/.local/state/bifun/history";
}

} // namespace host
