#!/usr/bin/env python3
"""Prints the benchmark table: each figure beside its floor, the ratio and its target.

Reads the JSON files written by the korva-bench-* programs (run with repetitions and
aggregates) and takes the median CPU time of every benchmark. Output is Markdown, so that the
README's performance section can show it as it is.

    report.py [--machine TEXT] result.json...
    report.py [--machine TEXT] --instructions COUNTS [--hooks HOOKS]

With --instructions the figures are callgrind's instruction counts of one iteration of each
benchmark, the median of the runs of each (COUNTS: lines "name count... result.json" written by
bench/run --instructions), and the targets are judged on them; HOOKS holds lines
"file report|no-report count..." of one load by a library with and without the load report.
"""
import argparse
import json
import re
import statistics
import sys

TIME_SCALE = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}


def load_results(paths):
    """Median CPU seconds and counters per benchmark name, from every file."""
    medians = {}
    for path in paths:
        with open(path) as handle:
            data = json.load(handle)
        runs = {}
        for bench in data.get("benchmarks", []):
            # Benchmarks with a fixed iteration count carry it in their names.
            name = re.sub(r"/iterations:\d+$", "", bench.get("run_name", bench["name"]))
            if bench.get("error_occurred"):
                medians[name] = {"error": bench.get("error_message", "error")}
                continue
            kind = bench.get("run_type")
            if kind == "aggregate" and bench.get("aggregate_name") != "median":
                continue
            if kind == "aggregate" or name not in runs:
                runs[name] = bench
        for name, bench in runs.items():
            if name in medians:
                continue
            entry = dict(bench)
            entry["cpu_seconds"] = bench["cpu_time"] * TIME_SCALE[bench.get("time_unit", "ns")]
            medians[name] = entry
    return medians


def load_counts(path):
    """Results as load_results gives them, with each benchmark's instruction count in place of
    its CPU time; counters come from the JSON file of the counted run."""
    results = {}
    with open(path) as handle:
        for line in handle:
            words = line.split()
            name, runs, json_path = words[0], words[1:-1], words[-1]
            entry = load_results([json_path]).get(name, {"error": "no result"})
            if "error" not in entry:
                entry["cpu_seconds"] = statistics.median(float(run) for run in runs)
            results[name] = entry
    return results


def fmt_count(count):
    if count >= 1e6:
        return "%.2f M" % (count / 1e6)
    if count >= 1e3:
        return "%.1f K" % (count / 1e3)
    return "%d" % count


def verdict(ok):
    return "yes" if ok else "**no**"


def fmt_time(seconds):
    if seconds >= 1e-3:
        return "%.2f ms" % (seconds * 1e3)
    if seconds >= 1e-6:
        return "%.2f us" % (seconds * 1e6)
    return "%.0f ns" % (seconds * 1e9)


# How a figure is shown: a time, or an instruction count with --instructions.
fmt_figure = fmt_time


def fmt_bytes(count):
    if count >= 1e6:
        return "%.2f MB" % (count / 1e6)
    if count >= 1e3:
        return "%.1f KB" % (count / 1e3)
    return "%d B" % count


def missing(results, *names):
    for name in names:
        entry = results.get(name)
        if entry is None:
            return "not run"
        if "error" in entry:
            return entry["error"]
    return None


def load_table(results, out):
    out.append("| load | file | records / values / blobs | load | floor | load / floor | "
               "target <= 1.2 | libxml2 parse + free | load / parse | parse + walk of every "
               "value + free |")
    out.append("|---|---|---|---|---|---|---|---|---|---|")
    failures = 0
    for case in ("example", "100K", "1M", "10M"):
        subject, floor, base = "load/" + case, "load_floor/" + case, "libxml2_parse/" + case
        problem = missing(results, subject, floor, base)
        if problem:
            out.append("| %s | | | %s | | | | | | |" % (case, problem))
            continue
        s, f, b = results[subject], results[floor], results[base]
        ratio = s["cpu_seconds"] / f["cpu_seconds"]
        failures += ratio > 1.2
        parse_ratio = s["cpu_seconds"] / b["cpu_seconds"]
        parse_cell = "%.2f" % parse_ratio
        if case == "example":
            # The example alone is also judged against the bare parse.
            failures += parse_ratio > 1.3
            parse_cell += " (target <= 1.3: %s)" % verdict(parse_ratio <= 1.3)
        walk = results.get("libxml2_walk/" + case)
        walk_cell = ("not run" if walk is None else walk["error"] if "error" in walk
                     else fmt_figure(walk["cpu_seconds"]))
        out.append("| %s | %s | %d / %d / %d | %s | %s | %.2f | %s | %s | %s | %s |" % (
            case, fmt_bytes(s["file_bytes"]), f["records"], f["values"], f["blobs"],
            fmt_figure(s["cpu_seconds"]), fmt_figure(f["cpu_seconds"]), ratio,
            verdict(ratio <= 1.2), fmt_figure(b["cpu_seconds"]), parse_cell, walk_cell))
    return failures


def growth_table(results, out):
    out.append("| growth | load per MB | libxml2 per MB |")
    out.append("|---|---|---|")
    per_mb = {}
    for case in ("100K", "1M", "10M"):
        subject, base = "load/" + case, "libxml2_parse/" + case
        if missing(results, subject, base):
            out.append("| %s | not measured | |" % case)
            continue
        mb = results[subject]["file_bytes"] / 1e6
        per_mb[case] = (results[subject]["cpu_seconds"] / mb, results[base]["cpu_seconds"] / mb)
        load_time, base_time = per_mb[case]
        out.append("| %s | %s | %s |" % (case, fmt_figure(load_time), fmt_figure(base_time)))
    if "100K" in per_mb and "10M" in per_mb:
        ratio = per_mb["10M"][0] / per_mb["100K"][0]
        base_ratio = per_mb["10M"][1] / per_mb["100K"][1]
        out.append("")
        out.append("Per-MB time at 10M over that at 100K: load %.2f (target <= 1.2: %s), "
                   "libxml2 alone %.2f." % (ratio, verdict(ratio <= 1.2), base_ratio))
        return int(ratio > 1.2)
    return 0


def delivery_table(results, out):
    out.append("| delivery | setParam calls | blob entries | store queries | operation | floor | "
               "operation / floor | target <= 1.5 | baseline loop | operation / baseline |")
    out.append("|---|---|---|---|---|---|---|---|---|---|")
    failures = 0
    names = sorted(n for n in results if n.startswith(("profile_delivery/", "tuning_delivery/")))
    for subject in names:
        group, case = subject.split("/", 1)
        floor, base = group + "_floor/" + case, group + "_baseline/" + case
        problem = missing(results, subject, floor, base)
        if problem:
            out.append("| %s | | | | %s | | | | | |" % (subject, problem))
            continue
        s, f, b = results[subject], results[floor], results[base]
        ratio = s["cpu_seconds"] / f["cpu_seconds"]
        failures += ratio > 1.5
        out.append("| %s | %d | %d | %d | %s | %s | %.2f | %s | %s | %.2f |" % (
            subject, s["setParam_calls"], f["blob_entries"], f["store_queries"],
            fmt_figure(s["cpu_seconds"]), fmt_figure(f["cpu_seconds"]), ratio,
            verdict(ratio <= 1.5), fmt_figure(b["cpu_seconds"]),
            s["cpu_seconds"] / b["cpu_seconds"]))
    return failures


def memory_table(results, out):
    out.append("| memory | file | blobs (profile + tuning) | blob bytes | retained heap | "
               "limit 2 x blobs + 64 KiB | within | peak during load | peak / file |")
    out.append("|---|---|---|---|---|---|---|---|---|")
    failures = 0
    for case in ("example", "100K", "1M", "10M"):
        name = "memory/" + case
        problem = missing(results, name)
        if problem:
            out.append("| %s | | %s | | | | | | |" % (case, problem))
            continue
        m = results[name]
        limit = 2 * m["blob_bytes"] + 64 * 1024
        failures += m["retained_bytes"] > limit
        out.append("| %s | %s | %d + %d | %s | %s | %s | %s | %s | %.1f |" % (
            case, fmt_bytes(m["file_bytes"]), m["profile_blobs"], m["tuning_blobs"],
            fmt_bytes(m["blob_bytes"]), fmt_bytes(m["retained_bytes"]), fmt_bytes(limit),
            verdict(m["retained_bytes"] <= limit), fmt_bytes(m["peak_bytes"]),
            m["peak_bytes"] / m["file_bytes"]))
    return failures


def hooks_table(path, out):
    """One load by the library with the load report, nobody listening, over one by the library
    built without it: the hooks' cost, judged within 1%."""
    counts = {}
    with open(path) as handle:
        for line in handle:
            words = line.split()
            counts[(words[0], words[1])] = statistics.median(int(run) for run in words[2:])
    out.append("| load, nobody listening | with the report | without | with / without | "
               "target <= 1.01 |")
    out.append("|---|---|---|---|---|")
    failures = 0
    for name in ("example", "1M"):
        with_report, without = counts.get((name, "report")), counts.get((name, "no-report"))
        if not with_report or not without:
            out.append("| %s | not counted | | | |" % name)
            continue
        ratio = with_report / without
        failures += ratio > 1.01
        out.append("| %s | %s | %s | %.4f | %s |" % (name, fmt_count(with_report),
                                                     fmt_count(without), ratio,
                                                     verdict(ratio <= 1.01)))
    return failures


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--machine", default="", help="one line describing the machine")
    parser.add_argument("--instructions", help="instruction counts written by bench/run")
    parser.add_argument("--hooks", help="loads with and without the load report")
    parser.add_argument("results", nargs="*")
    args = parser.parse_args()
    global fmt_figure
    results = {}
    if args.instructions:
        fmt_figure = fmt_count
        results = load_counts(args.instructions)
    for path in args.results:
        results.update(load_results([path]))
    out = []
    if args.machine:
        out.append("Machine: " + args.machine)
        out.append("")
    failures = load_table(results, out)
    out.append("")
    failures += growth_table(results, out)
    out.append("")
    failures += delivery_table(results, out)
    out.append("")
    if args.instructions:
        if args.hooks:
            failures += hooks_table(args.hooks, out)
            out.append("")
        out.append("Figures are callgrind's instructions of one iteration of each benchmark, after "
                   "its untimed round, median of 3 runs (10M not counted). Targets missed: %d."
                   % failures)
    else:
        failures += memory_table(results, out)
        out.append("")
        out.append("Times are medians of CPU time over repeated runs; ratios compare medians "
                   "measured in the same run. Targets missed: %d." % failures)
    print("\n".join(out))


if __name__ == "__main__":
    sys.exit(main())
