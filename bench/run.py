#!/usr/bin/env python3
"""Runs the benchmarks and writes tables of times, work, growth and memory.

usage: bench/run.py BUILD_DIR [OUT.md] [--peak-memory] [benchmark options]

All of it takes several minutes. With --benchmark_filter=REGEX, for example --benchmark_filter=uniform/1000000/,
only what was measured appears; --peak-memory adds the memory to that.
"""
import json
import os
import platform
import re
import statistics
import subprocess
import sys

ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..")
MILLION = 1000000

# Our measurement, what it is measured against, its name there, the ratio at most, the ratio we aim at.
TARGETS = [
    *[(f"batch/{kind}/{num}", f"batch/{kind}/{num}/cgal", "CGAL batch", *limits) for kind, num, *limits in [
        ("uniform", MILLION, 0.65, 0.45),
        ("uniform", 10 * MILLION, 0.65, 0.45),
        ("clusters", MILLION, 0.65, 0.45),
        ("utm", MILLION, 0.65, 0.45),
        ("grid", MILLION, 0.7, 0.45),
        ("turnedGrid", MILLION, 0.8, 0.5),
        ("circle", MILLION, 0.9, 0.6),
    ]],
    ("batch/line/1000000", "batch/uniform/1000000/kivo", "own batch, uniform", 2.0, 1.0),
    ("oneByOne/uniform/1000000", "batch/uniform/1000000/cgal", "CGAL batch", 3.0, 1.5),
    ("oneByOne/uniform/1000000", "oneByOne/uniform/1000000/cgal", "CGAL hierarchy", 0.6, 0.35),
    ("locate/uniform/1000000", "locate/uniform/1000000/cgal", "CGAL hierarchy", 0.5, 0.3),
    *[(f"remove/{kind}/1000000", f"remove/{kind}/1000000/cgal", "CGAL Delaunay, 100,000 vertices", 0.8, 0.5)
      for kind in ["uniform", "clusters", "grid"]],
    *[(f"{task}/{kind}/{num}", f"constraints/{kind}/{num}/cgal", "CGAL constrained", 0.7, 0.45) for task, kind, num in [
        ("constraints", "ring", MILLION),
        ("constraints", "polygons", MILLION),
        ("constraintByPolygon", "polygons", MILLION),
        ("constraints", "crossings", 40000),
    ]],
    *[(f"import/{kind}/{num}", f"import/{kind}/{num}/cgal", "CGAL, all edges constraints", *limits)
      for kind, num, *limits in [
        ("uniform", 10000, 1.0, 0.7),
        ("uniform", 100000, 1.0, 0.7),
        ("uniform", MILLION, 1.0, 0.7),
        ("grid", MILLION, 1.5, 0.8),
        ("coast", MILLION, 1.2, 0.8),
    ]],
    ("import/uniform/1000000", "import/uniform/1000000/constraints", "own, all edges constraints", 1.0, 0.6),
    *[(f"cut/{kind}/100000", f"cut/{kind}/100000/cgal", "CGAL, crossings as constraints", 0.5, 0.25)
      for kind in ["long", "100", "1000"]],
    *[(f"triangles/{kind}/1000000", "batch/uniform/1000000/kivo", "own batch, uniform", 0.35, 0.2)
      for kind in ["inside", "grow", "union"]],
    *[("checker/random/1000000", f"checker/random/1000000/{rival}", against, 0.6, 0.3) for rival, against in [
        ("boost", "Boost.Geometry R-tree"),
        ("boostTuned", "the same, queries in its order"),
        ("cgal", "CGAL box intersection"),
        ("cgalTuned", "the same, another cutoff"),
    ]],
    ("quality/mesh/1000000", "quality/vertices/1000000/kivo", "own batch of its vertices", 0.3, 0.2),
    ("batchInto/ring/1000000", "batchInto/corners/1000000/kivo", "own, no constraints", 1.3, 1.1),
    ("oneByOneInto/ring/1000000", "oneByOneInto/corners/1000000/kivo", "own, no constraints", 1.3, 1.1),
]
# Of the time a triangle.
MESH_AT_MOST, MESH_AIM = 0.25, 0.1
PEAK_AT_MOST, PEAK_AIM = 190, 160
# Time a segment over that of random segments.
CHECKER_WORST_AT_MOST = 10
# Of the time that one thread takes, and what that one takes of the time of insertion one after the other.
TWO_THREADS_AT_MOST, TWO_THREADS_AIM = 0.6, 0.53
CHUNKS_AT_MOST = 1.05

# The stages behind the inlined one, in the order in which they are asked.
STAGES = {
    "orientation": ["Dynamic", "AxisParallel", "Expansion", "Interval", "Exact"],
    "inCircle": ["Rectangle", "Lattice", "DoubleDouble", "Expansion", "Exact"],
}
STAGE_TITLES = {"AxisParallel": "axis-parallel", "DoubleDouble": "double-double"}


def output(command):
    return subprocess.run(command, stdout=subprocess.PIPE, text=True, check=True).stdout


def first_line(command):
    """What a command says of itself; nothing where it fails, as git does outside a checkout."""
    return subprocess.run(command, capture_output=True, text=True, check=False).stdout.split("\n")[0].strip()


def cpu_model():
    with open("/proc/cpuinfo", encoding="utf-8") as info:
        match = re.search(r"model name\s*:\s*(.*)", info.read())
    return match.group(1) if match else platform.processor()


def compiler(build_dir):
    with open(os.path.join(build_dir, "CMakeCache.txt"), encoding="utf-8") as cache:
        path = re.search(r"CMAKE_CXX_COMPILER:\w+=(.*)", cache.read()).group(1)
    return first_line([path, "--version"])


def commit():
    name = first_line(["git", "-C", ROOT, "rev-parse", "--short", "HEAD"]) or "unknown"
    changed = first_line(["git", "-C", ROOT, "status", "--porcelain", "--untracked-files=no"])
    return name + ("-dirty" if changed else "")


def run_benchmarks(program, options):
    """The runs of each benchmark, by its name task/input/points/who, in the order in which they are registered."""
    options = ["--benchmark_repetitions=5", "--benchmark_enable_random_interleaving=true", *options]
    runs = {name.split("/iterations")[0]: [] for name in output([program, "--benchmark_list_tests", *options]).split()}
    if not runs:
        return runs
    for run in json.loads(output([program, "--benchmark_format=json", *options]))["benchmarks"]:
        if run["run_type"] == "iteration":
            runs[run["name"].split("/iterations")[0]].append(run)
    return runs


def median(runs, name, key="real_time"):
    return statistics.median(run[key] for run in runs[name]) if name in runs else None


def text_of(value, decimals=0, thousands=""):
    return "-" if value is None else f"{value:{thousands}.{decimals}f}"


def table(head, rows, num_text_columns):
    marks = ["---"] * num_text_columns + ["---:"] * (len(head) - num_text_columns)
    return "\n".join("| " + " | ".join(cells) + " |" for cells in [head, marks, *rows]) if rows else ""


def times_table(runs):
    head = ["task", "input", "against", "points", "Kivo 2D, ms", "the other, ms", "ratio", "at most", "aim",
            "Kivo 2D, CPU user ms", "the other, CPU user ms"]
    rows = []
    for name, rival, against, at_most, aim in TARGETS:
        task, kind, num = name.split("/")
        ours, theirs = median(runs, name + "/kivo"), median(runs, rival)
        if ours is None:
            continue
        ratio = ours / theirs if theirs else None
        rows.append([task, kind, against, f"{int(num):,}", text_of(ours), text_of(theirs), text_of(ratio, 2),
                     text_of(at_most, 2), text_of(aim, 2), text_of(median(runs, name + "/kivo", "userMs")),
                     text_of(median(runs, rival, "userMs"))])
    return table(head, rows, 3)


def spread_table(runs):
    """Lowest and highest of the measured times."""
    rows = []
    for name in dict.fromkeys(name for name, *_ in TARGETS):
        times = [[run["real_time"] for run in runs.get(f"{name}/{who}", [])] for who in ("kivo", "cgal")]
        if times[0]:
            task, kind, num = name.split("/")
            ends = [text_of(end(values) if values else None) for values in times for end in (min, max)]
            rows.append([task, kind, f"{int(num):,}", *ends])
    return table(["task", "input", "points", "Kivo 2D, lowest", "highest", "CGAL, lowest", "highest"], rows, 2)


def small_count(value):
    return "0" if value == 0 else "<0.0001" if value < 0.0001 else f"{value:.4f}"


def share(part, whole):
    percent = 100 * part / whole if whole else 0
    return "-" if part == 0 else "<0.1 %" if percent < 0.1 else f"{percent:.1f} %"


def insertion_runs(runs):
    """One run of each of our insertions of a million points: only very long walks differ, in the edges they draw."""
    for name, measured in runs.items():
        task, kind, num, who = name.split("/")
        if who == "kivo" and task in ("batch", "oneByOne") and int(num) == MILLION:
            yield task, kind, measured[0]


def work_table(runs):
    head = ["task", "input", "walk steps", "flips", "orientations past the static filter", "in-circle tests past it"]
    rows = [[task, kind, f"{run['walkSteps']:.3f}", f"{run['flips']:.3f}", small_count(run["orientationPastStatic"]),
             small_count(run["inCirclePastStatic"])] for task, kind, run in insertion_runs(runs)]
    return table(head, rows, 2)


def stages_table(runs, predicate):
    """The inlined static stage counts nothing, as that would cost time: its share is what the steps and flips leave."""
    stages, work = STAGES[predicate], {"orientation": "walkSteps", "inCircle": "flips"}[predicate]
    head = ["task", "input", "asked, about", "static, about",
            *[STAGE_TITLES.get(stage, stage.lower()) for stage in stages]]
    rows = []
    for task, kind, run in insertion_runs(runs):
        asked = 3 + 2 * run[work]
        rows.append([task, kind, f"{asked:.1f}", share(asked - run[predicate + "PastStatic"], asked),
                     *[share(run[predicate + stage], asked) for stage in stages]])
    return table(head, rows, 2)


def growth_table(runs):
    columns = {"Kivo 2D batch": "batch/uniform/{}/kivo", "CGAL batch": "batch/uniform/{}/cgal",
               "Kivo 2D one by one": "oneByOne/uniform/{}/kivo"}
    sizes = {int(name.split("/")[2]) for name in runs}
    rows = []
    for num in sorted(sizes):
        names = [column.format(num) for column in columns.values()]
        times = [median(runs, name, key) for key in ("real_time", "userMs") for name in names]
        if any(times):
            rows.append([f"{num:,}", *[text_of(ms and ms * 1e6 / num) for ms in times]])
    if len(rows) < 2:
        return ""
    return table(["points", *columns, *[column + ", CPU user" for column in columns]], rows, 0)


def threads_table(runs):
    head = ["input", "points", "in a row, ms", "chunks in one thread, ms", "in two, ms", "one : in a row", "at most",
            "two : one", "at most", "aim", "in a row, CPU user ms", "one, CPU user ms", "two, CPU user ms"]
    rows = []
    for name in runs:
        if not name.startswith("threads/") or not name.endswith("/1"):
            continue
        _, kind, num, _ = name.split("/")
        names = [name.removesuffix("1") + who for who in "012"]
        plain, one, two = (median(runs, each) for each in names)
        rows.append([kind, f"{int(num):,}", *map(text_of, (plain, one, two)),
                     text_of(one / plain if plain else None, 2), text_of(CHUNKS_AT_MOST, 2),
                     text_of(two / one if two else None, 2), text_of(TWO_THREADS_AT_MOST, 2),
                     text_of(TWO_THREADS_AIM, 2), *(text_of(median(runs, each, "userMs")) for each in names)])
    return table(head, rows, 1)


def long_segment_table(runs):
    rows = []
    for name, measured in runs.items():
        if name.startswith("longSegment/"):
            edges = measured[0]["crossedEdges"]
            times = [text_of(median(runs, name, key) * 1e6 / edges) for key in ("real_time", "userMs")]
            rows.append([f"{int(name.split('/')[2]):,}", f"{edges:,.0f}", *times])
    return table(["points", "edges crossed in all", "ns an edge", "CPU user"], rows, 0)


def mesh_table(runs):
    """Sizes differ a little, as the rival limits lengths and we areas: times are those of a triangle."""
    head = ["domain", "angle", "Kivo 2D: triangles", "passes", "bad", "smallest angle", "ns a triangle", "CPU user",
            "CGAL: triangles", "smallest angle", "ns a triangle", "CPU user", "ratio", "at most", "aim"]
    rows = []
    for name, measured in runs.items():
        if not name.startswith("mesh/") or not name.endswith("/kivo"):
            continue
        _, domain, angle, _ = name.split("/")
        rival = name.removesuffix("kivo") + "cgal"
        times = {}
        for who in (name, rival):
            num = median(runs, who, "triangles")
            times[who] = [num and median(runs, who, key) * 1e6 / num for key in ("real_time", "userMs")]
        ours, theirs = times[name][0], times[rival][0]
        rows.append([domain, angle, text_of(measured[0]["triangles"], 0, ","), text_of(measured[0]["passes"]),
                     text_of(measured[0]["bad"]), text_of(measured[0]["smallestAngle"], 2), *map(text_of, times[name]),
                     text_of(median(runs, rival, "triangles"), 0, ","),
                     text_of(median(runs, rival, "smallestAngle"), 2), *map(text_of, times[rival]),
                     text_of(ours / theirs if theirs else None, 3), text_of(MESH_AT_MOST, 2), text_of(MESH_AIM, 2)])
    return table(head, rows, 1)


def checker_table(runs):
    random_ms = median(runs, "checker/random/1000000/kivo")
    random_ns = random_ms and random_ms * 1e6 / MILLION
    rows = []
    for name, measured in runs.items():
        task, kind, _, who = name.split("/")
        if who != "kivo" or not task.startswith("checker") or task == "checkerIntersectors":
            continue
        num = measured[0]["segments"]
        ns, user_ns = (median(runs, name, key) * 1e6 / num for key in ("real_time", "userMs"))
        rows.append([kind, text_of(num, 0, ","), text_of(measured[0]["illegal"], 0, ","), text_of(ns), text_of(user_ns),
                     text_of(random_ns and ns / random_ns, 2),
                     text_of(CHECKER_WORST_AT_MOST if task == "checkerWorst" else None)])
    return table(["input", "segments", "that intersect", "ns a segment", "CPU user", "over random", "at most"], rows, 1)


def intersectors_table(runs):
    rows = []
    for name, measured in runs.items():
        if name.startswith("checkerIntersectors/"):
            _, kind, num, _ = name.split("/")
            times = [median(runs, name, key) * 1e6 for key in ("real_time", "userMs")]
            rows.append([kind, f"{int(num):,}", text_of(measured[0]["pairs"], 0, ","),
                         *[text_of(ns / count) for ns in times for count in (int(num), 2 * measured[0]["pairs"])]])
    return table(["input", "queries", "pairs", "ns a query", "ns a segment reported", "CPU user a query",
                  "CPU user a segment reported"], rows, 1)


def hub_table(runs):
    rows = []
    for name, measured in runs.items():
        if name.startswith("removeHub/"):
            degree = measured[0]["degree"]
            times = [text_of(median(runs, name, key) * 1e6 / degree) for key in ("real_time", "userMs")]
            rows.append([name.split("/")[1], f"{degree:,.0f}", *times])
    return table(["neighbours", "how many", "ns a neighbour", "CPU user"], rows, 1)


def rounds_table(runs):
    rows = [[text_of(run[key], 1) for key in ("MBafter3", "MBafter10")] for name, measured in runs.items()
            if name.startswith("removalRounds/") for run in measured[:1]]
    return table(["MB after 3 rounds", "after 10"], rows, 0)


def crossings_table(runs):
    rows = [[name, f"{measured[0]['crossings']:,.0f}"] for name, measured in runs.items()
            if name.startswith("constraints/crossings/")]
    return table(["measurement", "crossings"], rows, 1)


def peak_table(program):
    peaks = [float(output([program, "--peak-memory=" + who])) for who in ("kivo", "cgal")]
    return table(["Kivo 2D", "CGAL", "at most", "aim"],
                 [[f"{peaks[0]:.0f}", f"{peaks[1]:.0f}", str(PEAK_AT_MOST), str(PEAK_AIM)]], 0)


def sections(program, runs, with_peak):
    """Titles, notes and tables."""
    repetitions = max(map(len, runs.values()), default=0)
    yield ("Times", f"Medians of {repetitions}, one thread, all in one run in random order. A ratio below 1 means that "
           "Kivo 2D is faster. CPU user time leaves out what the system spends on providing memory. Points of an "
           "import are triangles; its rival is spared the search for equal corners and for faults.", times_table(runs))
    yield ("Spread of these times, ms", "A wide one with a steady user time means that memory was at hand in some runs "
           "and had to be provided by the system in others.", spread_table(runs))
    yield ("Work per insertion", "Counted, but for the questions that the inlined static stage answers: counting those "
           "would cost time.", work_table(runs))
    yield ("Orientations per insertion, and the share of each stage",
           "Asked are three and two more a step of the walk, apart from those at the hull.",
           stages_table(runs, "orientation"))
    yield ("In-circle tests per insertion, and the share of each stage",
           "Asked are three and two more a flip for a point inside a triangle.", stages_table(runs, "inCircle"))
    yield ("Growth: nanoseconds a point, uniform",
           f"Medians of {repetitions}; ten million one by one are run once.", growth_table(runs))
    yield ("Threads", f"One batch, medians of {repetitions} in wall clock, its points inserted in a row or by chunks. Two "
           "threads need two cores for themselves.",
           threads_table(runs))
    yield ("Growth: nanoseconds an edge that a long constraint crosses",
           "A strip of random points and one segment along it all, as many times as make a million points.",
           long_segment_table(runs))
    yield ("Meshing: nanoseconds a triangle", "Refinement alone, of domains that are triangulated already, under a "
           "limit of area (Kivo 2D) or of edges (CGAL) that gives about a million triangles.", mesh_table(runs))
    yield ("Segments that intersect others: nanoseconds a segment", "With the making of the checker. Random ones, sets "
           "in which boxes tell nothing, and sets in which hits are many.", checker_table(runs))
    yield ("What intersects a segment", "A query for each segment of a set whose index exists.", intersectors_table(runs))
    yield ("Removal of a vertex with a million neighbours", "An inner one, one beyond a convex chain, and one beside a "
           "line, which leaves no triangle.", hub_table(runs))
    yield ("Memory of removal", "A million uniform points inserted and all removed in random order, again and again.",
           rounds_table(runs))
    yield ("Crossings of constraints", "Vertices beyond those of the input.", crossings_table(runs))
    if with_peak:
        yield ("Peak memory: bytes a point", "A batch of ten million uniform points in a process of its own, beyond "
               "the caller's points and handles.", peak_table(program))


def main():
    if len(sys.argv) < 2 or sys.argv[1].startswith("-"):
        sys.exit(__doc__)
    build_dir, rest = sys.argv[1], sys.argv[2:]
    out = rest.pop(0) if rest and not rest[0].startswith("--") else "out/bench.md"
    filtered = any(option.startswith("--benchmark_filter") for option in rest)
    with_peak = "--peak-memory" in rest or not filtered
    program = os.path.join(build_dir, "bench", "run_bench")
    # Asked before the long run, since the sources may change during it.
    text = f"CPU {cpu_model()}; {compiler(build_dir)}; commit {commit()}.\n"
    runs = run_benchmarks(program, [option for option in rest if option != "--peak-memory"])
    for title, note, content in sections(program, runs, with_peak):
        if content:
            text += f"\n### {title}\n\n" + (note + "\n\n" if note else "") + content + "\n"
    os.makedirs(os.path.dirname(out) or ".", exist_ok=True)
    with open(out, "w", encoding="utf-8") as file:
        file.write(text)
    print(text)
    print(f"written to {out}")


if __name__ == "__main__":
    main()
