#!/usr/bin/env python3
"""Checks that #include lines follow the folder table.

usage: check_includes.py [PROJECT_DIR]

A folder may include itself and the folders named for it; headers never form a cycle, whichever folders they lie
in; a source includes its own header first; every public header is installed. Prints what breaks a rule and
returns 1 then.
"""
import os
import re
import sys

# Folder -> folders whose headers it may include. The public headers are written "Name.h", all others by their
# path from the root.
MAY_INCLUDE = {
    "include": {"include"},
    "kernel": {"include", "kernel"},
    "output": {"include", "kernel", "output"},
    "constraints": {"include", "kernel", "output", "core", "checker", "constraints"},
    "zones": {"include", "kernel", "output", "core", "constraints", "zones"},
    "meshing": {"include", "kernel", "output", "core", "constraints", "zones", "meshing"},
    "core": {"include", "kernel", "output", "core", "constraints", "zones", "meshing"},
    "checker": {"include", "kernel", "output", "core", "checker"},
    "cli": {"include", "cli"},
    "examples": {"include"},
    "bench": {"include", "kernel", "core", "constraints", "zones", "meshing", "checker", "output", "bench"},
    "tests": {"include", "kernel", "core", "constraints", "zones", "meshing", "checker", "output", "tests"},
}
# The upper stratum of core puts the parts together. All else in core is mesh primitives, which know neither the
# triangulation that owns them nor drawing and files.
CORE_UPPER = ("Dt2", "BatchInserter", "Kivo_2D")
# What a folder may use besides the standard library and the project; emmintrin.h comes with the compiler.
THIRD_PARTY = {
    "include": set(),
    "kernel": {"gmp.h"},
    "output": set(),
    "core": set(),
    "constraints": set(),
    "zones": set(),
    "meshing": set(),
    "checker": {"emmintrin.h"},
    "cli": {"CLI/CLI.hpp", "nlohmann/json.hpp"},
    "examples": set(),
}
POSIX = {"unistd.h", "fcntl.h", "sys/mman.h", "sys/stat.h", "sys/types.h"}
POSIX_ALLOWED = {"kernel", "core", "output", "cli"}
STD_HEADER = re.compile(r"^[a-z_]+$")
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)


def sources(root):
    for folder in MAY_INCLUDE:
        for path, folders, names in os.walk(os.path.join(root, folder)):
            folders.sort()
            for name in sorted(names):
                if name.endswith((".h", ".cpp")) and "consumer" not in path:
                    yield folder, os.path.relpath(os.path.join(path, name), root)


def includes_of(root, path):
    with open(os.path.join(root, path), encoding="utf-8") as file:
        return INCLUDE.findall(file.read())


def resolve(root, path, name):
    """The project file that an include line of this file names, or None for a header of somebody else."""
    for candidate in (os.path.join(os.path.dirname(path), name), os.path.join("include", name), name):
        if os.path.isfile(os.path.join(root, candidate)):
            return candidate
    return None


def check_line(folder, path, bracket, name, target):
    if target is None:
        known = STD_HEADER.match(name) or name in THIRD_PARTY.get(folder, {name})
        if known or (name in POSIX and folder in POSIX_ALLOWED):
            return None
        return f"{path}: <{name}> is neither standard nor allowed in {folder}/"
    target_folder = target.split(os.sep)[0]
    if target_folder not in MAY_INCLUDE[folder]:
        return f"{path}: {folder}/ must not include {target}"
    in_core_upper = target_folder == "core" and os.path.basename(target).startswith(CORE_UPPER)
    if folder == "core" and (in_core_upper or target_folder in ("output", "constraints", "zones", "meshing")) and not os.path.basename(
            path).startswith(CORE_UPPER):
        return f"{path}: of core/, only {', '.join(CORE_UPPER)} may include {target}"
    if folder in ("constraints", "zones", "meshing", "checker") and in_core_upper:
        return f"{path}: {folder}/ must not include {target}"
    if folder in ("include", "kernel", "core", "constraints", "zones", "meshing", "checker", "output") and bracket == "<":
        return f"{path}: headers of the project are included in quotes: {name}"
    return None


def check_own_header_first(root, path, targets):
    if not path.endswith(".cpp") or path.startswith("tests"):
        return None
    name = os.path.basename(path)[:-4] + ".h"
    for own in (os.path.join(os.path.dirname(path), name), os.path.join("include", name)):
        if os.path.isfile(os.path.join(root, own)):
            return None if targets and targets[0] == own else f"{path}: {own} must be included first"
    return None


def find_cycle(graph):
    state = {}
    trail = []

    def visit(node):
        state[node] = "open"
        trail.append(node)
        for target in graph.get(node, []):
            if state.get(target) == "open":
                return trail[trail.index(target):] + [target]
            if target not in state:
                cycle = visit(target)
                if cycle:
                    return cycle
        trail.pop()
        state[node] = "done"
        return None

    for node in sorted(graph):
        if node not in state:
            cycle = visit(node)
            if cycle:
                return cycle
    return None


def check_install_list(root):
    with open(os.path.join(root, "cmake", "install.cmake"), encoding="utf-8") as file:
        listed = set(re.findall(r"^\s+(\w+\.h)$", file.read(), re.MULTILINE))
    there = {name for name in os.listdir(os.path.join(root, "include")) if name.endswith(".h")}
    for name in sorted(listed ^ there):
        yield f"include/{name}: " + ("is not installed" if name in there else "is installed but does not exist")


def check(root):
    problems = []
    headers = {}
    number = 0
    for folder, path in sources(root):
        number += 1
        lines = includes_of(root, path)
        targets = [resolve(root, path, name) for _, name in lines]
        for (bracket, name), target in zip(lines, targets):
            problems.append(check_line(folder, path, bracket, name, target))
        problems.append(check_own_header_first(root, path, targets))
        if path.endswith(".h"):
            headers[path] = [target for target in targets if target]
    cycle = find_cycle(headers)
    if cycle:
        problems.append("headers form a cycle: " + " -> ".join(cycle))
    problems.extend(check_install_list(root))
    return number, [problem for problem in problems if problem]


def main():
    root = sys.argv[1] if len(sys.argv) > 1 else os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
    number, problems = check(root)
    for problem in problems:
        print(problem)
    if number == 0:
        problems = [f"{root}: no sources found"]
        print(problems[0])
    print(f"{number} files, {len(problems)} problems")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
