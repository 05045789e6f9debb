# SPDX-License-Identifier: Apache-2.0
"""What bifun_peers --json has written, as rows with medians, ratios and what the noise leaves of them."""

import json
import math
import pathlib
import re
import statistics

ROOT = pathlib.Path(__file__).resolve().parents[2]
FAMILIES = {"bifun_str": "strings", "json": "JSON", "bifun_date": "dates", "numeric": "numbers", "conditional": "choices"}
PEERS = ("DuckDB", "ClickHouse")
# bifun with all that the processor has, and made to use less.
BUILDS = {"all": "bifun 2048", "x86-64-v3": "bifun x86-64-v3", "x86-64": "bifun x86-64"}

# Below these ratios a row is behind, and the page says why. The lesser instruction sets stand against peers that use all of the processor.
LEAST_RATIO = {"all": 1.0, "x86-64-v3": 0.8, "x86-64": 0.8}

# A difference of two times that is less cannot be told from none.
LEAST_NS = 0.05
ENOUGH_FOR_QUARTILES = 5


class Span:
    """Median and quartiles of the repetitions, in ns per row; the extremes for quartiles where there are too few repetitions."""

    def __init__(self, costs):
        costs = [max(cost, LEAST_NS) for cost in costs]
        self.median = statistics.median(costs)
        self.low, self.high = min(costs), max(costs)
        if len(costs) >= ENOUGH_FOR_QUARTILES:
            self.low, _, self.high = statistics.quantiles(costs, n=4, method="inclusive")


class Ratio:
    """How many times bifun the peer takes; `noisy` where the quartiles do not tell which of them is ahead."""

    def __init__(self, peer, bifun):
        self.value = peer.median / bifun.median
        self.noisy = peer.low <= bifun.high and bifun.low <= peer.high


class Row:
    def __init__(self, case, families):
        self.name = case["name"]
        self.family = families[case["symbol"]]
        self.bifun = {build: Span(case[name]) for build, name in BUILDS.items()}
        self.peers = {peer: Span(case[peer]) for peer in PEERS if case[peer]}
        fastest = min(self.peers.values(), key=lambda span: span.median)
        self.ratios = {build: Ratio(fastest, span) for build, span in self.bifun.items()}
        self.behind = [build for build, ratio in self.ratios.items() if ratio.value < LEAST_RATIO[build] and not ratio.noisy]


class Run:
    def __init__(self, path):
        try:
            with open(path, encoding="utf-8") as file:
                self.facts = json.load(file)
        except (OSError, ValueError) as failure:
            raise SystemExit(f"no figures: {path}: {failure}") from failure
        for name in (*BUILDS.values(), *PEERS):
            if any(name not in case for case in self.facts["cases"]):
                raise SystemExit(f"{path} has no figures of {name}: bifun_peers needs both peers and --instruction_sets")
        families = families_of_symbols()
        unknown = {case["symbol"] for case in self.facts["cases"]} - families.keys()
        if unknown:
            raise SystemExit(f"{path} has figures of {', '.join(sorted(unknown))}, which the catalogue has not")
        self.rows = [Row(case, families) for case in self.facts["cases"]]

    def of_family(self, family):
        return [row for row in self.rows if row.family == family]

    def mean(self, build):
        return math.exp(statistics.fmean(math.log(row.ratios[build].value) for row in self.rows))


def families_of_symbols():
    """Of every entry point, by the part of the catalogue that it stands in."""
    return {
        symbol: name
        for folder, name in FAMILIES.items()
        for symbol in re.findall(r"^EXPORT\((\w+)", (ROOT / "bop" / folder / "exports.def").read_text(encoding="utf-8"), re.M)
    }
