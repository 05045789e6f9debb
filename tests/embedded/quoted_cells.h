// SPDX-License-Identifier: Apache-2.0
// The examples of a page of the reference: rows of its tables.
#ifndef BIFUN_TESTS_EMBEDDED_QUOTED_CELLS_H
#define BIFUN_TESTS_EMBEDDED_QUOTED_CELLS_H

#include <string>
#include <vector>

// What a line has in backticks; a bar within a cell is written \|.
inline std::vector<std::string> quoted_cells(const std::string& line) {
    std::vector<std::string> cells;
    for (std::size_t begin = line.find('`'); begin != std::string::npos; begin = line.find('`', begin)) {
        const std::size_t end = line.find('`', begin + 1);
        std::string cell = line.substr(begin + 1, end - begin - 1);
        for (std::size_t bar = cell.find("\\|"); bar != std::string::npos; bar = cell.find("\\|")) {
            cell.erase(bar, 1);
        }
        cells.push_back(cell);
        begin = end + 1;
    }
    return cells;
}

// Whether a cell is a text in quotes, and what stands between them.
inline bool is_text(const std::string& cell) { return cell.size() >= 2 && cell.front() == '\'' && cell.back() == '\''; }
inline std::string text_in(const std::string& cell) { return cell.substr(1, cell.size() - 2); }

#endif
