#!/usr/bin/env python3
"""Grids: meshes filled along one, and vertices moved to one.

usage: grids_test.py PATH_OF_KIVO2D [unittest options]
"""
import itertools
import json
import math
import random
import unittest

from mesh_test import NIPIGON, MeshTest, angles_of


class Grids(MeshTest):
    def test_wrong_grids_are_refused(self):
        for value in ("1", "1,1", "0,1,0", "-1,1,0", "1,0,0", "nan,1,0", "1,inf,0", "1,1,0,", "1,1,0,2", "1;1;0", " 1,1,0", "1e999,1,0", "x,1,0"):
            done = self.run_kivo("mesh", "missing.poly", "--grid=" + value, exit_code=2)
            self.assertEqual(done.stderr, f"kivo2d: --grid takes a positive length and a direction other than 0,0, as in 0.5,1,0, not {value}\n")
        for value in ("0", "-1", "nan", "inf"):
            for command in ("mesh", "triangulate"):
                done = self.run_kivo(command, "missing.poly", "--unify=" + value, exit_code=2)
                self.assertEqual(done.stderr, f"kivo2d: --unify takes a positive width, not {value}\n")

    def test_inside_is_filled_with_halves_of_squares_along_the_direction(self):
        self.write_poly("a.poly", [[(0, 0), (16, 0), (16, 9), (0, 9)], [(5, 3), (7, 3), (7, 6)]])
        for dx, dy in ((1, 0), (3, 1), (-2e9, 5e9)):
            report = self.mesh("a.poly", "--grid=0.5,%r,%r" % (dx, dy), "-o", "b.node", "-o", "b.ele")
            u, v = dx / math.hypot(dx, dy) * 0.5, dy / math.hypot(dx, dy) * 0.5
            steps = [((x * u + y * v) / 0.25, (y * u - x * v) / 0.25) for x, y in (node[:2] for node in self.nodes())]
            on_grid = sum(abs(a - round(a)) + abs(b - round(b)) < 1e-9 for a, b in steps)
            grid = report["mesh"]["gridPoints"]
            self.assertTrue(0.8 * 16 * 9 * 4 < grid <= on_grid <= grid + 7, (grid, on_grid))
            halves = sum(abs(a - 45) + abs(b - 45) < 1e-6 for a, b, _ in (sorted(angles_of(t)) for t in self.triangles()))
            self.assertGreater(halves, 0.6 * report["mesh"]["triangles"])
            self.assertEqual((report["mesh"]["badTriangles"], report["valid"]), (0, True))
        self.assertRegex(self.run_kivo("mesh", "a.poly", "--grid", "1,1,0").stdout, r"(?m)^  mesh +complete, \d+ points of the grid, \d+ points? inside and ")
        done = self.run_kivo("mesh", "a.poly", "--grid", "1e-200,1,0", "--json")
        self.assertIn("WARNING", done.stderr)
        self.assertEqual(json.loads(done.stdout)["mesh"]["gridPoints"], 0)

    def test_unified_files_lie_on_the_grid_and_agree(self):
        source = random.Random(4)
        self.write("r.xy", "0 0\n9 1\n")
        self.write("r.seg", "".join("%r %r %r %r\n" % tuple(source.uniform(0, 9) for _ in range(4)) for _ in range(30)))
        crossing = ("r.xy", "--segments", "r.seg")
        for width, extra in ((1.0, (NIPIGON,)), (0.25, (NIPIGON, "--conforming")), (2.0, (NIPIGON, "--zone", "inside")), (0.125, crossing),
                             (0.5, crossing), (2.0, crossing), (0.25, (*crossing, "--conforming"))):
            before = self.report(*extra)
            report = self.report("--unify", repr(width), "--check", *extra, *itertools.chain(*(("-o", "b." + e) for e in ("node", "ele", "edge", "seg", "poly"))))
            unify, nodes = report["unify"], [node[:2] for node in self.nodes()]
            self.assertEqual((report["valid"], unify["width"], report["segments"]["missing"]), (True, width, 0))
            self.assertEqual((len(nodes), report["vertices"]), (before["vertices"] - unify["merged"],) * 2)
            beside = sum(any(c % width for c in node) for node in nodes)
            self.assertEqual(beside, unify["beside"])
            segments = {frozenset([tuple(map(float, row[:2])), tuple(map(float, row[2:]))]) for row in self.rows("b.seg")}
            self.assertEqual(len(segments), report["segments"]["edges"])
            edges = {frozenset(nodes[int(end) - 1] for end in row[1:3]) for row in self.rows("b.edge")[1:]}
            if "--zone" not in extra:
                self.assertLessEqual(segments, edges)
            again = self.report("b.poly", "--unify", repr(width))
            self.assertEqual((again["unify"]["merged"], again["vertices"], again["segments"]["edges"]), (0, len(nodes), len(segments)))

    def test_unified_mesh_is_measured_as_it_is_written(self):
        report = self.mesh(NIPIGON, "--min-angle", "28", "--unify", "0.125", "-o", "b.node", "-o", "b.ele", "-o", "b.obj")
        self.assertTrue(all(c % 0.125 == 0 for node in self.nodes() for c in node[:2]))
        self.assertEqual(report["unify"]["beside"], 0)
        self.assertAlmostEqual(report["mesh"]["smallestAngle"], min(min(angles_of(t)) for t in self.triangles()), places=9)
        self.assertEqual(json.loads(self.run_kivo("quality", "b.obj", "--json").stdout)["quality"]["triangles"], report["mesh"]["triangles"])
        self.assertRegex(self.run_kivo("mesh", NIPIGON, "--unify", "4").stdout, r"(?m)^  grid +width 4, \d+ vertices fell together .*$")

    def test_points_and_markers_of_what_fell_together_stay_with_what_is_left(self):
        self.write("a.poly", "6 2 1 1\n1 0 0 5 1\n2 4 0 6 1\n3 4.1 0.1 7 2\n4 4 4 8 2\n5 0 4 9 3\n6 2 0.2 1 4\n4 1\n1 1 2 11\n2 3 4 12\n3 4 5 13\n4 5 1 14\n0\n")
        report = self.report("a.poly", "--unify", "1", "-o", "b.node", "-o", "b.poly", "-o", "b.xyz", "--check")
        self.assertEqual((report["unify"], report["vertices"], report["valid"]), ({"width": 1.0, "merged": 1, "beside": 0}, 5, True))
        nodes = self.nodes()
        self.assertEqual([node[:2] for node in nodes], [(0, 0), (4, 0), (4, 4), (0, 4), (2, 0)])
        self.assertIn(nodes[1][2:], [(6, 1), (7, 2)])
        segments = sorted((int(row[3]), {int(row[1]), int(row[2])}) for row in self.rows("b.poly")[7:12])
        self.assertEqual(segments, [(11, {1, 5}), (11, {5, 2}), (12, {2, 3}), (13, {3, 4}), (14, {4, 1})])

    def test_what_was_half_way_between_grid_points_keeps_its_segments(self):
        self.write("a.poly", "5 2 0 0\n0 0.5 0\n1 1 0\n2 0 0\n3 1 6\n4 -4 3\n2 0\n0 0 3\n1 2 4\n0\n")
        self.report("a.poly", "--unify", "1", "-o", "b.poly")
        rows = self.rows("b.poly")
        places = {row[0]: (float(row[1]), float(row[2])) for row in rows[1:5]}
        ends = sorted(sorted((places[row[1]], places[row[2]])) for row in rows[6:8])
        self.assertEqual(ends, [[(-4, 3), (0, 0)], [(0, 0), (1, 6)]])


if __name__ == "__main__":
    unittest.main()
