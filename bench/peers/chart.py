#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Charts of the comparison as SVG on stdout: chart.py ratios|times FILE, with the file that bifun_peers --json=FILE has written."""

import math
import sys

sys.dont_write_bytecode = True
from figures import FAMILIES, PEERS, Run

STYLE = """
.paper { fill: #ffffff; }
text { font: 11px system-ui, -apple-system, 'Segoe UI', Roboto, 'DejaVu Sans', Arial, sans-serif; fill: #1f2328; }
.title { font-size: 15px; font-weight: 600; }
.family { font-size: 13px; font-weight: 600; }
.quiet { fill: #59636e; }
.end { text-anchor: end; }
.middle { text-anchor: middle; }
.grid { stroke: #d1d9e0; stroke-width: 1; }
.axis { stroke: #59636e; stroke-width: 1; }
.ahead { fill: #2f6fdb; }
.behind { fill: #d4681c; }
.noisy { fill-opacity: 0.45; }
.bifun { fill: #2f6fdb; }
.duckdb { fill: #b8860b; }
.clickhouse { fill: #8a5cc2; }
.range { stroke: #b1bac4; stroke-width: 2; }
@media (prefers-color-scheme: dark) {
.paper { fill: #0d1117; }
text { fill: #e6edf3; }
.quiet { fill: #9198a1; }
.grid { stroke: #30363d; }
.axis { stroke: #9198a1; }
.ahead, .bifun { fill: #58a6ff; }
.behind { fill: #f0883e; }
.duckdb { fill: #e3b341; }
.clickhouse { fill: #bc8cff; }
.range { stroke: #484f58; }
}
"""

# Well-known functions, one or two of a family.
KNOWN = (
    "mod(bigint, bigint)", "round(double, 2)", "coalesce(varchar, varchar)", "if(double > 0, double, double)",
    "trim(p)", "substr(u, 3, 5)", "instr(s, 'ta')", "replace(s, 'ta', 'x')", "concat(s, pattern)", "lpad(s, 50, ' ')",
    "extract(year from timestamp)", "add_months(date, 3)", "datediff(month, timestamp, timestamp)", "trunc(timestamp, 'MM')",
    "to_char(timestamp, 'YYYY-MM-DD HH24:MI:SS')", "to_timestamp(text)",
)


def escaped(text):
    return str(text).replace("&", "&amp;").replace("<", "&lt;").replace(">", "&gt;")


def text(x, y, content, classes=""):
    return f'<text x="{x:.1f}" y="{y:.1f}" class="{classes}">{escaped(content)}</text>'


def line(x1, y1, x2, y2, classes):
    return f'<line x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}" class="{classes}"/>'


def svg(width, height, title, parts):
    return "\n".join([
        f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height:.0f}" width="{width}" height="{height:.0f}" role="img">',
        f"<title>{escaped(title)}</title>", f"<style>{STYLE}</style>",
        # The reader's colours need not be those of the page around the picture.
        '<rect width="100%" height="100%" rx="6" class="paper"/>', *parts, "</svg>", ""])


def ticks(low, high, steps=(1, 2, 5)):
    """The numbers of these steps in every power of ten, between the bounds."""
    powers = range(math.floor(math.log10(low)) - 1, math.ceil(math.log10(high)) + 1)
    return [step * 10.0**power for power in powers for step in steps if low * 0.999 <= step * 10.0**power <= high * 1.001]


def log_scale(low, high, left, right):
    return lambda value: left + (right - left) * math.log(min(max(value, low), high) / low) / math.log(high / low)


def ratio_panel(families, left, top, low, high):
    """Bars from 1 on, one to a row, sorted within each family."""
    label_width, bar_width, row_height = 258, 160, 14
    start = left + label_width
    place = log_scale(low, high, start + 32, start + bar_width)
    parts = []
    y = top
    for family, rows in families:
        parts.append(text(left, y + 12, family[0].upper() + family[1:], "family"))
        y += 32
        marks = ticks(low, high, (1, 3))
        parts += [text(place(mark), y - 4, f"{mark:g}", "quiet middle") for mark in marks]
        bottom = y + row_height * len(rows)
        parts += [line(place(mark), y, place(mark), bottom, "axis" if mark == 1 else "grid") for mark in marks]
        for row in sorted(rows, key=lambda row: -row.ratios["all"].value):
            ratio = row.ratios["all"]
            x1, x2 = sorted((place(1), place(ratio.value)))
            classes = ("ahead" if ratio.value >= 1 else "behind") + (" noisy" if ratio.noisy else "")
            parts.append(f'<rect x="{x1:.1f}" y="{y + 2}" width="{max(x2 - x1, 0.5):.1f}" height="{row_height - 4}" class="{classes}"/>')
            parts.append(text(start - 4, y + 11, row.name, "end"))
            value = f"{ratio.value:.2f}" if ratio.value < 10 else f"{ratio.value:.0f}"
            parts.append(text(x2 + 4, y + 11, value, "quiet") if ratio.value >= 1 else text(x1 - 4, y + 11, value, "quiet end"))
            y += row_height
        y += 16
    return parts, y


def ratio_chart(run):
    families = [(name, run.of_family(name)) for name in FAMILIES.values() if run.of_family(name)]
    # Two panels, as equal as they get.
    splits = [[[family for i, family in enumerate(families) if (which >> i & 1) == side] for side in (1, 0)]
              for which in range(1, 2 ** len(families))]
    panels = min(splits, key=lambda split: max(sum(4 + len(rows) for _, rows in side) for side in split))
    values = [row.ratios["all"].value for row in run.rows]
    low, high = min(0.5, *values), max(10.0, *values)
    title = "Time of the faster of DuckDB and ClickHouse / time of bifun"
    parts = [text(12, 22, title, "title"),
             text(12, 40, "Log scale, one thread, ratios of medians. Right of 1, blue: bifun is ahead. "
                          "Faint: the machine's noise swallows the difference.", "quiet")]
    bottom = 0
    for i, panel in enumerate(panels):
        drawn, y = ratio_panel(panel, 12 + 456 * i, 56, low, high)
        parts += drawn
        bottom = max(bottom, y)
    return svg(924, bottom, title, parts)


def time_chart(run):
    """A point for each engine, on one log scale."""
    rows = {row.name: row for row in run.rows}
    missing = [name for name in KNOWN if name not in rows]
    if missing:
        raise SystemExit("no figures of " + ", ".join(missing))
    label_width, width, row_height, top = 290, 880, 24, 84
    spans = [span for name in KNOWN for span in (rows[name].bifun["all"], *rows[name].peers.values())]
    low, high = (function(span.median for span in spans) for function in (min, max))
    place = log_scale(low / 1.2, high * 1.2, label_width + 10, width - 20)
    bottom = top + row_height * len(KNOWN)
    title = "Nanoseconds per row"
    parts = [text(12, 22, title, "title"), text(12, 40, "Log scale, one thread, less is better.", "quiet")]
    for i, name in enumerate(("bifun", *PEERS)):
        x = label_width + 20 + 110 * i
        parts += [f'<circle cx="{x}" cy="36" r="5" class="{name.lower()}"/>', text(x + 10, 40, name)]
    for mark in ticks(low, high):
        parts += [text(place(mark), top - 8, f"{mark:g}", "quiet middle"), line(place(mark), top, place(mark), bottom, "grid")]
    for i, name in enumerate(KNOWN):
        y = top + row_height * (i + 0.5)
        row = rows[name]
        points = {"bifun": row.bifun["all"].median, **{peer: span.median for peer, span in row.peers.items()}}
        parts.append(text(label_width, y + 4, name, "end"))
        parts.append(line(place(min(points.values())), y, place(max(points.values())), y, "range"))
        # bifun last, on top.
        for engine, value in reversed(points.items()):
            parts.append(f'<circle cx="{place(value):.1f}" cy="{y:.1f}" r="5" class="{engine.lower()}">'
                         f"<title>{engine} {value:.2f}</title></circle>")
    return svg(width, bottom + 12, title, parts)


CHARTS = {"ratios": ratio_chart, "times": time_chart}

if __name__ == "__main__":
    if len(sys.argv) != 3 or sys.argv[1] not in CHARTS:
        raise SystemExit("usage: chart.py ratios|times FILE")
    sys.stdout.write(CHARTS[sys.argv[1]](Run(sys.argv[2])))
