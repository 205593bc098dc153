"""Makes the table of docs/performance.md from the results of the benchmark programs, and holds it against the goals.

    table.py RUN...                      a folder of results for each run; where a row differs the worse figure counts
    --missed FILE                        writes a filter for the rows that missed their goals, to run them once more
    --update                             puts the tables into docs/performance.md and README.md, and draws the picture

A benchmark is named "workload/implementation", numbers that follow are the sizes. In a row stand the medians of the
elapsed time (or of the bytes on the heap) of ours, of each peer and of the floors, and ours against the best peer.
"ours, so and so" has a row of its own. Workloads that begin with "growth, " stand in a table of their own: what one
element costs at each size, and how much more than at the smallest.

bench/goals.json says for a row, or for the rows of a workload of all sizes, which ratio is wanted and why; a row that it
doesn't name shall be 1 at most. Where "wanted" can't be had, "limit" is what must be kept, and "why" the reason. A row
over its limit, or a goal whose row has gone, is a failure.
"""

import argparse
import datetime
import json
import pathlib
import re
import subprocess
import sys
import textwrap

ROOT = pathlib.Path(__file__).resolve().parent.parent
UNITS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}


class Row:
    """A workload with its sizes, measured in one run; what is "ours, so and so" belongs to the workload's name."""

    def __init__(self, measured, variant, sizes):
        self.measured, self.workload, self.sizes = measured, measured + variant, sizes
        self.ours, self.floors, self.peers = None, {}, {}
        self.unit = "ns"

    @property
    def name(self):
        return self.workload + (f" ({self.sizes})" if self.sizes else "")

    @property
    def ratio(self):
        return self.ours / min(self.peers.values()) if self.peers else None

    def shown(self, value):
        if self.unit != "ns":
            return f"{value:.3g} {self.unit if self.unit == 'bytes' else 'times'}"
        unit = next((unit for unit in ("s", "ms", "us") if value >= UNITS[unit]), "ns")
        return f"{value / UNITS[unit]:.3g} {unit}"

    def cells(self, name=None):
        others = sorted((self.peers if name else self.peers | self.floors).items(), key=lambda other: other[1])
        others = "; ".join(f"{other} {self.shown(value)}" for other, value in others)
        return [name or self.name, self.shown(self.ours), others, f"{self.ratio:.2f}" if self.peers else ""]


def read(folder):
    """The rows by name, the growths by workload and size, and what went wrong."""
    measured, growths, failures = {}, {}, set()
    for file in sorted(pathlib.Path(folder).glob("*.json")):
        for benchmark in json.loads(file.read_text(encoding="utf-8"))["benchmarks"]:
            workload, implementation, *sizes = benchmark["run_name"].split("/")
            if benchmark.get("error_occurred"):
                failures.add(f"{workload}/{implementation}: {benchmark['error_message']}")
            if benchmark.get("aggregate_name") != "median":
                continue
            sizes = [size.removeprefix("threads:") for size in sizes]
            sizes = [size for size in sizes if size.isdigit()]  # not "manual_time"
            time = benchmark["real_time"] * UNITS[benchmark["time_unit"]]
            if workload.startswith("growth, "):
                growths.setdefault(workload.removeprefix("growth, "), {})[int(sizes[0])] = time
                continue
            sizes = " x ".join(sizes)
            values = {"bytes": benchmark["bytes"]} if "bytes" in benchmark else {"ns": time}
            if "allocations" in benchmark:
                values["allocations"] = benchmark["allocations"]
            for unit, value in values.items():
                measured.setdefault((workload, sizes, unit), {})[implementation] = value

    rows = {}
    for (workload, sizes, unit), values in measured.items():
        for ours in sorted(name for name in values if name.startswith("ours")):
            variant = ours.removeprefix("ours") + (", memory asked for" if unit == "allocations" else "")
            row = Row(workload, variant, sizes)
            row.unit, row.ours = unit, values[ours]
            row.floors = {name: value for name, value in values.items() if name.startswith("floor")}
            row.peers = {name: value for name, value in values.items() if not name.startswith(("floor", "ours"))}
            rows[row.name] = row
    return rows, growths, failures


def by_size(row):
    return [int(part) if part.isdigit() else part for part in re.split(r"(\d+)", row.name)]


def table(head, rows):
    return "\n".join(f"| {' | '.join(cells)} |" for cells in [head, ["---"] * len(head), *rows]) + "\n"


def growth_table(growths):
    sizes = sorted(max(growths.values(), key=len))
    rows = []
    for workload, times in growths.items():
        costs = [times[size] / size for size in sorted(times)]
        rows.append([workload, *(f"{Row('', '', '').shown(cost)} ({cost / costs[0]:.2f})" for cost in costs)])
    return table(["growth: cost of one element of", *map(str, sizes)], rows)


def reasons(rows, goals):
    """Why a row is not what was wanted, rows with the same reason together."""
    together = {}
    for row in rows:
        goal = goals.get(row.name) or goals.get(row.workload, {})
        if row.ratio and "why" in goal and round(row.ratio, 2) > goal.get("wanted", 1):
            together.setdefault((goal["why"], goal.get("wanted", 1)), []).append(row)
    for (why, wanted), found in together.items():
        names = "; ".join(f"{row.name}: {row.ratio:.2f}" for row in found)
        yield textwrap.fill(f"- **{names}**, wanted {wanted:g}. {why}", 120, subsequent_indent="  ", break_on_hyphens=False)


def processor():
    found = re.search(r"model name\s*: (.*)", pathlib.Path("/proc/cpuinfo").read_text(encoding="utf-8"))
    return found[1] if found else "an unknown processor"


def where(runs):
    commit = subprocess.run(["git", "-C", ROOT, "log", "-1", "--format=%h"], capture_output=True, text=True, check=True)
    times = "" if runs == 1 else f", the worse of {runs} runs for each row"
    return (f"Measured on {datetime.date.today()}, commit {commit.stdout.strip()}, {processor()}{times}.\n")


def put(file, mark, text):
    """Between the lines <!-- mark --> and <!-- end -->."""
    path = ROOT / file
    before, found, rest = path.read_text(encoding="utf-8").partition(f"<!-- {mark} -->\n")
    if not found:
        sys.exit(f"{file} has no place for {mark}")
    path.write_text(f"{before}{found}\n{text}\n{rest[rest.index('<!-- end -->'):]}", encoding="utf-8")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("runs", nargs="+")
    parser.add_argument("--missed")
    parser.add_argument("--update", action="store_true")
    options = parser.parse_args()
    goals = json.loads((ROOT / "bench/goals.json").read_text(encoding="utf-8"))

    rows, growths, failures = {}, {}, set()
    for run in options.runs:
        more, growths, failed = read(run)
        failures |= failed
        for name, row in more.items():
            if name not in rows or (row.ratio or 0) > (rows[name].ratio or 0):
                rows[name] = row
    rows = sorted(rows.values(), key=by_size)

    head = ["workload", "ours", "peers and floors", "ours / best peer"]
    everything = table(head, (row.cells() for row in rows))
    if growths:
        everything += "\n" + growth_table(growths)
    print(everything)

    missed = []
    for row in rows:
        goal = goals.get(row.name) or goals.get(row.workload, {})
        limit = goal.get("limit", goal.get("wanted", 1))
        if row.ratio and round(row.ratio, 2) > limit:
            missed.append(row)
            print(f"Missed: {row.name}: {row.ratio:.2f}, at most {limit:g}")
    for failure in sorted(failures):
        print(f"Not measured: {failure}")
    if options.missed:
        workloads = "|".join(sorted({re.sub(r"[^\w ]", ".", row.measured) for row in missed}))
        pathlib.Path(options.missed).write_text(f"^({workloads})/" if workloads else "", encoding="utf-8")
    if options.update:
        gone = goals.keys() - {row.name for row in rows} - {row.workload for row in rows}
        if gone:
            sys.exit(f"Goals without a row: {', '.join(sorted(gone))}")
        import picture  # needs matplotlib

        by_name = {row.name: row for row in rows}
        headlines = [by_name[name] for name in picture.HEADLINES]
        picture.draw(headlines, ROOT / "docs/performance.svg")
        put("docs/performance.md", "table", where(len(options.runs)) + "\n" + everything)
        put("docs/performance.md", "reasons", "\n".join(reasons(rows, goals)) + "\n")
        head = ["", "zynAggr", "instead", "zynAggr / best"]
        put("README.md", "table", table(head, (row.cells(picture.HEADLINES[row.name]) for row in headlines)))
    return 1 if missed or failures else 0


if __name__ == "__main__":
    sys.exit(main())
