#!/usr/bin/env python3
"""Runs the benchmarks and writes a table of medians and ratios.

usage: bench/run.py BUILD_DIR [OUT.md] [benchmark options, for example --benchmark_filter=uniform/1000000]
"""
import json
import os
import platform
import re
import statistics
import subprocess
import sys


def first_line(command):
    return subprocess.run(command, capture_output=True, text=True, check=False).stdout.split("\n")[0].strip()


def cpu_model():
    with open("/proc/cpuinfo", encoding="utf-8") as info:
        match = re.search(r"model name\s*:\s*(.*)", info.read())
    return match.group(1) if match else platform.processor()


def compiler(build_dir):
    with open(os.path.join(build_dir, "CMakeCache.txt"), encoding="utf-8") as cache:
        path = re.search(r"CMAKE_CXX_COMPILER:\w+=(.*)", cache.read()).group(1)
    return first_line([path, "--version"])


def medians(build_dir, options):
    program = os.path.join(build_dir, "bench", "run_bench")
    command = [program, "--benchmark_repetitions=5", "--benchmark_enable_random_interleaving=true",
               "--benchmark_format=json", *options]
    listed = subprocess.run([program, "--benchmark_list_tests", *options], capture_output=True, text=True, check=True)
    runs = json.loads(subprocess.run(command, capture_output=True, text=True, check=True).stdout)
    # The runs come in random order; the table keeps the order in which the benchmarks are registered.
    times = {name.split("/iterations")[0]: [] for name in listed.stdout.split()}
    for run in runs["benchmarks"]:
        if run["run_type"] == "iteration":
            name = run["name"].split("/iterations")[0]
            times[name].append(run["real_time"])
    return {name: statistics.median(values) for name, values in times.items()}


def table(times):
    rows = ["| task | input | points | Kivo 2D, ms | CGAL, ms | ratio |", "|---|---|---:|---:|---:|---:|"]
    for name, ours in times.items():
        task, kind, num, who = name.split("/")
        if who != "kivo":
            continue
        theirs = times.get(f"{task}/{kind}/{num}/cgal")
        theirs_text = f"{theirs:.0f}" if theirs else "-"
        ratio = f"{ours / theirs:.2f}" if theirs else "-"
        rows.append(f"| {task} | {kind} | {int(num):,} | {ours:.0f} | {theirs_text} | {ratio} |")
    return "\n".join(rows)


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    rest = sys.argv[2:]
    out = rest.pop(0) if rest and not rest[0].startswith("--") else "out/bench.md"
    text = "\n".join([
        f"CPU {cpu_model()}; {compiler(sys.argv[1])}; commit {first_line(['git', 'rev-parse', '--short', 'HEAD'])};",
        "medians of 5, one thread, both in one run.",
        "",
        table(medians(sys.argv[1], rest)),
        "",
    ])
    os.makedirs(os.path.dirname(out) or ".", exist_ok=True)
    with open(out, "w", encoding="utf-8") as file:
        file.write(text)
    print(text)
    print(f"written to {out}")


if __name__ == "__main__":
    main()
