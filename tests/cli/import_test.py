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
            # A file in which each triangle has corners of its own.
            self.write_obj("own.obj", [corner for triangle in triangles for corner in triangle], [(k - 2, k - 1, k) for k in range(3, 3 * len(triangles) + 1, 3)])
            again = self.imported("own.obj", "-o", "c.node", "-o", "c.ele")
            self.assertEqual((again["duplicates"], again["vertices"]), (3 * len(triangles) - wanted["corners"], wanted["corners"]))
            self.assertEqual((again["import"], as_set(self.triangles("c"))), ({**wanted, "turnedRound": 0}, as_set(triangles)))

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
        for line in (r"  imported       2 triangles with 4 corners, 1 turned round", r"                 4 border edges, 0 inner constraint edges",
                     r"  zone           mesh, 2 triangles, area 4, 4 border edges, 1 part", r"  times          .*, import [\d.]+ ms, .*", r"  written        d.svg"):
            self.assertRegex(text, "(?m)^" + line + "$")
        # What is in the way is told, and nothing is written.
        for extra, line in ((["--points", self.write("e.xy", "0.5 0.25\n")], "The vertex (0.5, 0.25) lies inside triangle 0 (0, 0) (2, 0) (2, 2)"),
                            (["--points", self.write("f.xy", "1 1\n")], "The vertex (1, 1) lies inside the edge (0, 0) (2, 2) of triangle 0"),
                            (["--segments", self.write("e.seg", "5 0 -1 1\n")], "The constraint segment (-1, 1) (5, 0) crosses the edge (")):
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


class Cut(ImportTest):
    def grid(self, name, size):
        """Squares halved by either diagonal, with heights."""
        points = [(x, y) for y in range(size + 1) for x in range(size + 1)]
        rows = [(i + 1, x, y, i * i * 7 % 11) for i, (x, y) in enumerate(points)]
        self.write(name + ".node", f"{len(points)} 2 1 0\n" + "".join("%d %d %d %d\n" % row for row in rows))
        corners = []
        for x, y in itertools.product(range(size), repeat=2):
            a, b, c, d = (x + i + (y + j) * (size + 1) + 1 for i, j in ((0, 0), (1, 0), (1, 1), (0, 1)))
            corners += [(a, b, c), (a, c, d)] if (x + y) % 2 else [(a, b, d), (b, c, d)]
        self.write(name + ".ele", f"{len(corners)} 3 0\n" + "".join("%d %d %d %d\n" % (i + 1, *row) for i, row in enumerate(corners)))

    def expect_cut(self, report, knives, tolerance):
        """No triangle of the zone lies on both sides of a knife between its ends; pieces, edges and the areas are right."""
        triangles, segments = self.triangles(), self.segments()
        chain = set()
        for (p, q) in knives:
            direction = (q[0] - p[0], q[1] - p[1])
            length = math.hypot(*direction)
            along = lambda r: ((r[0] - p[0]) * direction[0] + (r[1] - p[1]) * direction[1]) / length
            distance = lambda r: cross(p, q, r) / length
            chain |= {edge for edge in segments if all(abs(distance(r)) <= tolerance and -tolerance <= along(r) <= length + tolerance for r in edge)}
            for triangle in triangles:
                for a, b in itertools.combinations(triangle, 2):
                    da, db = distance(a), distance(b)
                    if min(da, db) < -tolerance and max(da, db) > tolerance:
                        at = along(a) + (along(b) - along(a)) * da / (da - db)
                        self.assertFalse(tolerance < at < length - tolerance, (a, b, p, q))
        self.assertEqual(report["cut"]["edges"], len(chain))
        parent = list(range(len(triangles)))

        def root(k):
            while parent[k] != k:
                parent[k] = parent[parent[k]]
                k = parent[k]
            return k

        for edge, found in sides_of(triangles).items():
            if len(found) == 2 and edge not in chain:
                parent[root(found[0])] = root(found[1])
        pieces = [root(k) for k in range(len(triangles))]
        self.assertEqual((report["cut"]["pieces"], report["cut"]["knives"], report["valid"]), (len(set(pieces)), len(knives), True))
        return triangles, pieces

    def cut(self, command, *arguments, knives, **options):
        cuts = [argument for p, q in knives for argument in ("--cut", ",".join("%r" % float(c) for c in (*p, *q)))]
        return json.loads(self.run_kivo(command, *arguments, *cuts, "--check", "--json", *OUTPUTS, **options).stdout)

    def test_crossing_knives_divide_a_mesh_and_new_vertices_lie_on_its_surface(self):
        self.grid("a", 8)
        knives = [((0.5, -1), (0.5, 9)), ((-1, 3.25), (8, 3.25)), ((0, 0), (8, 8)), ((2.5, 6.5), (3.5, 6.5)), ((20, 20), (30, 30))]
        done = self.cut("import", "a.ele", knives=knives)
        triangles, pieces = self.expect_cut(done, knives, 0)
        areas = collections.Counter()
        for triangle, piece in zip(triangles, pieces):
            areas[piece] += area_of(triangle)
        # The short knife divides nothing.
        self.assertEqual(sorted(areas.values()), [0.125, 1.5, 2.375, 3.78125, 11.28125, 20.59375, 24.34375])
        self.assertEqual((done["vertices"], done["import"]["triangles"]), (81 + done["cut"]["newVertices"], 128))
        surface = [[self.nodes("a.node")[int(corner) - 1] for corner in row[1:4]] for row in self.rows("a.ele")[1:]]
        for node in self.nodes():
            heights = {round(sum(share * corner[2] for share, corner in zip(shares, triangle)), 9) for triangle in surface
                       for shares in [[cross(node, triangle[(i + 1) % 3], triangle[(i + 2) % 3]) for i in range(3)]] if min(shares) >= 0}
            self.assertEqual(heights, {round(node[2], 9)}, node)
        # The files tell the same.
        root = xml.etree.ElementTree.fromstring(self.read("b.svg"))
        self.assertEqual({group.get("class") for group in root.iter(SVG + "g")} - {None}, {"mesh", "constraints", "cuts"})
        self.assertLessEqual(3, len([path for path in root.iter(SVG + "path") if path.get("class") == "pieces"]))
        features = json.loads(self.read("b.geojson"))["features"]
        self.assertEqual([feature["properties"] for feature in features[-2:]], [{"constraints": len(self.segments()) - done["cut"]["edges"]}, {"cuts": done["cut"]["edges"]}])
        numbers = {piece: k for k, piece in enumerate(dict.fromkeys(pieces), 1)}
        self.assertEqual([feature["properties"]["piece"] for feature in features[:-2]], [numbers[piece] for piece in pieces])
        self.assertEqual(self.vtu()["piece"], [numbers[piece] for piece in pieces])
        self.assertIn(b"Cuts in purple", self.read("b.ps"))

    def test_lakes_are_cut_before_and_after_they_are_meshed(self):
        knives = [((5, 8), (75, 100)), ((12, 92), (70, 6)), ((30.1, 40.3), (50.7, 60.2))]
        area = self.quality(NIPIGON, "--zone", "inside")["quality"]["area"]
        self.mesh(NIPIGON, "--min-angle", "25", "--max-area", "9", "-o", "a.vtu")
        for command, arguments in (("import", ["a.vtu"]), ("mesh", [NIPIGON, "--max-area", "9"]), ("triangulate", [NIPIGON, "--zone", "inside"])):
            report = self.cut(command, *arguments, knives=knives)
            triangles, _ = self.expect_cut(report, knives, 1e-9)
            self.assertGreater(report["cut"]["splitConstraintEdges"], 0)
            self.assertAlmostEqual(math.fsum(map(area_of, triangles)) / area, 1, places=12)
            if command == "mesh":
                self.assertLessEqual(max(map(area_of, triangles)), 9)
            # What was written has the cuts as constraints.
            again = self.imported("b.ele", "-o", "c.node", "-o", "c.ele")
            self.assertEqual(as_set(self.triangles("c")), as_set(triangles))

    def test_files_of_knives_and_upside_down(self):
        self.grid("a", 4)
        lines = [((-1, 0.5), (5, 0.5)), ((1.5, -1), (1.5, 5))]
        self.write("k.seg", "-1 0.5 5 0.5\n1.5 -1 1.5 5\n")
        self.write("k.poly", "4 2 0 0\n1 -1 0.5\n2 5 0.5\n3 1.5 -1\n4 1.5 5\n2 0\n1 1 2\n2 3 4\n0\n")
        self.write("k.geojson", '{"type":"MultiLineString","coordinates":[[[-1,0.5],[5,0.5]],[[1.5,-1],[1.5,5]]]}')
        wanted = self.cut("import", "a.ele", knives=lines)
        files = {ending: self.read("b." + ending) for ending in ("node", "ele", "svg")}
        for name in ("k.seg", "k.poly", "k.geojson"):
            report = self.imported("a.ele", "--cut", name, *OUTPUTS)
            self.assertEqual((report["cut"], {ending: self.read("b." + ending) for ending in files}), (wanted["cut"], files))
        mirrored = self.imported("a.ele", "--cut", "k.seg", "--flip-y", *OUTPUTS)
        self.assertEqual({**mirrored["cut"], "edges": 0}, {**wanted["cut"], "edges": 0})
        self.expect_cut(mirrored, [((-1, -0.5), (5, -0.5)), ((1.5, -5), (1.5, 1))], 0)
        text = self.run_kivo("import", "a.ele", "--cut", "k.seg").stdout
        self.assertRegex(text, r"(?m)^  cuts           2 knives, \d+ edges, \d+ new vertices, \d+ constraint edges split, 4 pieces$")
        self.assertRegex(text, r"(?m)^  times          .*, cut [\d.]+ ms")
        self.assertIn("overwrite the input", self.run_kivo("import", "a.ele", "--cut", "k.seg", "-o", "k.seg", exit_code=2).stderr)

    def test_cuts_are_no_borders_of_regions_and_follow_segments_to_the_grid(self):
        ring = [(0, 0), (8, 0), (8, 8), (0, 8)]
        self.write_poly("a.poly", [ring], "0\n1\n1 1 1 7 0.5\n", markers=[5])
        for command in ("triangulate", "mesh"):
            report = self.cut(command, "a.poly", "--unify", "0.001", knives=[((0, 2.03), (8, 5.21)), ((0, 0), (8, 0))])
            self.assertEqual({row[4] for row in self.rows("b.ele")[1:]}, {"7"})
            self.assertEqual((report["cut"]["pieces"], report["segments"]["missing"], report["valid"]), (2, 0, True))
            rows = self.rows("b.poly")[1 + report["vertices"]:]
            self.assertEqual(report["segments"]["edges"], sum(row[3] == "5" for row in rows[1:1 + int(rows[0][0])]))
            self.assertTrue(all(abs(c * 1000 - round(c * 1000)) < 1e-6 for node in self.nodes() for c in node[:2]))

    def test_knives_that_cut_nothing_are_told_and_wrong_ones_refused(self):
        self.write("a.xy", "0 0\n4 0\n0 4\n4 4\n")
        done = self.run_kivo("triangulate", "a.xy", "--cut", "5,5,6,6", "--cut", "1,1,1,1", "--cut=-1,-1,0,0", "--json", "-o", "b.svg")
        self.assertIn("WARNING: No knife is left, returning NULL", done.stderr)
        self.assertEqual(json.loads(done.stdout)["cut"], {"knives": 3, "edges": 0, "newVertices": 0, "splitConstraintEdges": 0, "pieces": 1})
        self.write("line.xy", "0 0\n1 1\n2 2\n")
        self.assertIn("no triangles yet", self.run_kivo("triangulate", "line.xy", "--cut", "0,1,1,0").stderr)
        for text, message in (("1,2,3", "--cut takes four numbers x0,y0,x1,y1, or a file of segments, not 1,2,3"),
                              ("1,2,3,1e999", "--cut takes four numbers x0,y0,x1,y1, or a file of segments, not 1,2,3,1e999"),
                              ("a.xy", "a.xy: segments are in files of the kinds .seg, .poly, .geojson and .bin"),
                              ("nan,0,1,1", "nan,0,1,1: unknown kind of file")):
            self.assertIn(message, self.run_kivo("triangulate", "a.xy", "--cut", text, exit_code=2).stderr)
        self.assertIn("no.seg: can't be opened", self.run_kivo("triangulate", "a.xy", "--cut", "no.seg", exit_code=1).stderr)


if __name__ == "__main__":
    unittest.main()
