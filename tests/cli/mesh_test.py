#!/usr/bin/env python3
"""The command `mesh`: limits, report, files of meshes, interruption.

usage: mesh_test.py PATH_OF_KIVO2D [unittest options]
"""
import collections
import itertools
import json
import math
import os
import random
import signal
import subprocess
import unittest
import xml.etree.ElementTree

from command import DATA, KIVO2D, CommandTest

NIPIGON = os.path.join(DATA, "co_nipigon_h.poly")
TOLERANCE = 1e-6  # degrees


def cross(p, q, r):
    return (q[0] - p[0]) * (r[1] - p[1]) - (q[1] - p[1]) * (r[0] - p[0])


def area_of(triangle):
    return cross(*triangle) / 2


def angles_of(triangle):
    for i in range(3):
        p, q, r = (triangle[(i + k) % 3] for k in range(3))
        dot = (q[0] - p[0]) * (r[0] - p[0]) + (q[1] - p[1]) * (r[1] - p[1])
        yield math.degrees(math.atan2(cross(p, q, r), dot))


def edges_of(triangle):
    return [math.dist(p, q) for p, q in itertools.combinations(triangle, 2)]


class MeshTest(CommandTest):
    def mesh(self, *arguments, **options):
        return json.loads(self.run_kivo("mesh", *arguments, "--check", "--json", **options).stdout)

    def write_poly(self, name, rings, rest="0\n", markers=None):
        """Each ring closed, with a marker of its own; the rest of the file are holes and regions."""
        points, segments = [], []
        for k, ring in enumerate(rings):
            first = len(points)
            points += ring
            segments += [(first + i, first + (i + 1) % len(ring), markers[k] if markers else k + 1) for i in range(len(ring))]
        lines = [f"{len(points)} 2 0 0"] + ["%d %r %r" % (i + 1, *map(float, point)) for i, point in enumerate(points)]
        lines += [f"{len(segments)} 1"] + ["%d %d %d %d" % (i + 1, p + 1, q + 1, marker) for i, (p, q, marker) in enumerate(segments)]
        return self.write(name, "\n".join(lines) + "\n" + rest)

    def nodes(self, name="b.node"):
        return [tuple(map(float, row[1:])) for row in self.rows(name)[1:]]

    def triangles(self, stem="b"):
        nodes = [node[:2] for node in self.nodes(stem + ".node")]
        return [[nodes[int(corner) - 1] for corner in row[1:4]] for row in self.rows(stem + ".ele")[1:]]

    def msh(self, name="b.msh"):
        """Names of groups by dimension and tag, points by tag, lines and triangles as (group, corners)."""
        sections, rows = {}, self.rows(name)
        while rows:
            head = rows.pop(0)[0]
            end = rows.index(["$End" + head[1:]])
            sections[head], rows = rows[:end], rows[end + 1:]
        self.assertEqual(sections["$MeshFormat"], [["2.2", "0", "8"]])
        names = {(int(row[0]), int(row[1])): " ".join(row[2:]).strip('"') for row in sections.get("$PhysicalNames", [[]])[1:]}
        nodes = {int(row[0]): (float(row[1]), float(row[2])) for row in sections["$Nodes"][1:]}
        elements = {"1": [], "2": []}
        for number, row in enumerate(sections["$Elements"][1:], 1):
            self.assertEqual((int(row[0]), row[2], int(row[4])), (number, "2", int(row[3]) + 1))
            elements[row[1]].append((int(row[3]), [nodes[int(corner)] for corner in row[5:]]))
        for key, count in (("$Nodes", len(nodes)), ("$Elements", number), ("$PhysicalNames", len(names))):
            self.assertEqual(int(sections.get(key, [["0"]])[0][0]), count)
        return names, nodes, elements["1"], elements["2"]

    def vtu(self, name="b.vtu"):
        root = xml.etree.ElementTree.fromstring(self.read(name))
        self.assertEqual((root.tag, root.get("type")), ("VTKFile", "UnstructuredGrid"))
        piece = root.find("UnstructuredGrid/Piece")
        arrays = {array.get("Name"): list(map(float, (array.text or "").split())) for array in piece.iter("DataArray")}
        self.assertEqual(len(arrays["Points"]), 3 * int(piece.get("NumberOfPoints")))
        self.assertEqual(arrays["types"], [5] * int(piece.get("NumberOfCells")))
        self.assertEqual(arrays["offsets"], list(range(3, 3 * len(arrays["types"]) + 1, 3)))
        return arrays


OUTPUTS = [argument for ending in ("node", "ele", "edge", "msh", "vtu", "obj", "svg", "ps") for argument in ("-o", "b." + ending)]


class Quality(MeshTest):
    def test_lake_with_islands_meets_the_angle_and_the_report_tells_what_the_file_holds(self):
        source = self.mesh(NIPIGON, "--min-angle", "0", "-o", "b.node", "-o", "b.ele")
        area = math.fsum(map(area_of, self.triangles()))
        self.assertEqual((source["mesh"]["innerPoints"], source["mesh"]["unmet"], source["zone"]["borderEdges"]), (0, [], 527))
        for angle in (20, 30):
            report = self.mesh(NIPIGON, "--min-angle", str(angle), "-o", "b.node", "-o", "b.ele")
            mesh, triangles = report["mesh"], self.triangles()
            smallest = [min(angles_of(triangle)) for triangle in triangles]
            self.assertLess(abs(math.fsum(map(area_of, triangles)) / area - 1), 1e-12)
            bad = sum(a < angle - TOLERANCE for a in smallest)
            self.assertEqual((mesh["end"], mesh["badTriangles"], len(mesh["unmet"]) > 0), ("complete", bad, bad > 0))
            self.assertEqual({(entry["limit"], entry["reason"]) for entry in mesh["unmet"]}, {("minAngle", "smallInputAngle")} if bad else set())
            self.assertEqual(report["vertices"], 527 + mesh["innerPoints"] + mesh["segmentPoints"])
            self.assertEqual((mesh["triangles"], mesh["vertices"]), (len(triangles), len({corner for triangle in triangles for corner in triangle})))
            self.assertAlmostEqual(mesh["smallestAngle"], min(smallest), places=9)
            self.assertAlmostEqual(mesh["largestAngle"], max(max(angles_of(triangle)) for triangle in triangles), places=9)
            bins = collections.Counter(int(a // 5) for a in smallest)
            self.assertEqual([entry["triangles"] for entry in mesh["smallestAngles"]], [bins[i] for i in range(12)])
            for name, values in (("areas", map(area_of, triangles)), ("edges", itertools.chain(*map(edges_of, triangles)))):
                values = list(values)
                self.assertAlmostEqual(mesh[name]["min"] / min(values), 1, places=9)
                self.assertAlmostEqual(mesh[name]["max"] / max(values), 1, places=9)

    def test_sizes_and_growth_hold(self):
        self.write_poly("a.poly", [[(0, 0), (9, 0), (9, 5), (0, 5)], [(1, 1), (2, 1), (2, 2), (1, 2)]])
        self.mesh("a.poly", "--max-edge", "0.4", "--max-area", "0.05", "-o", "b.node", "-o", "b.ele")
        self.assertLessEqual(max(map(area_of, self.triangles())), 0.05)
        self.assertLessEqual(max(max(edges_of(triangle)) for triangle in self.triangles()), 0.4)
        report = self.mesh("a.poly", "--grow", "3", "-o", "b.node", "-o", "b.ele")
        self.assertEqual(report["mesh"]["badTriangles"], 0)
        sides = collections.defaultdict(list)
        for triangle in self.triangles():
            for edge in itertools.combinations(triangle, 2):
                sides[frozenset(edge)].append(area_of(triangle))
        self.assertLessEqual(max(max(areas) / min(areas) for areas in sides.values()), 3 * (1 + 1e-9))

    def test_defaults_and_figures_do_not_depend_on_the_unit_up_to_the_ends_of_the_doubles(self):
        figures = set()
        for size in (2.0**-900, 2.0**-60, 1.0, 2.0**60, 2.0**1019):
            self.write_poly("a.poly", [[(0, 0), (8 * size, 0), (8 * size, size), (0, size)], [(7 * size, size / 4), (7.5 * size, size / 2), (7 * size, size / 2)]])
            mesh = self.mesh("a.poly", "--max-edge", repr(size / 2))["mesh"]
            figures.add((mesh["end"], mesh["triangles"], mesh["smallestAngle"], mesh["minEdge"] / size, mesh["edges"]["max"] / size))
            self.assertEqual(mesh["areas"]["max"] is None, size > 2.0**1000)
        self.assertEqual(len(figures), 1, figures)
        self.assertEqual(next(iter(figures))[::3], ("complete", 8e-9))

    def test_segments_that_stay_whole_keep_the_vertices_of_the_border_and_are_named_as_the_reason(self):
        ring = [(0, 0), (10, 0), (10, 0.25), (0, 0.25)]
        self.write_poly("a.poly", [ring])
        mesh = self.mesh("a.poly", "--no-split", "--min-angle", "25", "-o", "b.node", "-o", "b.ele", "-o", "b.poly")["mesh"]
        self.assertEqual((mesh["segmentPoints"], mesh["unmet"][0]["limit"], mesh["unmet"][0]["reason"]), (0, "minAngle", "noSplit"))
        self.assertEqual(len(self.rows("b.poly")) - len(self.nodes()) - 1, 1 + 4 + 1)
        border = {node[:2] for node in self.nodes() if node[0] in (0, 10) or node[1] in (0, 0.25)}
        self.assertEqual(border, set(ring))
        text = self.run_kivo("mesh", "a.poly", "--no-split").stdout
        self.assertIn(" with an angle below the limit, beside a segment that --no-split keeps from being split\n", text)
        self.assertEqual(self.mesh("a.poly", "--min-edge", "9")["mesh"]["unmet"][0]["reason"], "minEdge")
        self.write_poly("a.poly", [[(0, 0), (10, 0), (10, 1)]])
        self.assertEqual(self.mesh("a.poly")["mesh"]["unmet"], [{"limit": "minAngle", "reason": "smallInputAngle", "triangles": 1}])

    def test_end_by_points_leaves_a_mesh_and_says_so(self):
        mesh = self.mesh(NIPIGON, "--max-points", "100", "-o", "b.node", "-o", "b.ele")["mesh"]
        self.assertEqual((mesh["end"], mesh["innerPoints"] + mesh["segmentPoints"]), ("pointLimit", 100))
        self.assertIn("notReached", {entry["reason"] for entry in mesh["unmet"]})
        self.assertGreater(min(map(area_of, self.triangles())), 0)


class Input(MeshTest):
    SQUARES = [[(0, 0), (8, 0), (8, 8), (0, 8)], [(2, 2), (6, 2), (6, 6), (2, 6)]]

    def test_area_limits_of_regions_hold_where_they_stand(self):
        self.write_poly("a.poly", self.SQUARES, "0\n2\n1 4 4 7 0.05\n2 1 1 2.5 -1\n")
        for extra, outside in (([], 4), (["--max-area", "0.5"], 0.5)):
            report = self.mesh("a.poly", "--zone", "enclosed", *extra, *OUTPUTS)
            regions = collections.defaultdict(list)
            for triangle, row in zip(self.triangles(), self.rows("b.ele")[1:]):
                x, y = (sum(coordinates) / 3 for coordinates in zip(*triangle))
                self.assertEqual(row[4], "7" if max(abs(x - 4), abs(y - 4)) < 2 else "2.5")
                regions[row[4]].append(area_of(triangle))
            self.assertEqual([round(math.fsum(regions[key]), 9) for key in ("7", "2.5")], [16, 48])
            self.assertLessEqual(max(regions["7"]), 0.05)
            self.assertTrue(0.05 < max(regions["2.5"]) <= outside)
            self.assertEqual(report["mesh"]["badTriangles"], 0)
        names, _, _, triangles = self.msh()
        self.assertEqual(names, {(1, 1): "marker 1", (1, 2): "marker 2", (2, 7): "region 7", (2, 8): "region 2.5"})
        self.assertEqual(["7" if group == 7 else "2.5" for group, _ in triangles], [row[4] for row in self.rows("b.ele")[1:]])
        self.assertEqual(self.vtu()["region"], [float(row[4]) for row in self.rows("b.ele")[1:]])

    def test_every_piece_has_the_marker_of_its_segment(self):
        self.write_poly("a.poly", self.SQUARES, markers=[-3, 5])
        self.mesh("a.poly", "--max-edge", "0.7", *OUTPUTS, "-o", "b.poly")
        names, _, lines, _ = self.msh()
        self.assertEqual(names, {(1, 6): "marker -3", (1, 5): "marker 5"})
        for group, total in ((6, 32), (5, 16)):
            pieces = [ends for tag, ends in lines if tag == group]
            self.assertAlmostEqual(math.fsum(math.dist(*ends) for ends in pieces), total, places=12)
            ring = {0, 8} if group == 6 else {2, 6}
            self.assertTrue(all(ring & set(x for x, _ in ends) or ring & set(y for _, y in ends) for ends in pieces))
            self.assertGreater(len(pieces), total / 0.7)
        markers = collections.Counter(int(node[-1]) for node in self.nodes()[8:])
        self.assertEqual({-3, 0, 5}, set(markers))
        self.assertEqual(markers[-3], sum(tag == 6 for tag, _ in lines) - 4)
        rows = self.rows("b.poly")[len(self.nodes()) + 1:]
        self.assertEqual(collections.Counter(int(row[3]) for row in rows[1:-1]), {-3: markers[-3] + 4, 5: markers[5] + 4})

    def test_heights_are_interpolated(self):
        source = random.Random(5)
        points = [(0, 0), (9, 0), (9, 9), (0, 9)] + [(source.uniform(1, 8), source.uniform(1, 8)) for _ in range(20)]
        self.write("a.xyz", "".join(f"{x!r} {y!r} {2 * x - 3 * y + 1!r}\n" for x, y in points))
        self.write("a.seg", "0 0 9 0\n9 0 9 9\n9 9 0 9\n0 9 0 0\n")
        report = self.mesh("a.xyz", "--segments", "a.seg", "--max-area", "0.3", "-o", "b.node", "-o", "b.vtu")
        self.assertGreater(report["mesh"]["segmentPoints"] * report["mesh"]["innerPoints"], 0)
        for x, y, z in self.nodes():
            self.assertAlmostEqual(z, 2 * x - 3 * y + 1, places=9)
        self.assertEqual(self.vtu()["attribute1"], [node[2] for node in self.nodes()])

    def test_all_files_hold_the_same_mesh_and_points_elsewhere_are_in_none_of_those_for_viewers(self):
        dust = "".join(f"{x} {y}\n" for x, y in itertools.product((-5, 4, 15), repeat=2))
        self.write("a.xy", "0 0\n8 0\n8 8\n0 8\n2 2\n6 2\n6 6\n2 6\n" + dust)
        self.write("a.seg", "".join("%d %d %d %d\n" % (*p, *q) for ring in self.SQUARES for p, q in zip(ring, ring[1:] + ring[:1])))
        self.mesh("a.xy", "--segments", "a.seg", "--flip-y", "--min-angle", "28", *OUTPUTS)
        triangles = self.triangles()
        used = [node for node in self.nodes() if any(node in triangle for triangle in triangles)]
        self.assertEqual(len(self.nodes()) - len(used), 9)
        names, nodes, lines, of_msh = self.msh()
        self.assertEqual((names, list(nodes.values()), of_msh), ({}, used, [(0, triangle) for triangle in triangles]))
        self.assertEqual({frozenset(ends) for _, ends in lines}, {frozenset(self.nodes()[int(end) - 1] for end in row[1:3])
                                                                  for row in self.rows("b.edge")[1:] if row[3] == "1"})
        arrays = self.vtu()
        points = list(zip(arrays["Points"][::3], arrays["Points"][1::3]))
        self.assertEqual(points, used)
        corners = [points[int(corner)] for corner in arrays["connectivity"]]
        self.assertEqual([corners[i:i + 3] for i in range(0, len(corners), 3)], triangles)
        for triangle, angle in zip(triangles, arrays["smallestAngle"]):
            self.assertAlmostEqual(min(angles_of(triangle)), angle, places=9)
        faces = [row for row in self.rows("b.obj") if row[0] == "f"]
        self.assertEqual(len(faces), len(triangles))
        self.assertIn(f"<title>{len(triangles)} triangles, ", self.read("b.svg").decode())
        self.assertTrue(self.read("b.ps").endswith(b"%%Trailer\n"))


class Usage(MeshTest):
    def test_wrong_limits_are_refused_before_anything_is_read(self):
        for option, value, text in (("--min-angle", "30.5", "--min-angle takes degrees from 0 to 30, not 30.5"),
                                    ("--min-angle", "-1", "--min-angle takes degrees from 0 to 30, not -1"),
                                    ("--min-angle", "nan", "--min-angle takes degrees from 0 to 30, not nan"),
                                    ("--max-area", "0", "--max-area takes a positive area, not 0"),
                                    ("--max-edge", "inf", "--max-edge takes a positive length, not inf"),
                                    ("--min-edge", "-2", "--min-edge takes a length, or 0, not -2"),
                                    ("--grow", "1", "--grow takes a factor above 1, not 1"),
                                    ("--max-points", "-1", "--max-points takes a number of points, not -1")):
            done = self.run_kivo("mesh", "missing.poly", option, value, exit_code=2)
            self.assertEqual((done.stdout, done.stderr), ("", f"kivo2d: {text}\n"))
        for arguments in ([], ["a.poly", "--max-points", "1.5"], ["a.poly", "--max-edge"], ["a.poly", "--zone", "left"], ["a.poly", "-o", "a.stl"]):
            self.run_kivo("mesh", *arguments, exit_code=2)
        self.write("a.xy", "0 0\n1 0\n0 1\n")
        self.assertEqual(self.run_kivo("mesh", "a.xy", exit_code=2).stderr,
                         "kivo2d: mesh is about segments: give --segments, or a .poly or .geojson file\n")
        self.write("a.seg", "0 0 1 0\n")
        done = self.run_kivo("mesh", "a.xy", "--segments", "a.seg", "-o", "b.msh", exit_code=1)
        self.assertTrue(done.stderr.endswith("\nkivo2d: a.xy: the segments enclose nothing\n"), done.stderr)
        self.assertIn("Usage", self.run_kivo("mesh", "--help").stdout)
        self.assertEqual(sorted(os.listdir(self.folder.name)), ["a.seg", "a.xy"])


class Interrupt(MeshTest):
    def start(self):
        """A run that would take minutes, as soon as it meshes."""
        self.write_poly("a.poly", [[(0, 0), (9, 0), (9, 9), (0, 9)]])
        process = subprocess.Popen([KIVO2D, "mesh", "a.poly", "--max-area", "1e-7", "--progress", "--check", "--json", "-o", "b.node", "-o", "b.ele"],
                                   cwd=self.folder.name, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                   preexec_fn=lambda: signal.signal(signal.SIGINT, signal.default_int_handler))
        self.addCleanup(process.stderr.close)
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        heard = b""
        while b" refine" not in heard:
            byte = process.stderr.read(1)
            self.assertNotEqual(byte, b"", heard)
            heard += byte
        return process

    def test_mesh_that_was_reached_is_kept(self):
        process = self.start()
        process.send_signal(signal.SIGINT)
        report, errors = process.communicate(timeout=120)
        self.assertEqual(process.returncode, 130)
        self.assertTrue(errors.endswith(b"kivo2d: interrupted: the mesh is valid, but not finished\n"), errors)
        report = json.loads(report)
        self.assertEqual((report["mesh"]["end"], report["valid"]), ("interrupted", True))
        self.assertEqual(len(self.triangles()), report["mesh"]["triangles"])
        self.assertAlmostEqual(math.fsum(map(area_of, self.triangles())), 81, places=9)


if __name__ == "__main__":
    unittest.main()
