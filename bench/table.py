"""Prints one table from the results of several benchmark programs.

A benchmark is named "workload/implementation", numbers that follow are the sizes. In a row stand the medians
of the elapsed time of ours, of each peer and of the floors, and ours against the best peer. "ours, so and so" has
a row of its own. Workloads that begin with "growth, " stand in a table of their own: what one element costs at each
size, and how much more than at the smallest.
"""

import json
import sys

UNITS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}


def shown(nanoseconds):
    for unit in ("s", "ms", "us"):
        if nanoseconds >= UNITS[unit]:
            return f"{nanoseconds / UNITS[unit]:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"


def growth_table(growths):
    sizes = sorted(max(growths.values(), key=len))
    print(f"\n| growth: cost of one element of | {' | '.join(map(str, sizes))} |")
    print("|---" * (len(sizes) + 1) + "|")
    for workload, times in growths.items():
        costs = [times[size] / size for size in sorted(times)]
        cells = [f"{shown(cost)} ({cost / costs[0]:.2f})" for cost in costs]
        print(f"| {workload} | {' | '.join(cells)} |")


def main(files):
    rows = {}  # workload with its sizes: implementation: median
    growths = {}  # workload: size: median
    failed = []
    for name in files:
        with open(name, encoding="utf-8") as file:
            benchmarks = json.load(file)["benchmarks"]
        for benchmark in benchmarks:
            workload, implementation, *sizes = benchmark["run_name"].split("/")
            if benchmark.get("error_occurred"):
                failed.append(f"{workload}/{implementation}: {benchmark['error_message']}")
            if benchmark.get("aggregate_name") != "median":
                continue
            sizes = [size.removeprefix("threads:") for size in sizes]
            sizes = [size for size in sizes if size.isdigit()]  # not "manual_time"
            key = workload + (f" ({' x '.join(sizes)})" if sizes else "")
            time = benchmark["real_time"] * UNITS[benchmark["time_unit"]]
            if workload.startswith("growth, "):
                growths.setdefault(workload.removeprefix("growth, "), {})[int(sizes[0])] = time
                continue
            rows.setdefault(key, {})[implementation] = time

    if rows:
        print("| workload | ours | peers and floors | ours / best peer |")
        print("|---|---|---|---|")
    for workload, times in rows.items():
        peers = {name: time for name, time in times.items() if not name.startswith("ours")}
        real = [time for name, time in peers.items() if not name.startswith("floor")]
        others = "; ".join(f"{name} {shown(time)}" for name, time in sorted(peers.items(), key=lambda p: p[1]))
        for name in sorted(times.keys() - peers.keys()):
            ratio = f"{times[name] / min(real):.2f}" if real else ""
            print(f"| {workload}{name.removeprefix('ours')} | {shown(times[name])} | {others} | {ratio} |")
    if growths:
        growth_table(growths)
    for failure in sorted(set(failed)):
        print(f"\nNot measured: {failure}")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
