// SPDX-License-Identifier: Apache-2.0
// Lines from a terminal, edited, with a history and completion: libedit behind a few functions.
#ifndef BIFUN_HOST_SHELL_LINE_EDITOR_H
#define BIFUN_HOST_SHELL_LINE_EDITOR_H

#include <functional>
#include <string>
#include <string_view>

#include <histedit.h>

#include "host/shell/completion.h"

namespace host {

enum class line_outcome : unsigned char { entered, abandoned, input_ended };

class line_editor {
  public:
    // `complete` is given the line before the cursor. An empty `history_file` keeps the history in memory; so does, with a message, one
    // that cannot be written.
    line_editor(std::string history_file, std::function<completions(std::string_view)> complete);
    ~line_editor();
    line_editor(const line_editor&) = delete;
    line_editor& operator=(const line_editor&) = delete;

    // The next line, without its end. Ctrl-C abandons it; Ctrl-D in an empty line, or a terminal that has gone, ends the input.
    line_outcome read(const char* prompt, std::string& line);

    // Puts a statement, of one line or more, into the history.
    void remember(const std::string& statement);

  private:
    static unsigned char complete_at_cursor(EditLine* editor, int key);
    static char* prompt_of(EditLine* editor);
    static int next_character(EditLine* editor, wchar_t* character);
    void begin_history();

    std::string history_file_;
    std::function<completions(std::string_view)> complete_;
    EditLine* editor_;
    History* history_;
    std::string prompt_;
    bool interrupted_ = false;
};

// Where the history is kept: $XDG_STATE_HOME/bifun/history, else below ~/.local/state; empty where there is no such place.
std::string history_path();

} // namespace host

#endif
