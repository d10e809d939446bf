#!/usr/bin/env python3
"""Zones of the command: what the segments hold, in every kind of file.

usage: zone_test.py PATH_OF_KIVO2D [unittest options]
"""
import itertools
import json
import math
import os
import random
import unittest
from fractions import Fraction

from command import DATA, CommandTest

SQUARE = [(0, 0), (8, 0), (8, 8), (0, 8)]


def area_of(ring):
    return math.fsum(x0 * y1 - x1 * y0 for (x0, y0), (x1, y1) in zip(ring, ring[1:] + ring[:1])) / 2


def moved(ring, factor, x, y):
    return [(factor * px + x, factor * py + y) for px, py in ring]


class ZoneTest(CommandTest):
    def write_polygons(self, name, *polygons):
        """Each a list of rings."""
        closed = [[ring + ring[:1] for ring in rings] for rings in polygons]
        return self.write(name, json.dumps({"type": "MultiPolygon", "coordinates": closed}))

    def zone(self, *arguments):
        return self.report(*arguments, "--check")["zone"]

    def area_of_zone(self, name, kind="inside"):
        return self.zone(name, "--zone", kind)["area"]

    def rings(self, name):
        """Corners of the triangles of a GeoJSON file."""
        features = json.loads(self.read(name))["features"]
        return [[tuple(position) for position in feature["geometry"]["coordinates"][0][:3]] for feature in features if "triangle" in feature["properties"]]


class Inside(ZoneTest):
    def test_rings_in_rings_are_holes_whichever_way_they_run(self):
        rings = [SQUARE, moved(SQUARE, 0.75, 1, 1), moved(SQUARE, 0.25, 2, 2), moved(SQUARE, 0.125, 20, 3)]
        for order in itertools.product((1, -1), repeat=4):
            self.write_polygons("a.geojson", [ring[::step] for ring, step in zip(rings, order)])
            zone = self.zone("a.geojson", "--zone", "inside")
            self.assertEqual((zone["kind"], zone["area"], zone["parts"], zone["borderEdges"]), ("inside", 64 - 36 + 4 + 1, 3, 16))
            self.assertEqual(self.area_of_zone("a.geojson", "enclosed"), 64 + 1)

    def test_random_areas_with_holes_have_the_area_of_their_rings(self):
        source = random.Random(21)
        for _ in range(20):
            star = lambda x, y, low, high: [(x + r * math.cos(a), y + r * math.sin(a)) for a in sorted(source.uniform(0, 2 * math.pi) for _ in range(40))
                                            for r in [source.uniform(low, high)]][::source.choice((1, -1))]
            # Within a spread of angles that leaves no gap of half a turn, rings between circles do not meet.
            polygons = [[star(x, y, 6, 9), star(x, y, 2, 3)] for x, y in ((0, 0), (30, 5), (-5, 25))]
            wanted = sum(abs(area_of(outer)) - abs(area_of(hole)) for outer, hole in polygons)
            self.write_polygons("a.geojson", *polygons)
            self.assertLess(abs(self.area_of_zone("a.geojson") / wanted - 1), 1e-12)

    def test_rings_that_cross_and_overlap_hold_what_a_ray_says(self):
        def crossings(x, y, segments):
            """Of the ray to the right, exact."""
            return sum((y0 > y) != (y1 > y) and x < x0 + (y - y0) * Fraction(x1 - x0, y1 - y0) for (x0, y0), (x1, y1) in segments)

        source = random.Random(8)
        for size in (4, 5, 9, 200, 200):
            rings = [[(source.randrange(size), source.randrange(size)) for _ in range(7)] for _ in range(3)]
            segments = [edge for ring in rings for edge in zip(ring, ring[1:] + ring[:1])]
            source.shuffle(segments)
            self.write("a.xy", "".join("%d %d\n" % point for ring in rings for point in ring))
            self.write("a.seg", "".join("%d %d %d %d\n" % (*edge[0], *edge[1]) for edge in segments))
            self.report("a.xy", "--segments", "a.seg", "-o", "all.geojson")
            self.report("a.xy", "--segments", "a.seg", "--zone", "inside", "--check", "-o", "zone.geojson")
            inside = self.rings("zone.geojson")
            for ring in self.rings("all.geojson"):
                if abs(area_of(ring)) < 1e-9:
                    continue  # a rounded crossing may be anywhere in it
                x, y = (sum(map(Fraction, coordinates)) / 3 for coordinates in zip(*ring))
                self.assertEqual(ring in inside, crossings(x, y, segments) % 2 == 1, f"{rings} at {ring}")

    def test_areas_with_a_common_border_are_one_and_a_ring_given_twice_is_none(self):
        self.write_polygons("a.geojson", [SQUARE], [moved(SQUARE, 1, 8, 2)])
        for kind in ("inside", "enclosed"):
            zone = self.zone("a.geojson", "--zone", kind)
            self.assertEqual((zone["area"], zone["parts"]), (128, 1))
        self.write_polygons("a.geojson", [SQUARE], [SQUARE[::-1]], [moved(SQUARE, 1, 20, 0)])
        self.assertEqual(self.area_of_zone("a.geojson"), 64)
        self.assertEqual(self.area_of_zone("a.geojson", "enclosed"), 128)

    def test_open_line_bounds_nothing_but_stays_an_edge(self):
        square = "0 0 8 0\n8 0 8 8\n8 8 0 8\n0 8 0 0\n"
        self.write("a.xy", "0 0\n8 0\n8 8\n0 8\n12 4\n4 4\n")
        self.write("a.seg", square + "4 4 12 4\n")
        zone = self.zone("a.xy", "--segments", "a.seg", "--zone", "inside", "-o", "a.geojson", "-o", "b.seg")
        self.assertEqual((zone["area"], zone["borderEdges"]), (64, 5))
        lines = json.loads(self.read("a.geojson"))["features"][-1]["geometry"]["coordinates"]
        self.assertEqual(lines[-1], [[4, 4], [8, 4]])
        self.assertIn(["8", "4", "12", "4"], self.rows("b.seg"))

    def test_nothing_inside_is_an_error_and_leaves_no_file(self):
        self.write("a.xy", "0 0\n8 0\n8 8\n")
        self.write("line.xy", "0 0\n8 0\n4 0\n")
        for points, segments in (("a.xy", "0 0 8 0\n8 0 8 8\n"), ("a.xy", "0 0 0 0\n"), ("a.xy", ""), ("line.xy", "0 0 8 0\n8 0 4 0\n4 0 0 0\n")):
            self.write("a.seg", segments)
            for kind in ("inside", "enclosed"):
                done = self.run_kivo("triangulate", points, "--segments", "a.seg", "--zone", kind, "-o", "b.svg", "-o", "b.ele", "-o", "c/", exit_code=1)
                self.assertIn(points if points == "a.xy" else "b.svg", done.stderr)
        for arguments in (["a.xy", "--zone", "inside"], ["a.xy", "--segments", "a.seg", "--zone", "left"], ["a.xy", "--segments", "a.seg", "--zone"]):
            self.run_kivo("triangulate", *arguments, "-o", "b.ele", exit_code=2)
        self.assertEqual(sorted(os.listdir(self.folder.name)), ["a.seg", "a.xy", "line.xy"])

    def test_real_areas_are_those_found_without_this_library(self):
        def inside(name, kind="inside"):
            path = os.path.join(DATA, name)
            return self.zone(path + ".xy", "--segments", path + ".seg", "--zone", kind)

        with open(os.path.join(DATA, "co_iceland_h.json"), encoding="utf-8") as file:
            iceland = json.load(file)["tool"]
        zone = inside("co_iceland_h")
        self.assertLess(abs(zone["area"] / iceland["geos_area_sum"] - 1), 1e-12)
        self.assertEqual((zone["parts"], zone["borderEdges"]), (iceland["geos_polygons"], 9551))
        with open(os.path.join(DATA, "noisy_lake.seg"), encoding="utf-8") as file:
            ring = [tuple(map(float, line.split()[:2])) for line in file]
        for kind in ("inside", "enclosed"):
            self.assertLess(abs(inside("noisy_lake", kind)["area"] / abs(area_of(ring)) - 1), 1e-12)
        self.assertAlmostEqual(inside("square_with_round_hole", "enclosed")["area"], 1, places=14)


class Holes(ZoneTest):
    # A square with a square in it, and a line across the ring between them.
    POINTS = "10 2\n1 0 0\n2 8 0\n3 8 8\n4 0 8\n5 2 2\n6 4 2\n7 4 4\n8 2 4\n9 30 0\n10 8 2\n"
    SEGMENTS = "9 0\n1 1 2\n2 2 10\n3 10 3\n4 3 4\n5 4 1\n6 5 6\n7 6 7\n8 7 8\n9 8 5\n"

    def areas(self, holes):
        self.write("a.poly", self.POINTS + self.SEGMENTS + holes)
        return [self.area_of_zone("a.poly", kind) for kind in ("inside", "enclosed")]

    def test_region_of_a_hole_point_is_left_out(self):
        self.assertEqual(self.areas("0\n"), [60, 64])
        self.assertEqual(self.areas("1\n1 3 3\n"), [60, 60])
        self.assertEqual(self.areas("3\n1 3 3\n2 25 1\n3 -9 9\n"), [60, 60])
        self.write("a.poly", self.POINTS + self.SEGMENTS + "1\n1 7 7\n")
        self.run_kivo("triangulate", "a.poly", "--zone", "inside", exit_code=1)
        self.assertEqual(self.area_of_zone("a.poly", "enclosed"), 4)

    def test_flipped_hole_is_found_and_a_poly_file_hands_all_on(self):
        self.write("a.poly", self.POINTS + self.SEGMENTS + "1\n1 3 3\n")
        self.report("a.poly", "--zone", "enclosed", "--flip-y", "-o", "b.poly", "-o", "b.node")
        self.assertTrue(self.read("b.poly").startswith(self.read("b.node")))
        self.assertEqual(len(self.rows("b.node")), 11)
        self.assertEqual(self.zone("b.poly", "--zone", "enclosed")["area"], 60)

    def test_regions_tell_the_triangles_of_the_zone_apart(self):
        self.write("a.poly", self.POINTS + self.SEGMENTS + "0\n2\n1 3 3 5\n2 7 7 6\n")
        self.report("a.poly", "--zone", "enclosed", "-o", "a.ele", "-o", "a.geojson")
        rows = self.rows("a.ele")[1:]
        self.assertEqual({row[4] for row in rows}, {"5", "6"})
        self.assertEqual([row[4] for row in rows].count("5"), 2)
        features = json.loads(self.read("a.geojson"))["features"]
        self.assertEqual([str(feature["properties"]["region"]) for feature in features[:-1]], [row[4] for row in rows])


class Files(ZoneTest):
    OUTPUTS = ("node", "ele", "edge", "obj", "geojson", "svg", "ps")

    def outputs(self, stem):
        return [argument for ending in self.OUTPUTS for argument in ("-o", f"{stem}.{ending}")] + ["-o", stem + "/"]

    def triangles_of_obj(self, name):
        rows = self.rows(name)
        vertices = [tuple(map(float, row[1:3])) for row in rows if row[0] == "v"]
        return [[vertices[int(corner.split("/")[0]) - 1] for corner in row[1:]] for row in rows if row[0] == "f"]

    def test_all_files_hold_the_same_triangles_of_the_zone(self):
        source = random.Random(2)
        points = "".join(f"{source.uniform(-1, 9)!r} {source.uniform(-1, 9)!r}\n" for _ in range(200))
        self.write("a.xy", points)
        self.write("a.seg", "0 0 8 0\n8 0 8 8\n8 8 0 8\n0 8 0 0\n2 2 6 2\n6 2 4 5\n4 5 2 2\n")
        area = None
        for options, wanted in (([], None), (["--zone", "inside"], 64 - 6), (["--zone", "enclosed"], 64)):
            report = self.report("a.xy", "--segments", "a.seg", *options, *self.outputs("b"))
            nodes = [tuple(map(float, row[1:3])) for row in self.rows("b.node")[1:]]
            self.assertEqual(len(nodes), 207)
            triangles = [[nodes[int(corner) - 1] for corner in row[1:4]] for row in self.rows("b.ele")[1:]]
            area = math.fsum(map(area_of, triangles))
            count = report["triangles"]
            if wanted is not None:
                self.assertAlmostEqual(area, wanted, places=11)
                self.assertAlmostEqual(report["zone"]["area"], wanted, places=11)
                count = report["zone"]["triangles"]
            self.assertEqual(len(triangles), count)
            self.assertEqual(self.triangles_of_obj("b.obj"), triangles)
            self.assertEqual(self.read("b/3d.obj"), self.read("b.obj"))
            self.assertTrue({"index.html", "3d.js"} <= set(os.listdir(self.path("b"))))
            self.assertEqual(self.rings("b.geojson"), triangles)
            self.expect_edges(triangles, nodes, report)
            svg = self.read("b.svg").decode()
            self.assertIn(f"<title>{count} triangles, ", svg)
            self.assertEqual('class="zone"' in svg, wanted is not None)
            self.assertTrue(self.read("b.ps").endswith(b"%%Trailer\n"))

    def expect_edges(self, triangles, nodes, report):
        """The .edge file has each edge of the triangles once, and marks those on their border."""
        uses = {}
        for triangle in triangles:
            for edge in itertools.combinations(triangle, 2):
                uses[frozenset(edge)] = uses.get(frozenset(edge), 0) + 1
        rows = [(frozenset(nodes[int(end) - 1] for end in row[1:3]), row[3]) for row in self.rows("b.edge")[1:]]
        self.assertEqual(len(rows), len(uses))
        self.assertEqual({edge: 2 - int(marker) for edge, marker in rows}, uses)
        if "zone" in report:
            self.assertEqual(sum(use == 1 for use in uses.values()), report["zone"]["borderEdges"])

    def test_report_tells_of_the_zone(self):
        self.write_polygons("a.geojson", [SQUARE], [moved(SQUARE, 0.5, 20, 0)])
        report = self.report("a.geojson", "--zone", "inside")
        self.assertEqual(report["zone"], {"kind": "inside", "triangles": 4, "area": 80, "borderEdges": 8, "parts": 2})
        self.assertIn("zone", report["times"])
        self.assertIn("\n  zone           inside, 4 triangles, area 80, 8 border edges, 2 parts\n",
                      self.run_kivo("triangulate", "a.geojson", "--zone", "inside").stdout)

    def test_zones_at_the_ends_of_the_doubles(self):
        for size, area in ((1e308, None), (1e150, 4e300), (1e-150, 4e-300), (5e-324, 0)):
            self.write_polygons("a.geojson", [[(-size, -size), (size, -size), (size, size), (-size, size)]])
            zone = self.zone("a.geojson", "--zone", "inside", *self.outputs("b"))
            self.assertEqual((zone["triangles"], zone["borderEdges"], zone["parts"]), (2, 4, 1))
            self.assertEqual(zone["area"] is None, area is None)
            self.assertAlmostEqual((zone["area"] or 1) / (area or 1), 1 if area != 0 else zone["area"] or 1, places=12)

    def test_what_cannot_be_written_is_named_and_nothing_is_left(self):
        self.write("a.xy", "0 0\n1 0\n0 1\n")
        self.write("flat.xy", "0 0\n1 0\n")
        self.write("file", "")
        os.mkdir(self.path("scene"))
        os.symlink("/dev/full", self.path("scene/3d.js"))
        for ending in ("svg", "obj", "geojson"):
            os.symlink("/dev/full", self.path("full." + ending))
        before = sorted(os.listdir(self.folder.name))
        for name in ("nowhere/b.obj", "nowhere/b/", "file/", "full.svg", "full.obj", "full.geojson", "scene/", "scene"):
            self.assertIn(name, self.run_kivo("triangulate", "a.xy", "-o", name, exit_code=1).stderr)
        for name in ("b.obj", "b.svg", "b.ps", "b/"):
            self.assertIn(name, self.run_kivo("triangulate", "flat.xy", "-o", "b.node", "-o", name, exit_code=1).stderr)
        self.run_kivo("triangulate", "scene", exit_code=2)
        self.assertEqual(sorted(os.listdir(self.folder.name)), before)


if __name__ == "__main__":
    unittest.main()
