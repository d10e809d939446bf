#!/usr/bin/env python3
"""The command `import`, and --cut of all commands.

usage: import_test.py PATH_OF_KIVO2D [unittest options]
"""
import collections
import itertools
import json
import math
import os
import random
import unittest
import xml.etree.ElementTree
from fractions import Fraction

from mesh_test import NIPIGON, area_of, cross
from quality_test import SVG, QualityTest

ENDINGS = ("node", "ele", "obj", "msh", "vtu")
OUTPUTS = [argument for ending in ENDINGS + ("poly", "edge", "seg", "svg", "geojson", "ps") for argument in ("-o", "b." + ending)]


def as_set(triangles):
    """Regardless of order, first corner and direction."""
    return {frozenset(map(tuple, triangle)) for triangle in triangles}


def sides_of(triangles):
    """The triangles of each edge."""
    found = collections.defaultdict(list)
    for k, triangle in enumerate(triangles):
        for edge in itertools.combinations(map(tuple, triangle), 2):
            found[frozenset(edge)].append(k)
    return found


def is_inside_circle(triangle, point):
    rows = [[Fraction(x) - Fraction(c) for x, c in zip(corner, point)] for corner in triangle]
    (a, b, c), (d, e, f), (g, h, i) = ((x, y, x * x + y * y) for x, y in rows)
    return (a * (e * i - f * h) - b * (d * i - f * g) + c * (d * h - e * g)) * (1 if cross(*triangle) > 0 else -1) > 0


class ImportTest(QualityTest):
    def imported(self, *arguments, **options):
        return json.loads(self.run_kivo("import", *arguments, "--check", "--json", **options).stdout)

    def segments(self, name="b.seg"):
        return {frozenset((tuple(row[:2]), tuple(row[2:]))) for row in (list(map(float, row)) for row in self.rows(name))}


class Import(ImportTest):
    def test_triangles_of_every_format_stay_as_they_are_whether_delaunay_or_not(self):
        for seed in range(4):
            points, faces, triangles = self.jittered_squares(seed)
            turned = [random.Random(seed + k).choice([face, face[::-1]]) for k, face in enumerate(faces)]
            self.write_obj("a.obj", points, [tuple(corner + 1 for corner in face) for face in turned])
            report = self.imported("a.obj", *OUTPUTS)
            sides = sides_of(triangles)
            border = {edge for edge, found in sides.items() if len(found) == 1}
            inner = {edge for edge, found in sides.items() if len(found) == 2
                     and is_inside_circle(triangles[found[0]], next(p for p in triangles[found[1]] if p not in edge))}
            wanted = {"triangles": len(triangles), "corners": len(set(itertools.chain(*faces))), "borderEdges": len(border),
                      "turnedRound": sum(a != b for a, b in zip(faces, turned)), "innerConstraintEdges": len(inner)}
            self.assertEqual((report["command"], report["valid"], report["import"]), ("import", True, wanted))
            self.assertEqual((report["vertices"], report["duplicates"], report["zone"]["kind"]), (len(points), 0, "mesh"))
            self.assertAlmostEqual(report["zone"]["area"], math.fsum(map(area_of, triangles)), places=9)
            self.assertEqual((as_set(self.triangles()), self.segments()), (as_set(triangles), border | inner))
            self.assertEqual(len(self.rows("b.poly")), 3 + len(points) + len(border | inner))
            for ending in ENDINGS[1:]:
                again = self.imported("b." + ending, "--threads", "2", "-o", "c.node", "-o", "c.ele")
                self.assertEqual((again["import"], as_set(self.triangles("c"))), ({**wanted, "turnedRound": 0}, as_set(triangles)), ending)

    def test_meshes_and_triangulations_of_real_data_come_back(self):
        for command, arguments in (("mesh", [NIPIGON, "--min-angle", "28", "--max-area", "9"]), ("triangulate", [NIPIGON]),
                                   ("triangulate", [NIPIGON, "--zone", "inside", "--flip-y"])):
            self.run_kivo(command, *arguments, *OUTPUTS)
            for ending in ENDINGS[1:]:
                report = self.imported("b." + ending, "-o", "c.node", "-o", "c.ele")
                self.assertEqual((report["valid"], as_set(self.triangles("c"))), (True, as_set(self.triangles())))
            turned = self.imported("b.ele", "--flip-y", "-o", "c.node", "-o", "c.ele")["import"]
            self.assertEqual(turned["turnedRound"], turned["triangles"])
            self.assertEqual(as_set(self.triangles("c")), as_set([[(x, 0 - y) for x, y in t] for t in self.triangles()]))

    def test_points_and_segments_beside_stay_with_their_data_and_of_equal_points_the_first(self):
        self.write("a.node", "6 2 2 1\n1 0 0 10 5 1\n2 2 0 20 5 2\n3 2 2 30 5 3\n4 0 2 40 5 4\n5 2 2 31 5 3\n6 9 9 60 5 6\n")
        self.write("a.ele", "2 3 0\n1 1 2 5\n2 4 3 1\n")
        self.write("b.xyz", "4 1 7\n2 0 99\n")
        self.write("c.seg", "4 1 2 2\n2 0 4 1\n0 0 2 0\n")
        done = self.run_kivo("import", "a.ele", "--points", "b.xyz", "--segments", "c.seg", "--check", "--json", "-o", "d.node", "-o", "d.ele", "-o", "d.seg")
        report = json.loads(done.stdout)
        self.assertEqual((report["points"], report["vertices"], report["duplicates"], report["valid"]), (8, 6, 2, True))
        self.assertEqual((report["segments"]["edges"], report["segments"]["newEnds"], report["import"]["borderEdges"]), (3, 0, 4))
        self.assertIn("2 points equal an earlier one but for their heights", done.stderr)
        self.assertEqual([row[1:] for row in self.rows("d.node")[1:]], [["0", "0", "10", "5", "1"], ["2", "0", "20", "5", "2"], ["2", "2", "30", "5", "3"],
                                                                       ["0", "2", "40", "5", "4"], ["9", "9", "60", "5", "6"], ["4", "1", "7", "0", "0"]])
        self.assertEqual(as_set(row[1:] for row in self.rows("d.ele")[1:]), as_set(["123", "134"]))
        wanted = {(0, 0, 2, 0), (2, 0, 2, 2), (2, 0, 4, 1), (4, 1, 2, 2), (2, 2, 0, 2), (0, 2, 0, 0)}
        self.assertEqual(self.segments("d.seg"), {frozenset((edge[:2], edge[2:])) for edge in wanted})
        text = self.run_kivo("import", "a.ele", "-o", "d.svg").stdout
        for line in (r"  imported       2 triangles with 4 corners, 0 turned round", r"                 4 border edges, 0 inner constraint edges",
                     r"  zone           mesh, 2 triangles, area 4, 4 border edges, 1 part", r"  times          .*, import [\d.]+ ms, .*", r"  written        d.svg"):
            self.assertRegex(text, "(?m)^" + line + "$")
        # What is in the way is told, and nothing is written.
        for extra, line in ((["--points", self.write("e.xy", "0.5 0.25\n")], "The vertex (0.5, 0.25) lies inside triangle 0 (0, 0) (2, 0) (2, 2)"),
                            (["--points", self.write("f.xy", "1 1\n")], "The vertex (1, 1) lies inside the edge (0, 0) (2, 2) of triangle 0"),
                            (["--segments", self.write("e.seg", "4 1 -1 -2\n5 0 -1 1\n")], "The constraint segment (-1, 1) (5, 0) crosses the edge (")):
            done = self.run_kivo("import", "a.ele", *extra, "-o", "g.obj", exit_code=1)
            self.assertIn(line, done.stderr)
            self.assertEqual((done.stdout, os.path.exists(self.path("g.obj"))), ("", False))

    def test_wrong_usage_is_refused(self):
        self.write("a.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n")
        self.write("a.xy", "0 0\n")
        for arguments, text in ((["a.xy"], "a.xy: meshes to import are .obj, .vtu, .msh and .ele files"),
                                (["a.obj", "-o", "a.obj"], "a.obj: the output would overwrite the input"),
                                (["a.obj", "--points", "a.xy", "-o", "a.xy"], "a.xy: the output would overwrite the input"),
                                (["a.obj", "--points", "a.obj"], "a.obj: files of this kind are only written"),
                                (["a.obj", "--zone", "inside"], "--zone")):
            self.assertIn(text, self.run_kivo("import", *arguments, exit_code=2).stderr)
        self.assertIn("has no heights", self.run_kivo("import", "a.obj", "-o", "b.xyz", exit_code=1).stderr)


if __name__ == "__main__":
    unittest.main()
