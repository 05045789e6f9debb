// SPDX-License-Identifier: Apache-2.0
// The same expressions over the same data through bifun, DuckDB and ClickHouse in one run, single-threaded.
//
// What is measured. Each engine holds the table in memory. For every case it runs two queries over all rows:
//
//     measured   SELECT touch(c1), touch(c2), .., aggregate(expression) FROM t
//     baseline   SELECT touch(c1), touch(c2), .., aggregate(r)          FROM t
//
// c1, c2, .. are the columns that the expression reads, and r, which is one of them or stands among them, is a column without NULLs of
// the expression's type. Both queries read the same columns and aggregate as many values of the same types, so their difference is what
// the expression costs. `aggregate` is exclusive or for BIGINT, sum for DOUBLE, max for DECIMAL and TIMESTAMP, the sum of the lengths
// for VARCHAR; `touch` is max, min, avg or the greatest length.
//
// For bifun an executor's loop stands in for the query: it walks the table in batches (2,048 rows, DuckDB's vector size, and others
// beside it), calls the entry point, reads every value of c1, c2, .. once, and aggregates the result column as above. Condition columns
// are the host's own: `d > 0` is evaluated for each batch by a plain loop within bifun's time. The embedded engine's setters are plain
// stores and its decimals are packed, as engine/columns.h and engine/decimal.h let an engine say.
//
// The engines take turns, in another order in every round, each beginning with both queries uncounted, which fills the caches, then
// the two in alternating order; the figure is the median over the repetitions of measured minus baseline, in processor time per row. Three
// rounds before that are not counted: ClickHouse compiles an expression at run time when it has seen it three times, its default.
// The aggregates of all engines are compared, and before that the values of the first 1,000 rows one by one; a difference fails the run.
//
// With --instruction_sets the library runs two more times in the same rounds, made to use less than the processor has. The peers use all
// of it.
//
// Options: --rows=N --repetitions=N --filter=REGEX --peers=DIRECTORY --instruction_sets --json=FILE --raw --explain

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <list>
#include <numeric>
#include <optional>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "bench/bench_data.h"
#include "bench/peers/bifun_run.h"
#include "bench/peers/clickhouse.h"
#include "bench/peers/duckdb.h"
#include "bench/peers/figures.h"
#include "bench/peers/sql.h"

namespace {

using namespace bifun::peers;

struct options {
    std::uint32_t rows = 4'000'000;
    std::uint32_t repetitions = 15;
    std::string filter = ".*";
    std::string peers = BIFUN_PEERS_DIR;
    std::string json = {}; // the file that gets the figures, if any
    bool instruction_sets = false;
    bool raw = false;
    bool explain = false;
};

constexpr std::uint32_t warm_up_rounds = 3;
constexpr std::uint32_t sampled_rows = 1000;
constexpr std::uint32_t batch_sizes[] = {2048, 1024, 65536};
constexpr const char* lesser_instruction_sets[] = {"x86-64-v3", "x86-64"};

// Sums of doubles depend on the order of the additions; everything else is exact.
bool agree(const std::string& a, const std::string& b) {
    if (a == b) {
        return true;
    }
    char* end_a = nullptr;
    char* end_b = nullptr;
    const long double number_a = std::strtold(a.c_str(), &end_a);
    const long double number_b = std::strtold(b.c_str(), &end_b);
    return *end_a == '\0' && *end_b == '\0' && std::fabs(number_a - number_b) <= 1e-9L * std::max(std::fabs(number_a), 1.0L);
}

// ---- options ----

std::optional<std::string_view> value_of(std::string_view option, std::string_view name) {
    return option.starts_with(name) ? std::optional(option.substr(name.size())) : std::nullopt;
}

std::uint32_t positive_number(std::string_view text) {
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size() || number == 0) {
        throw std::runtime_error("not a positive number: " + std::string(text));
    }
    return number;
}

options read_options(int count, char** arguments) {
    options read;
    for (int i = 1; i < count; ++i) {
        const std::string_view option = arguments[i];
        if (const auto rows = value_of(option, "--rows=")) {
            read.rows = positive_number(*rows);
        } else if (const auto repetitions = value_of(option, "--repetitions=")) {
            read.repetitions = positive_number(*repetitions);
        } else if (const auto filter = value_of(option, "--filter=")) {
            read.filter = *filter;
        } else if (const auto peers = value_of(option, "--peers=")) {
            read.peers = *peers;
        } else if (const auto json = value_of(option, "--json=")) {
            read.json = *json;
        } else if (option == "--instruction_sets") {
            read.instruction_sets = true;
        } else if (option == "--raw") {
            read.raw = true;
        } else if (option == "--explain") {
            read.explain = true;
        } else {
            throw std::runtime_error("unknown option " + std::string(option) +
                                     "; there are --rows=N --repetitions=N --filter=REGEX --peers=DIRECTORY --instruction_sets --json=FILE "
                                     "--raw --explain");
        }
    }
    return read;
}

std::string processor() {
    std::ifstream file("/proc/cpuinfo");
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("model name")) {
            return line.substr(line.find(':') + 2);
        }
    }
    return "unknown processor";
}

// ---- the run ----

// Shuffled: who comes after a peer finds the machine in another state than who comes after bifun.
std::vector<std::size_t> order_of_round(std::size_t contestants, std::uint32_t round) {
    std::vector<std::size_t> order(contestants);
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::sort(order, {}, [&](std::size_t i) { return bifun::bench::random_at(round, i); });
    return order;
}

std::vector<timing> measure(const bench_case& bench_case, const std::vector<contestant>& contestants, std::uint32_t repetitions) {
    std::vector<timing> timings(contestants.size());
    for (std::uint32_t round = 0; round < warm_up_rounds + repetitions; ++round) {
        for (const std::size_t i : order_of_round(contestants.size(), round)) {
            if (!takes_part(contestants[i], bench_case)) {
                continue;
            }
            const auto run = [&](part part) { return contestants[i].run(bench_case, part); };
            // The engine before has taken the caches, and which of the two queries comes first must not matter.
            (void)run(part::baseline);
            (void)run(part::measured);
            const bool baseline_first = round % 2 == 0;
            const measurement first = run(baseline_first ? part::baseline : part::measured);
            const measurement second = run(baseline_first ? part::measured : part::baseline);
            const measurement& measured = baseline_first ? second : first;
            const measurement& baseline = baseline_first ? first : second;
            timings[i].value = measured.value;
            if (round >= warm_up_rounds) {
                timings[i].measured.push_back(measured.seconds);
                timings[i].baseline.push_back(baseline.seconds);
            }
        }
    }
    return timings;
}

// ---- comparing results ----

bool is_compared(const contestant& contestant, const bench_case& bench_case) {
    const compared with = bench_case.compared_with;
    return takes_part(contestant, bench_case) && (!contestant.peer || with == compared::both ||
                                                  with == (contestant.peer == dialect::duckdb ? compared::duckdb : compared::clickhouse));
}

std::vector<std::string> rows_of(const std::string& sample) {
    std::vector<std::string> rows;
    std::istringstream stream(sample);
    for (std::string row; std::getline(stream, row, separator);) {
        rows.push_back(row);
    }
    return rows;
}

// Prints the first row in which a peer's value is not bifun's, and returns whether there was one.
bool samples_differ(const bench_case& bench_case, const std::vector<contestant>& contestants) {
    const std::vector<std::string> expected = rows_of(contestants[0].sample(bench_case));
    bool differ = false;
    for (const contestant& contestant : contestants) {
        if (!contestant.peer || !is_compared(contestant, bench_case)) {
            continue;
        }
        const std::vector<std::string> found = rows_of(contestant.sample(bench_case));
        const auto [mine, theirs] = std::ranges::mismatch(expected, found, agree);
        if (mine != expected.end() || theirs != found.end()) {
            const std::string none = "nothing";
            std::fprintf(stderr, "bifun_peers: %s: in row %td %s gives %s, bifun %s\n", std::string(bench_case.name).c_str(),
                         mine - expected.begin(), contestant.name.c_str(), (theirs != found.end() ? *theirs : none).c_str(),
                         (mine != expected.end() ? *mine : none).c_str());
            differ = true;
        }
    }
    return differ;
}

bool totals_differ(const bench_case& bench_case, const std::vector<contestant>& contestants, const std::vector<timing>& timings) {
    bool differ = false;
    for (std::size_t i = 1; i < timings.size(); ++i) {
        if (is_compared(contestants[i], bench_case) && !agree(timings[i].value, timings[0].value)) {
            std::fprintf(stderr, "bifun_peers: %s: %s gives %s, bifun %s\n", std::string(bench_case.name).c_str(),
                         contestants[i].name.c_str(), timings[i].value.c_str(), timings[0].value.c_str());
            differ = true;
        }
    }
    return differ;
}

int run(const options& options) {
    std::vector<bench_case> cases;
    std::vector<std::string_view> names;
    const std::regex filter(options.filter);
    for (const bench_case& bench_case : bench_cases()) {
        if (std::regex_search(std::string(bench_case.name), filter)) {
            cases.push_back(bench_case);
            std::ranges::copy(columns_read(bench_case), std::back_inserter(names));
        }
    }
    if (cases.empty()) {
        throw std::runtime_error("no case matches " + options.filter);
    }
    const table table = make_table(names, options.rows);

    std::vector<contestant> contestants;
    bifun_library library = load_bifun(BIFUN_LIBRARY);
    const auto add_bifun = [&](const std::string& name, bifun_library& library, std::uint32_t batch_rows) {
        contestants.push_back({name, [&, batch_rows](const bench_case& bench_case, part part) {
                                   return run_bifun(library, table, bench_case, batch_rows, part);
                               }});
    };
    for (const std::uint32_t batch_rows : batch_sizes) {
        add_bifun("bifun " + std::to_string(batch_rows), library, batch_rows);
    }
    std::list<bifun_library> lesser;
    for (const char* const set : lesser_instruction_sets) {
        if (options.instruction_sets) {
            add_bifun(std::string("bifun ") + set, lesser.emplace_back(load_bifun_copy(BIFUN_LIBRARY, set)), batch_sizes[0]);
        }
    }
    const std::uint32_t sampled = std::min(sampled_rows, options.rows);
    contestants[0].sample = [&](const bench_case& bench_case) { return sample_bifun(library, table, bench_case, sampled); };
    const duckdb_pointer duckdb = open_duckdb(options.peers + "/libduckdb.so");
    const clickhouse_pointer clickhouse = open_clickhouse(options.peers + "/libchdb.so");
    const auto add_peer = [&](const char* name, dialect dialect, const std::string& version,
                              const std::function<measurement(const std::string&)>& run_query) {
        contestants.push_back(
            {name,
             [=](const bench_case& bench_case, part part) {
                 return run_query(part == part::measured ? measured_query(bench_case, dialect) : baseline_query(bench_case, dialect));
             },
             dialect, [=](const bench_case& bench_case) { return run_query(sample_query(bench_case, dialect, sampled)).value; }, version});
    };
    if (duckdb != nullptr) {
        load_duckdb(*duckdb, table);
        add_peer("DuckDB", dialect::duckdb, duckdb_version(*duckdb), [&](const std::string& query) { return run_duckdb(*duckdb, query); });
    }
    if (clickhouse != nullptr) {
        load_clickhouse(*clickhouse, table);
        add_peer("ClickHouse", dialect::clickhouse, clickhouse_version(*clickhouse),
                 [&](const std::string& query) { return run_clickhouse(*clickhouse, query); });
    }
    if (duckdb == nullptr || clickhouse == nullptr) {
        std::fprintf(stderr, "bifun_peers: %s%s not found in %s; bench/peers/fetch.sh gets both\n",
                     duckdb == nullptr ? "libduckdb.so " : "", clickhouse == nullptr ? "libchdb.so " : "", options.peers.c_str());
    }

    const run_facts facts{options.rows, options.repetitions, processor()};
    print_head(facts, contestants);
    std::vector<figures_of_case> figures;
    int exit_status = EXIT_SUCCESS;
    for (const bench_case& bench_case : cases) {
        if (options.explain && duckdb != nullptr) {
            std::fprintf(stderr, "%s\n%s\n", measured_query(bench_case, dialect::duckdb).c_str(),
                         run_duckdb(*duckdb, "EXPLAIN " + measured_query(bench_case, dialect::duckdb)).value.c_str());
        }
        if (samples_differ(bench_case, contestants)) {
            exit_status = EXIT_FAILURE;
        }
        figures.push_back({&bench_case, measure(bench_case, contestants, options.repetitions)});
        const std::vector<timing>& timings = figures.back().timings;
        print_row(facts, contestants, bench_case, timings);
        if (options.raw) {
            print_raw(facts, contestants, bench_case, timings);
        }
        if (totals_differ(bench_case, contestants, timings)) {
            exit_status = EXIT_FAILURE;
        }
    }
    if (!options.json.empty()) {
        write_json(options.json, facts, contestants, figures);
    }
    unload_bifun(library);
    std::ranges::for_each(lesser, unload_bifun);
    return exit_status;
}

} // namespace

int main(int argc, char** argv) {
    try {
        return run(read_options(argc, argv));
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "bifun_peers: %s\n", failure.what());
        return EXIT_FAILURE;
    }
}
