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
// The engines take turns, each beginning with a baseline that is not counted and fills the caches, then the two queries in alternating
// order; the figure is the median over the repetitions of measured minus baseline, in processor time per row. Five rounds before that are
// not counted: ClickHouse compiles an expression at run time when it has seen it three times, its default. The aggregates of all engines
// are compared, and before that the values of the first 1,000 rows one by one; a difference fails the run.
//
// Options: --rows=N --repetitions=N --filter=REGEX --peers=DIRECTORY --raw --explain

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <optional>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "bench/peers/bifun_run.h"
#include "bench/peers/clickhouse.h"
#include "bench/peers/duckdb.h"
#include "bench/peers/sql.h"

namespace {

using namespace bifun::peers;

struct options {
    std::uint32_t rows = 4'000'000;
    std::uint32_t repetitions = 15;
    std::string filter = ".*";
    std::string peers = BIFUN_PEERS_DIR;
    bool raw = false;
    bool explain = false;
};

constexpr std::uint32_t warm_up_rounds = 5;
constexpr std::uint32_t sampled_rows = 1000;
constexpr std::uint32_t batch_sizes[] = {2048, 1024, 65536};

// A column of the report: one engine in one configuration.
struct contestant {
    std::string name;
    std::function<measurement(const bench_case&, part)> run;
    std::optional<dialect> peer = std::nullopt;                     // unless it is bifun
    std::function<std::string(const bench_case&)> sample = nullptr; // the values in the first rows
};

bool takes_part(const contestant& contestant, const bench_case& bench_case) {
    return !contestant.peer || !expression_of(bench_case, *contestant.peer).empty();
}

// Empty where the engine does not take part.
struct timing {
    std::vector<double> measured; // seconds
    std::vector<double> baseline;
    std::string value;
};

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

double cost(const timing& timing) {
    std::vector<double> differences(timing.measured.size());
    std::ranges::transform(timing.measured, timing.baseline, differences.begin(), std::minus<>());
    return median(differences);
}

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
        } else if (option == "--raw") {
            read.raw = true;
        } else if (option == "--explain") {
            read.explain = true;
        } else {
            throw std::runtime_error("unknown option " + std::string(option) +
                                     "; there are --rows=N --repetitions=N --filter=REGEX --peers=DIRECTORY --raw --explain");
        }
    }
    return read;
}

// ---- report ----

std::string processor() {
    std::ifstream file("/proc/cpuinfo");
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("model name")) {
            return line.substr(line.find(':') + 2);
        }
    }
    return "unknown processor";
}

void print_head(const std::vector<contestant>& contestants) {
    std::printf("| expression |");
    for (const contestant& contestant : contestants) {
        std::printf(" %s |", contestant.name.c_str());
    }
    for (std::size_t i = std::size(batch_sizes); i < contestants.size(); ++i) {
        std::printf(" %s / bifun |", contestants[i].name.c_str());
    }
    std::printf("\n|---|");
    for (std::size_t i = 0; i < 2 * contestants.size() - std::size(batch_sizes); ++i) {
        std::printf("--:|");
    }
    std::printf("\n");
}

void print_row(const bench_case& bench_case, const std::vector<timing>& timings, std::uint32_t rows) {
    std::printf("| %s |", std::string(bench_case.name).c_str());
    std::vector<double> nanoseconds;
    for (const timing& timing : timings) {
        nanoseconds.push_back(timing.measured.empty() ? std::nan("") : cost(timing) * 1e9 / rows);
        std::printf(timing.measured.empty() ? " - |" : " %.2f |", nanoseconds.back());
    }
    for (std::size_t i = std::size(batch_sizes); i < timings.size(); ++i) {
        std::printf(timings[i].measured.empty() ? " - |" : " %.1f |", nanoseconds[i] / nanoseconds[0]);
    }
    std::printf("\n");
    std::fflush(stdout);
}

void print_raw(const bench_case& bench_case, const std::vector<contestant>& contestants, const std::vector<timing>& timings,
               std::uint32_t rows) {
    for (std::size_t i = 0; i < timings.size(); ++i) {
        const auto [measured, baseline, value] = timings[i];
        if (measured.empty()) {
            continue;
        }
        std::fprintf(stderr, "%-34s %-14s measured %8.3f least %8.3f, baseline %8.3f least %8.3f ns per row; result %s\n",
                     std::string(bench_case.name).c_str(), contestants[i].name.c_str(), median(measured) * 1e9 / rows,
                     *std::ranges::min_element(measured) * 1e9 / rows, median(baseline) * 1e9 / rows,
                     *std::ranges::min_element(baseline) * 1e9 / rows, value.c_str());
    }
}

// ---- the run ----

std::vector<timing> measure(const bench_case& bench_case, const std::vector<contestant>& contestants, std::uint32_t repetitions) {
    std::vector<timing> timings(contestants.size());
    for (std::uint32_t round = 0; round < warm_up_rounds + repetitions; ++round) {
        for (std::size_t i = 0; i < contestants.size(); ++i) {
            if (!takes_part(contestants[i], bench_case)) {
                continue;
            }
            const auto run = [&](part part) { return contestants[i].run(bench_case, part); };
            // The engine before has taken the caches, and which of the two queries comes first must not matter.
            (void)run(part::baseline);
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
    for (const std::uint32_t batch_rows : batch_sizes) {
        contestants.push_back({"bifun " + std::to_string(batch_rows), [&, batch_rows](const bench_case& bench_case, part part) {
                                   return run_bifun(library, table, bench_case, batch_rows, part);
                               }});
    }
    const std::uint32_t sampled = std::min(sampled_rows, options.rows);
    contestants[0].sample = [&](const bench_case& bench_case) { return sample_bifun(library, table, bench_case, sampled); };
    const duckdb_pointer duckdb = open_duckdb(options.peers + "/libduckdb.so");
    const clickhouse_pointer clickhouse = open_clickhouse(options.peers + "/libchdb.so");
    const auto add_peer = [&](const char* name, dialect dialect, const std::function<measurement(const std::string&)>& run_query) {
        contestants.push_back(
            {name,
             [=](const bench_case& bench_case, part part) {
                 return run_query(part == part::measured ? measured_query(bench_case, dialect) : baseline_query(bench_case, dialect));
             },
             dialect, [=](const bench_case& bench_case) { return run_query(sample_query(bench_case, dialect, sampled)).value; }});
    };
    std::string versions;
    if (duckdb != nullptr) {
        load_duckdb(*duckdb, table);
        versions += ", DuckDB " + duckdb_version(*duckdb);
        add_peer("DuckDB", dialect::duckdb, [&](const std::string& query) { return run_duckdb(*duckdb, query); });
    }
    if (clickhouse != nullptr) {
        load_clickhouse(*clickhouse, table);
        versions += ", ClickHouse " + clickhouse_version(*clickhouse);
        add_peer("ClickHouse", dialect::clickhouse, [&](const std::string& query) { return run_clickhouse(*clickhouse, query); });
    }
    if (duckdb == nullptr || clickhouse == nullptr) {
        std::fprintf(stderr, "bifun_peers: %s%s not found in %s; bench/peers/fetch.sh gets both\n",
                     duckdb == nullptr ? "libduckdb.so " : "", clickhouse == nullptr ? "libchdb.so " : "", options.peers.c_str());
    }

    std::printf("ns per row, one thread; %u rows, median of %u; %s%s. bifun by rows per batch.\n\n", options.rows, options.repetitions,
                processor().c_str(), versions.c_str());
    print_head(contestants);
    int exit_status = EXIT_SUCCESS;
    for (const bench_case& bench_case : cases) {
        if (options.explain && duckdb != nullptr) {
            std::fprintf(stderr, "%s\n%s\n", measured_query(bench_case, dialect::duckdb).c_str(),
                         run_duckdb(*duckdb, "EXPLAIN " + measured_query(bench_case, dialect::duckdb)).value.c_str());
        }
        if (samples_differ(bench_case, contestants)) {
            exit_status = EXIT_FAILURE;
        }
        const std::vector<timing> timings = measure(bench_case, contestants, options.repetitions);
        print_row(bench_case, timings, options.rows);
        if (options.raw) {
            print_raw(bench_case, contestants, timings, options.rows);
        }
        if (totals_differ(bench_case, contestants, timings)) {
            exit_status = EXIT_FAILURE;
        }
    }
    unload_bifun(library);
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
