// SPDX-License-Identifier: Apache-2.0
// Two builds of the library side by side in one process: every entry point of the catalogue over the same generated columns, in turns.
// bench/compare builds what it is given and runs this.
//
//     bifun_compare OLD NEW [--filter=REGEX] [--seconds=N] [--rows_per_call=N]
//
// OLD and NEW are files. The operations of the engine are this program's for both. A case is symbol/path, as in bifun_bench. Before it is
// timed its results are compared, for all rows. A ratio that differs from 1 by more than the noise of its rounds, and by more than where
// code happens to lie in memory makes, is measured a second time at the end: what both times say counts. Fails where results differ.

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <regex>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "bench/paired_times.h"
#include "bench/result_difference.h"

namespace {

using namespace bifun;
using namespace bifun::bench;

constexpr double least_change = 0.02;       // less comes of where code lies in memory
constexpr double share_of_first_pass = 0.7; // of the seconds
constexpr double negligible = 1e-3;

struct options {
    std::string libraries[2];
    std::string filter = ".*";
    double seconds = 200;
    std::uint32_t rows_per_call = usual_rows_per_call;
};

struct comparison {
    const entry_point* entry;
    const call_path* path;
    function_pair functions;
    paired_times times{};
    time_change found{};
    std::string difference{}; // of the results
};

struct selected_cases {
    std::vector<comparison> cases;
    std::vector<const char*> missing[2]; // from either library
};

options read_options(int count, char** arguments) {
    constexpr const char* usage = "bifun_compare OLD NEW [--filter=REGEX] [--seconds=N] [--rows_per_call=N]";
    options read;
    std::size_t files = 0;
    for (int i = 1; i < count; ++i) {
        const std::string_view option = arguments[i];
        const auto value_of = [&](std::string_view name) { return option.starts_with(name) ? option.substr(name.size()) : ""; };
        if (!option.starts_with("--") && files < std::size(read.libraries)) {
            read.libraries[files++] = option;
        } else if (const std::string_view filter = value_of("--filter="); !filter.empty()) {
            read.filter = filter;
        } else if (const std::string_view seconds = value_of("--seconds="); !seconds.empty()) {
            const auto [end, error] = std::from_chars(seconds.data(), seconds.data() + seconds.size(), read.seconds);
            if (error != std::errc{} || end != seconds.data() + seconds.size() || !(read.seconds > 0) || !std::isfinite(read.seconds)) {
                throw std::runtime_error("--seconds takes a positive number");
            }
        } else if (const std::string_view rows = value_of("--rows_per_call="); !rows.empty()) {
            read.rows_per_call = parse_rows_per_call(rows);
        } else {
            throw std::runtime_error("no such option: " + std::string(option) + "\nusage: " + usage);
        }
    }
    if (files != std::size(read.libraries)) {
        throw std::runtime_error(std::string("two libraries are compared\nusage: ") + usage);
    }
    return read;
}

std::string name_of(const comparison& comparison) { return std::string(comparison.entry->symbol) + '/' + comparison.path->name; }

selected_cases select_cases(const options& options, void* before, void* after) {
    const std::regex filter(options.filter);
    selected_cases selected;
    for (const entry_point& entry : entry_points) {
        std::vector<comparison> of_entry;
        for (const call_path& path : call_paths) {
            comparison candidate{&entry, &path, {function_of(before, entry), function_of(after, entry)}};
            if (std::regex_search(name_of(candidate), filter)) {
                of_entry.push_back(std::move(candidate));
            }
        }
        if (of_entry.empty()) {
            continue;
        }
        const function_pair& functions = of_entry.front().functions;
        if (functions.before == nullptr) {
            selected.missing[0].push_back(entry.symbol);
        }
        if (functions.after == nullptr) {
            selected.missing[1].push_back(entry.symbol);
        }
        if (functions.before != nullptr && functions.after != nullptr) {
            std::ranges::move(of_entry, std::back_inserter(selected.cases));
        }
    }
    if (selected.cases.empty() && selected.missing[0].empty() && selected.missing[1].empty()) {
        throw std::runtime_error("no case matches " + options.filter);
    }
    return selected;
}

bool is_slower(const time_change& measured) { return measured.least > 1 && measured.ratio > 1 + least_change; }
bool is_faster(const time_change& measured) { return measured.greatest < 1 && measured.ratio < 1 / (1 + least_change); }

const char* verdict(const time_change& measured) { return is_slower(measured) ? "slower" : is_faster(measured) ? "faster" : ""; }

void print_head() { std::printf("%-50s %8s %8s %9s  %-14s\n", "", "OLD", "NEW", "NEW / OLD", "99.9 % sure"); }

void print_case(const comparison& comparison, const char* remark) {
    const auto& [before, after, ratio, least, greatest] = comparison.found;
    std::printf("%-50s %8.2f %8.2f %9.3f  %.3f to %.3f  %s\n", name_of(comparison).c_str(), before, after, ratio, least, greatest, remark);
    std::fflush(stdout);
}

// The first measurement of all cases.
void measure_all(std::vector<comparison>& cases, const options& options) {
    for (comparison& comparison : cases) {
        const auto call = prepare_call(*comparison.entry, *comparison.path, options.rows_per_call);
        const auto second_call = prepare_call(*comparison.entry, *comparison.path, options.rows_per_call);
        comparison.difference = result_difference(*call, *second_call, comparison.functions);
        if (!comparison.difference.empty()) {
            std::printf("%s: results differ: %s\n", name_of(comparison).c_str(), comparison.difference.c_str());
        }
        add_rounds(comparison.times, *call, comparison.functions,
                   options.seconds * share_of_first_pass / static_cast<double>(cases.size()));
        comparison.found = change_of(comparison.times);
        const std::string seen = verdict(comparison.found);
        print_case(comparison, seen.empty() ? "" : (seen + "?").c_str());
    }
}

// The second measurement of those that seem to have changed; returns those that have, of which `found` is of all rounds then.
std::vector<const comparison*> measure_changed(std::vector<comparison>& cases, const options& options) {
    std::vector<comparison*> seeming;
    for (comparison& comparison : cases) {
        if (is_slower(comparison.found) || is_faster(comparison.found)) {
            seeming.push_back(&comparison);
        }
    }
    const double seconds_each = std::min(options.seconds * (1 - share_of_first_pass) / std::max(1.0, static_cast<double>(seeming.size())),
                                         options.seconds * share_of_first_pass / static_cast<double>(cases.size()));
    std::vector<const comparison*> changed;
    for (comparison* const comparison : seeming) {
        paired_times second;
        add_rounds(second, *prepare_call(*comparison->entry, *comparison->path, options.rows_per_call), comparison->functions,
                   seconds_each);
        const time_change again = change_of(second);
        const bool confirmed = is_slower(comparison->found) ? is_slower(again) : is_faster(again);
        std::ranges::copy(second.before, std::back_inserter(comparison->times.before));
        std::ranges::copy(second.after, std::back_inserter(comparison->times.after));
        comparison->found = change_of(comparison->times);
        if (confirmed) {
            changed.push_back(comparison);
        }
    }
    return changed;
}

void print_changed(const char* title, std::vector<const comparison*> changed, bool (*belongs)(const time_change&)) {
    std::erase_if(changed, [&](const comparison* comparison) { return !belongs(comparison->found); });
    std::ranges::sort(changed, std::ranges::greater(),
                      [](const comparison* comparison) { return std::fabs(std::log(comparison->found.ratio)); });
    std::printf("\n%s, measured twice: %zu\n", title, changed.size());
    if (!changed.empty()) {
        print_head();
    }
    for (const comparison* const comparison : changed) {
        print_case(*comparison, "");
    }
}

void print_missing(const char* name, const std::vector<const char*>& symbols) {
    if (!symbols.empty()) {
        std::printf("\nNot in %s: %zu\n", name, symbols.size());
    }
    for (const char* const symbol : symbols) {
        std::printf("%s\n", symbol);
    }
}

void print_totals(const std::vector<comparison>& cases) {
    if (cases.empty()) {
        return;
    }
    double logarithms = 0;
    std::vector<double> widths;
    for (const comparison& comparison : cases) {
        logarithms += std::log(std::max(comparison.found.ratio, negligible));
        widths.push_back((comparison.found.greatest - comparison.found.least) / 2 / comparison.found.ratio);
    }
    const auto middle = widths.begin() + static_cast<std::ptrdiff_t>(widths.size() / 2);
    std::ranges::nth_element(widths, middle);
    std::printf("\n%zu cases, geometric mean of NEW / OLD %.3f. Noise: half of the ratios are known to within %.1f %%.\n", cases.size(),
                std::exp(logarithms / static_cast<double>(cases.size())), 100 * *middle);
}

// Returns whether there is none.
bool print_differences(const std::vector<comparison>& cases) {
    const auto differing = std::ranges::count_if(cases, [](const comparison& comparison) { return !comparison.difference.empty(); });
    std::printf("\nResults differ: %td\n", differing);
    for (const comparison& comparison : cases) {
        if (!comparison.difference.empty()) {
            std::printf("%s: %s\n", name_of(comparison).c_str(), comparison.difference.c_str());
        }
    }
    return differing == 0;
}

bool run(const options& options) {
    void* const before = open_library(options.libraries[0].c_str());
    void* const after = open_library(options.libraries[1].c_str());
    selected_cases selected = select_cases(options, before, after);
    std::printf("OLD %s\nNEW %s%s\nns per row, %u rows per call\n\n", options.libraries[0].c_str(), options.libraries[1].c_str(),
                before == after ? ", the same library" : "", options.rows_per_call);
    print_head();
    measure_all(selected.cases, options);
    const std::vector<const comparison*> changed = measure_changed(selected.cases, options);
    print_missing("OLD", selected.missing[0]);
    print_missing("NEW", selected.missing[1]);
    print_changed("Faster", changed, is_faster);
    print_changed("Slower", changed, is_slower);
    const bool same_results = print_differences(selected.cases);
    print_totals(selected.cases);
    return same_results;
}

} // namespace

int main(int argc, char** argv) {
    try {
        return run(read_options(argc, argv)) ? EXIT_SUCCESS : EXIT_FAILURE;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "bifun_compare: %s\n", failure.what());
        return EXIT_FAILURE;
    }
}
