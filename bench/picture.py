"""Draws the rows that a reader should see at a glance: bars of ours and of the peers, shorter is better."""

import matplotlib

matplotlib.use("svg")
import matplotlib.pyplot as plt

# The rows, and what they are called in the picture.
HEADLINES = {
    "INI load (500)": "load an INI file of 1 MB",
    "INI lookup (500 x 40)": "look a value up in it",
    "INI edit in memory (500)": "change a value in memory",
    "INI change and save (500)": "change a value and save",
    "CP1251 to UTF-8, Russian, AVX2": "CP1251 to UTF-8, 16 MB (AVX2)",
    "UTF-8 to UCS-2, Russian, AVX2": "UTF-8 to UCS-2, 16 MB (AVX2)",
    "CSV, read 32 MB, RFC 4180": "read a CSV file of 32 MB",
    "buffer, read 1 M items": "read a million items back",
    "string map, look up (10000)": "look a key up in a map of 10,000",
    "translate (10000)": "translate a message",
    "date, 4096 texts": "format 4,096 dates",
    "stack logger, on without callbacks, threads (4)": "trace a call, in 4 threads",
}
OURS, PEER = "#d1495b", "#a8b5c2"


def draw(rows, path):
    plt.rcParams.update({"svg.hashsalt": "zynaggr", "font.size": 9, "font.family": "sans-serif", "svg.fonttype": "none"})
    columns, most = 2, 4
    lines = -(-len(rows) // columns)
    figure, axes = plt.subplots(lines, columns, figsize=(10, 1.15 * lines))
    for axis in axes.flat[len(rows):]:
        axis.axis("off")
    for axis, row in zip(axes.flat, rows):
        bars = [("zynAggr", row.ours)] + sorted(row.peers.items(), key=lambda peer: peer[1])[: most - 1]
        names, values = zip(*bars)
        drawn = axis.barh(names, values, color=[OURS if name == "zynAggr" else PEER for name in names], height=0.75)
        axis.bar_label(drawn, [row.shown(value) for value in values], padding=3)
        axis.set_title(HEADLINES[row.name], fontsize=10, loc="left")
        axis.set_xlim(0, 1.25 * max(values))
        axis.set_ylim(most - 0.5, -0.5)  # ours on top, every bar as thick
        axis.xaxis.set_visible(False)
        axis.spines[:].set_visible(False)
        axis.tick_params(left=False)
    figure.tight_layout(h_pad=0.4)
    figure.savefig(path, metadata={"Date": None})
