#!/usr/bin/env python3
"""The command `check`: pairs of segments that meet, against exact arithmetic and known facts.

usage: check_test.py PATH_OF_KIVO2D [unittest options]
"""
import collections
import glob
import itertools
import json
import math
import os
import random
import re
import struct
import unittest
import xml.etree.ElementTree
from fractions import Fraction

from command import DATA, CommandTest

SVG = "{http://www.w3.org/2000/svg}"
KINDS = {"crossing": "crossings", "touch": "touches", "overlap": "overlaps", "duplicate": "duplicates", "shared-end": "sharedEnds"}


def side(p, q, r):
    return (q[0] - p[0]) * (r[1] - p[1]) - (q[1] - p[1]) * (r[0] - p[0])


def is_on(p, segment):
    return side(*segment, p) == 0 and min(segment) <= p <= max(segment)


def meeting_of(s, t):
    """The kind and the one or two points where it is, as exact fractions; None when there is none."""
    s, t = ([tuple(map(Fraction, end)) for end in segment] for segment in (s, t))
    on = sorted({p for p in s if is_on(p, t)} | {p for p in t if is_on(p, s)})
    if len(on) == 2:
        return ("duplicate" if sorted(s) == sorted(t) else "overlap"), on
    if len(on) == 1:
        return ("shared-end" if on[0] in s and on[0] in t else "touch"), on
    if side(*s, t[0]) * side(*s, t[1]) < 0 and side(*t, s[0]) * side(*t, s[1]) < 0:
        part = side(*t, s[0]) / (side(*t, s[0]) - side(*t, s[1]))
        return "crossing", [tuple(a + part * (b - a) for a, b in zip(*s))]
    return None


def meetings_of(segments, end_points, first=1):
    """{(i, j): (kind, points)}"""
    pairs = ((i, j, meeting_of(segments[i], segments[j])) for i, j in itertools.combinations(range(len(segments)), 2))
    return {(i + first, j + first): found for i, j, found in pairs if found and (end_points or found[0] != "shared-end")}


class CheckTest(CommandTest):
    def write_segments(self, name, segments):
        return self.write(name, "".join("%r %r %r %r\n" % (*map(float, p), *map(float, q)) for p, q in segments))

    def check(self, *arguments, exit_code=3, **options):
        """The report, which must agree with itself."""
        report = json.loads(self.run_kivo("check", *arguments, "--json", exit_code=exit_code, **options).stdout)
        pairs = report["pairs"]
        self.assertEqual(pairs["total"], sum(pairs.get(kind, 0) for kind in KINDS.values()))
        self.assertEqual("sharedEnds" in pairs, "--end-points" in arguments)
        self.assertEqual("list" in report, "--list" in arguments)
        if "list" in report:
            listed = [tuple(entry["segments"]) for entry in report["list"]]
            self.assertTrue(all(i < j for i, j in listed) and listed == sorted(set(listed)), "each pair once, in order")
            counts = collections.Counter(KINDS[entry["kind"]] for entry in report["list"])
            self.assertEqual(counts, collections.Counter({kind: pairs.get(kind, 0) for kind in KINDS.values()}))
            if pairs["complete"]:
                self.assertEqual(report["segmentsAtFault"], len(set(itertools.chain(*listed))))
        return report

    def expect_meetings(self, report, expected):
        self.assertEqual({tuple(entry["segments"]): entry["kind"] for entry in report["list"]},
                         {pair: kind for pair, (kind, _) in expected.items()})
        for entry in report["list"]:
            kind, points = expected[tuple(entry["segments"])]
            found = [entry["at"]] if "at" in entry else sorted([entry["from"], entry["to"]])
            self.assertEqual(len(found), len(points))
            for x, exact in zip(itertools.chain(*found), itertools.chain(*points)):
                if kind == "crossing":
                    self.assertLess(abs(Fraction(x) - exact), math.ulp(float(exact)), entry)
                else:
                    self.assertEqual(x, exact, entry)


class Pairs(CheckTest):
    def test_every_pair_is_found_once_with_its_kind_and_its_place(self):
        source = random.Random(1)
        coordinates = [lambda: source.randrange(5), lambda: source.uniform(-1, 1), lambda: source.randrange(40) / 10 + 5e5,
                       lambda: source.randrange(4) * 1e-150, lambda: source.choice([1.0, math.nextafter(1, 2), 0.5, 2.0, 0.1])]
        for round_, coordinate in itertools.product(range(3), coordinates):
            segments = [tuple((coordinate(), coordinate()) for _ in range(2)) for _ in range(40)]
            segments += [s[::source.choice([1, -1])] for s in source.sample(segments, 3)] + [(p, p) for p, _ in source.sample(segments, 3)]
            source.shuffle(segments)
            self.write_segments("a.seg", segments)
            for arguments in ([], ["--end-points"]):
                expected = meetings_of(segments, bool(arguments))
                report = self.check("a.seg", "--list", *arguments, exit_code=3 if expected else 0)
                self.expect_meetings(report, expected)
                self.assertEqual((report["segments"], report["zeroLength"]), (46, sum(p == q for p, q in segments)))
                text = self.run_kivo("check", "a.seg", "--list", *arguments, exit_code=None).stdout.splitlines()
                for line, entry in zip(text, report["list"]):
                    points = [entry["at"]] if "at" in entry else [entry["from"], entry["to"]]
                    i, j, kind, _, x, y, *rest = line.split()
                    self.assertEqual(([int(i), int(j)], kind), (entry["segments"], entry["kind"]))
                    self.assertEqual([[float(x), float(y)]] + ([list(map(float, rest[1:]))] if rest else []), points)
                self.assertEqual(text[len(report["list"])], "a.seg")

    def test_texts_of_the_report(self):
        self.write("a.seg", "0 0 4 4\n# a comment\n0 4 4 0\n0 0 2 0\n\n1 0 3 0\n3 0 1 0\n2 2 2 2\n7 7 7 7\n4 4 9 9.5\n")
        without_times = lambda *arguments: re.sub(r"\d+\.\d ms", "_", self.run_kivo("check", "a.seg", *arguments, exit_code=3).stdout)
        self.assertEqual(without_times("--list", "-o", "b.svg"), """\
1 2 crossing at 2 2
1 6 touch at 2 2
2 6 touch at 2 2
3 4 overlap from 1 0 to 2 0
3 5 overlap from 1 0 to 2 0
4 5 duplicate from 1 0 to 3 0
a.seg
  segments       8
  zero length    2
  crossings      1
  touches        2
  overlaps       2
  duplicates     1
  at fault       6 segments, in 6 pairs
  bounding box   [0, 9] x [0, 9.5]
  times          read _, check _, write _
  written        b.svg
""")
        self.assertIn("""
  duplicates     1
  shared ends    2
  at fault       7 segments, in 8 pairs
""", without_times("--end-points"))
        self.assertIn("""
  crossings      at least 1
  touches        at least 2
  overlaps       at least 1
  duplicates     at least 0
  at fault       6 segments, in more than 4 pairs, where counting ended
""", without_times("--max-pairs", "4"))
        self.write("b.seg", "0 0 1 0\n1 0 1 1\n")
        self.assertIn("  at fault       none\n", self.run_kivo("check", "b.seg").stdout)
        self.run_kivo("check", "b.seg", "--end-points", exit_code=3)
        with open("/dev/full", "wb") as full:
            self.run_kivo("check", "a.seg", exit_code=1, stdout=full)

    def test_counting_ends_where_it_is_told_to_and_says_so(self):
        size = 300
        self.write_segments("a.seg", [((-1, i), (1, size - i)) for i in range(size)])
        every = size * (size - 1) // 2
        for limit, complete in ((every, True), (every + 1, True), (every - 1, False), (5, False), (0, False)):
            report = self.check("a.seg", "--max-pairs", str(limit), "--list")
            self.assertEqual((report["pairs"]["complete"], report["pairs"]["total"]), (complete, min(limit, every)))
            self.assertEqual(report["segmentsAtFault"], size)


class Inputs(CheckTest):
    def test_nothing_is_lost_or_moved_in_any_kind_of_file(self):
        source = random.Random(7)
        points = [(float(source.randrange(6)), float(source.randrange(6))) for _ in range(30)]
        points += points[:5]  # the same places under other numbers
        ends = [(source.randrange(35), source.randrange(35)) for _ in range(40)]
        ends += ends[:4] + [(q, p) for p, q in ends[4:8]] + [(3, 3), (2, 32)]
        segments = [(points[p], points[q]) for p, q in ends]
        flat = [x for segment in segments for end in segment for x in end]
        record = "<idd dd".replace(" ", "")
        self.write_segments("a.seg", segments)
        self.write("a2.bin", struct.pack("<iQ%dd" % len(flat), 21, len(segments), *flat))
        with_heights = [x for p, q in segments for end in (p, q) for x in (*end, source.random())]
        self.write("a3.bin", struct.pack("<iQ%dd" % len(with_heights), 31, len(segments), *with_heights))
        lines = [{"type": "MultiLineString", "coordinates": [[p, q] for p, q in segments[:20]]}]
        lines += [{"type": "LineString", "coordinates": list(segment)} for segment in segments[20:]]
        self.write("a.geojson", json.dumps({"type": "GeometryCollection", "geometries": [{"type": "Point", "coordinates": [9, 9]}] + lines}))
        names = ["a.seg", "a2.bin", "a3.bin", "a.geojson"]
        for first, separate in itertools.product((0, 1), (False, True)):
            node = f"{len(points)} 2 0 0\n" + "".join("%d %r %r\n" % (i + first, *p) for i, p in enumerate(points))
            stem = f"p{first}{separate}"
            if separate:
                self.write(stem + ".node", node)
            body = f"{len(ends)} 1\n" + "".join(f"{i + first} {p + first} {q + first} 5\n" for i, (p, q) in enumerate(ends)) + "0\n"
            names.append(self.write(stem + ".poly", ("0 2 0 0\n" if separate else node) + body))
        for name in names:
            report = self.check(name, "--list", "--end-points")
            first = 0 if name.startswith("p0") else 1
            self.assertEqual((report["segments"], report["firstNumber"]), (len(segments), first), name)
            self.expect_meetings(report, meetings_of(segments, True, first))

    def test_rings_are_closed_and_numbered_in_the_order_of_the_document(self):
        bow = [[0, 0], [4, 4], [4, 0], [0, 4], [0, 0]]
        island = [[9, 9], [8, 9], [8, 8], [9, 9]]
        self.write("a.geojson", json.dumps({"type": "Polygon", "coordinates": [island, bow]}))
        report = self.check("a.geojson", "--list")
        self.assertEqual((report["segments"], report["list"]), (7, [{"segments": [4, 6], "kind": "crossing", "at": [2.0, 2.0]}]))

    def test_empty_and_lonely_sets_have_no_faults(self):
        for content, count in (("", 0), ("# nothing\n", 0), ("1 2 3 4\n", 1), ("1 2 1 2\n", 1)):
            report = self.check(self.write("a.seg", content), "--list", "--end-points", exit_code=0)
            self.assertEqual((report["segments"], report["list"], report["segmentsAtFault"]), (count, [], 0))
            self.run_kivo("check", "a.seg", "--list")
        for name in ("b.svg", "b.ps"):
            done = self.run_kivo("check", "a.seg", "-o", name, exit_code=1)
            self.assertEqual((done.stdout, done.stderr), ("", f"kivo2d: {name}: is not written: no segment of a.seg has a length\n"))

    def test_bad_input_returns_1_and_wrong_usage_2(self):
        self.write("a.seg", "0 0 1 1\n")
        for name, content, text in (("b.seg", "0 0 1 1\n0 0 nan 1\n", "line 2"), ("b.seg", "0 0 1\n", "line 1"), ("b.geojson", "{", "line 1"),
                                    ("b.bin", b"\x15\0\0\0", "header"), ("b.poly", "2 2 0 0\n1 0 0\n2 1 1\n1 0\n1 1 3\n0\n", "no point 3")):
            done = self.run_kivo("check", self.write(name, content), exit_code=1)
            self.assertEqual(done.stdout, "")
            self.assertIn(text, done.stderr)
        self.assertIn("missing.seg", self.run_kivo("check", "missing.seg", exit_code=1).stderr)
        os.symlink("a.seg", self.path("link.svg"))
        self.write("a.xy", "0 0\n")
        for arguments in (["a.xy"], ["a.node"], [], ["a.seg", "-o", "b.png"], ["a.seg", "-o", "b.obj"], ["a.seg", "-o", "link.svg"],
                          ["a.seg", "--max-pairs", "-1"], ["a.seg", "--zone", "inside"]):
            self.assertEqual(self.run_kivo("check", *arguments, exit_code=2).stdout, "")
        self.assertEqual(self.read("a.seg"), b"0 0 1 1\n")
        for ending in ("svg", "ps"):
            os.symlink("/dev/full", self.path("full." + ending))
            for name in ("nowhere/b." + ending, "full." + ending):
                self.assertIn(name, self.run_kivo("check", "a.seg", "-o", name, exit_code=1).stderr)


class Pictures(CheckTest):
    def rings(self, name):
        root = xml.etree.ElementTree.fromstring(self.read(name))
        return [[float(ring.get(key)) for key in ("cx", "cy", "r")] for ring in root.findall(f".//{SVG}g[@class='places']/{SVG}circle")]

    def test_one_fault_among_many_segments_has_one_ring_around_it(self):
        size = 60
        segments = [((x, y), (x + 0.9, y + 0.3)) for x in range(size) for y in range(size)]
        self.write_segments("a.seg", segments + [((12.4, 40), (12.5, 40.3))])
        for arguments, y in (([], 1 - 40.15 / 59.3), (["--flip-y"], 40.15 / 59.3)):
            report = self.check("a.seg", "-o", "b.svg", "-o", "b.ps", *arguments)
            self.assertEqual((report["segmentsAtFault"], report["outputs"]), (2, ["b.svg", "b.ps"]))
            (ring,) = self.rings("b.svg")
            for found, expected in zip(ring, (12.45 / 59.9 * 1e5, y * 59.3 / 59.9 * 1e5)):
                self.assertLess(abs(found - expected), ring[2])
            self.assertTrue(self.read("b.ps").endswith(b"%%Trailer\n"))
            texts = ["".join(text.itertext()) for text in xml.etree.ElementTree.fromstring(self.read("b.svg")).iter(SVG + "text")]
            self.assertTrue({"a.seg", "3,601 segments", "2 at fault", "1 crossing", "1", "1 crossing", "761 and 3601"} <= set(texts), texts)
            pictures = [self.read(name) for name in ("b.svg", "b.ps")]
            self.check("a.seg", "-o", "b.svg", "-o", "b.ps", *arguments)
            self.assertEqual([self.read(name) for name in ("b.svg", "b.ps")], pictures)

    def test_pictures_stay_small_however_many_the_faults_are(self):
        size = 1000
        self.write_segments("a&<é.seg", [((-1, i / size), (1, 1 - i / size)) for i in range(size)] + [((i, 0), (-1, 0)) for i in range(1, 9)])
        report = self.check("a&<é.seg", "-o", "b.svg")
        self.assertEqual(report["pairs"]["overlaps"] + report["pairs"]["duplicates"], 28)
        self.assertLess(len(self.read("b.svg")), 300000)
        self.assertTrue(self.rings("b.svg"))

    def test_sizes_up_to_the_ends_of_the_doubles(self):
        for size in (5e-324, 1e-300, 1e300, 1.7e308):
            self.write_segments("a.seg", [((-size, -size), (size, size)), ((-size, size), (size, -size)), ((0, 0), (0, size))])
            report = self.check("a.seg", "-o", "b.svg", "--list")
            self.assertEqual([entry["kind"] for entry in report["list"]], ["crossing", "touch", "touch"])
            self.assertEqual([entry["at"] for entry in report["list"]], [[0.0, 0.0]] * 3)
            self.assertEqual(len(self.rings("b.svg")), 1)


def data_files():
    folders = [DATA] + [os.path.join(os.environ["KIVO2D_DATA"], part) for part in ("open", "mesh") if "KIVO2D_DATA" in os.environ]
    for folder in folders:
        for name in sorted(glob.glob(os.path.join(folder, "**", "*.seg"), recursive=True)):
            yield name


class RealData(CheckTest):
    def test_known_faults_are_found_and_no_others(self):
        """The facts count each pair of different segments once, and leave out those of no length."""
        num_files = 0
        for name in data_files():
            facts_name = name[:-4] + ".json"
            if not os.path.exists(facts_name):
                continue
            with open(facts_name, encoding="utf-8") as file:
                facts = json.load(file).get("derived", {}).get("segments")
            if not facts or "pairs_crossing" not in facts:
                continue
            num_files += 1
            report = self.check(name, "--list", "--end-points", exit_code=None)
            with open(name, encoding="ascii") as file:
                rows = [tuple(map(float, row.split())) for row in file]
            segments = [tuple(sorted((row[:2], row[2:]))) for row in rows]
            kinds = {frozenset(segments[i - 1] for i in entry["segments"]): entry["kind"] for entry in report["list"]
                     if all(len(set(segments[i - 1])) == 2 for i in entry["segments"])}
            counts = collections.Counter(kinds.values())
            full = [s for s in segments if s[0] != s[1]]
            found = {"segments": report["segments"], "zero_length": report["zeroLength"], "duplicate": len(full) - len(set(full)),
                     "pairs_crossing": counts["crossing"], "pairs_T": counts["touch"], "pairs_overlap": counts["overlap"],
                     "pairs_sharing_an_endpoint": counts["shared-end"]}
            self.assertEqual(found, {key: facts[key] for key in found}, name)
            self.assertEqual(report["pairs"]["duplicates"], sum(math.comb(n, 2) for n in collections.Counter(full).values()), name)
        self.assertGreaterEqual(num_files, 3)


if __name__ == "__main__":
    unittest.main()
