#!/usr/bin/env python3
"""Makes the report of a benchmark run: report.py RESULTS.json LIBRARY CACHE FOLDER.

Reads the JSON of the benchmarks, looks into the library, and writes report.md, report.json and the charts into the
folder. CACHE is the CMake cache of the build. Ends with 0 whatever the ratios are: machines differ.
"""

import json
import os
import re
import subprocess
import sys
from pathlib import Path

from charts import growth_charts, time_text
from rows import rows

CLEAN = re.compile(r"/(iterations:\d+|min_time:[0-9.]+|repeats:\d+)")
NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}


def medians(results):
    """The median entry of every benchmark by its name."""
    return {
        CLEAN.sub("", entry["run_name"]): entry
        for entry in results["benchmarks"]
        if entry.get("aggregate_name") == "median"
    }


def times_of(entries):
    """Processor times in ns, which a busy machine disturbs least. Counters named like benchmarks hold seconds."""
    times = {}
    for name, entry in entries.items():
        times[name] = entry["cpu_time"] * NANOSECONDS[entry["time_unit"]]
        times |= {counter: value * 1e9 for counter, value in entry.items() if "/" in counter}
    return times


def line(operation, ours, peer, peers, goal, unit="ns", limit=None):
    ratio = ours / peers if peers else ours
    ns = {"ours_ns": ours, "peer": peer, "peer_ns": peers} if unit == "ns" else \
        {"ours_ns": None, "peer": peer, "peer_ns": None, f"ours_{unit}": ours, f"peer_{unit}": peers}
    return {"operation": operation, **ns, "ratio": ratio, "goal": goal, "limit_ns": limit}


def compared(times):
    """A line for each row whose benchmarks all ran: a machine may lack a path."""
    cycle = times.get("cycles/1000", 0) / 1000
    for row in rows():
        if any(name not in times for name in row.ours + row.peers + row.limit):
            continue
        ours, peers, limit = (sum(times[name] for name in names) for names in (row.ours, row.peers, row.limit))
        if row.limit_cycles and cycle:
            limit = row.limit_cycles * cycle
        yield line(row.operation, ours, row.peer, peers * row.times, row.goal, limit=limit or None)


def readelf(option, library):
    return subprocess.run(["readelf", option, library], capture_output=True, text=True, check=True).stdout


def own_constructors(library):
    """The entries of .init_array but for those that the compiler's own files bring: start files, processor check."""
    section = re.search(r"\.init_array\s+\S+\s+([0-9a-f]+)\s+\S+\s+([0-9a-f]+)", readelf("-SW", library))
    if not section:
        return []
    start, size = int(section[1], 16), int(section[2], 16)
    symbols = re.findall(r":\s+([0-9a-f]+)\s+\d+\s+FUNC.*\s(\S+)$", readelf("-sW", library), re.MULTILINE)
    names = {int(address, 16): name for address, name in symbols}
    entries = re.findall(r"^([0-9a-f]+)\s+\S+\s+R_\S+_RELATIVE\s+([0-9a-f]+)$", readelf("-rW", library), re.MULTILINE)
    functions = [int(function, 16) for at, function in entries if start <= int(at, 16) < start + size]
    constructors = [names.get(function, hex(function)) for function in functions]
    return [name for name in constructors if name not in ("frame_dummy", "__cpu_indicator_init")]


def checked(entries, library):
    """Lines that count something else than time."""
    for bits in (3, 4):
        entry = entries.get(f"peak_memory/{bits}")
        if entry:
            operation = f"peak memory of an image build, sample bits {bits}"
            yield line(operation, entry["bytes"], "buffers it must hold", entry["needed"], 1.5, "bytes")
    allocations = sum(entry.get("allocations", 0) for entry in entries.values())
    yield line("allocations in the entry points and set_depth_engine_config", allocations, "none", 0, 0, "count")
    yield line("static constructors of the shared library", len(own_constructors(library)), "none", 0, 0, "count")


TIE = 1.02  # a median of times comes out that much higher or lower in the next run


def verdict(entry):
    """How a line stands to its goal: yes, tie, no; empty without a goal."""
    if entry["goal"] is None:
        return ""
    if entry["ratio"] <= entry["goal"]:
        return "yes"
    timed = entry["ours_ns"] is not None
    return "tie" if timed and entry["ratio"] <= entry["goal"] * TIE else "no"


def amount(value, unit):
    if unit == "ns":
        return time_text(value)
    return f"{value / 1024:.0f} KiB" if unit == "bytes" else f"{value:.0f}"


def markdown_line(entry):
    unit = next((unit for unit in ("bytes", "count") if f"ours_{unit}" in entry), "ns")
    ours, peers = entry[f"ours_{unit}"], entry[f"peer_{unit}"]
    goal = entry["goal"]
    cells = [
        entry["operation"],
        amount(ours, unit), entry["peer"],
        amount(peers, unit) if peers else "", f"{entry['ratio']:.3g}", "" if goal is None else f"{goal:.3g}",
        verdict(entry).replace("no", "**no**"),
        "" if entry["limit_ns"] is None else time_text(entry["limit_ns"])
    ]
    return "| " + " | ".join(cells) + " |"


def cached(cache, name):
    found = re.search(rf"^{name}:\w+=(.*)$", cache, re.MULTILINE)
    return found[1] if found else ""


def machine(context, cache):
    """What was measured on, and how it was built."""
    model = re.search(r"model name\s*:\s*(.*)", Path("/proc/cpuinfo").read_text(encoding="utf-8"))
    compiler = subprocess.run([cached(cache, "CMAKE_CXX_COMPILER"), "--version"],
                              capture_output=True, text=True, check=True).stdout.splitlines()[0]
    load = ", ".join(f"{value:.1f}" for value in context["load_avg"])
    yield f"- Date: {context['date'][:10]}"
    yield f"- Machine: {model[1] if model else os.uname().machine}, {context['num_cpus']} processors; load {load}"
    yield f"- Compiler: {compiler}, {cached(cache, 'CMAKE_CXX_FLAGS_RELEASE')} -ffp-contract=off"


def markdown(lines, context, cache):
    verdicts = [verdict(entry) for entry in lines if entry["goal"] is not None]
    reached = f"{verdicts.count('yes')} of {len(verdicts)}, ties: {verdicts.count('tie')}"
    return "\n".join([
        "# Benchmarks", "", *machine(context, cache), f"- Goals reached: {reached}", "",
        "| Operation | Ours | Peer | Peer's | Ratio | Goal | Reached | Limit |",
        "|---|---:|---|---:|---:|---:|---|---:|", *map(markdown_line, lines), ""
    ])


def main():
    results_path, library, cache_path, folder = map(Path, sys.argv[1:])
    results = json.loads(results_path.read_text(encoding="utf-8"))
    entries = medians(results)
    times = times_of(entries)
    lines = [*compared(times), *checked(entries, library)]
    cache = cache_path.read_text(encoding="utf-8")
    text = markdown(lines, results["context"], cache)
    (folder / "report.md").write_text(text, encoding="utf-8")
    (folder / "report.json").write_text(json.dumps(lines, indent=2) + "\n", encoding="utf-8")
    for name, chart in growth_charts(times):
        (folder / name).write_text(chart.svg(), encoding="utf-8")
    print(text)


if __name__ == "__main__":
    main()
