#!/usr/bin/env python3
"""GeoJSON and SVG files of the command.

usage: web_formats_test.py PATH_OF_KIVO2D [unittest options]
"""
import json
import math
import os
import random
import re
import unittest
import xml.etree.ElementTree as ElementTree
from fractions import Fraction

from command import CommandTest


def twice_area(corners):
    """Of a ring without its end, exact."""
    points = [[Fraction(value) for value in corner[:2]] for corner in corners]
    return sum(p[0] * q[1] - q[0] * p[1] for p, q in zip(points, points[1:] + points[:1]))


def edge_set(lines):
    return {frozenset(edge) for line in lines for edge in zip(line, line[1:])}


class GeoJsonInput(CommandTest):
    def geometry(self, kind, coordinates):
        return {"type": kind, "coordinates": coordinates}

    def test_every_geometry_is_read_lines_and_rings_as_segments(self):
        ring = [[0, 0], [9, 0], [9, 9], [0, 0]]
        hole = [[6, 2], [8, 4], [8, 2], [6, 2]]
        parts = [self.geometry("Point", [20, 1]), self.geometry("MultiPoint", [[21, 1], [22, 1]]),
                 self.geometry("LineString", [[0, 20], [1, 21], [2, 20]]), self.geometry("MultiLineString", [[[0, 30], [1, 30]], [[2, 31], [3, 31]]]),
                 self.geometry("Polygon", [ring, hole]), self.geometry("MultiPolygon", [[[[x + 40, y] for x, y in ring]], [[[x + 60, y] for x, y in hole]]])]
        nothing = [self.geometry("Point", []), self.geometry("MultiPolygon", [[]])]
        feature = lambda geometry: {"type": "Feature", "properties": None, "geometry": geometry}
        documents = [{"type": "GeometryCollection", "geometries": parts + nothing}, feature({"type": "GeometryCollection", "geometries": parts}),
                     {"type": "FeatureCollection", "bbox": [0, 0, 70, 40], "features": [feature(part) for part in parts] + [feature(None)]}]
        for indent, document in enumerate(documents):
            self.write("a.geojson", "\ufeff" + json.dumps(document, indent=indent))
            report = self.report("a.geojson", "--check", "-o", "a.seg")
            self.assertEqual((report["points"], report["duplicates"], report["segments"]["read"], report["valid"]), (22, 0, 16, True))
            rows = {tuple(map(float, row)) for row in self.rows("a.seg")}
            self.assertTrue({(0, 20, 1, 21), (1, 21, 2, 20), (2, 31, 3, 31), (9, 9, 0, 0), (8, 2, 6, 2), (68, 2, 66, 2)} <= rows)
            self.assertEqual(len(rows), 16)
            self.write("p.xyz", "-9 -9 1\n99 -9 1\n99 99 1\n-9 99 1\n")
            segments = self.report("p.xyz", "--segments", "a.geojson", "-o", "b.seg", "-o", "b.xyz")["segments"]
            self.assertEqual((segments["read"], segments["newEnds"]), (16, 19))
            self.assertEqual(self.read("b.seg"), self.read("a.seg"))
        for part, points in zip(parts, (1, 2, 3, 4, 6, 6)):
            self.write("a.geojson", json.dumps(part))
            self.assertEqual(self.report("a.geojson")["points"], points)

    def test_third_coordinate_is_the_height_when_all_have_one(self):
        ring = [[0, 0, 1.5], [8, 0, -2, 7], [0, 8, 3e300], [0, 0, 1.5]]
        self.write("a.geojson", json.dumps(self.geometry("Polygon", [ring])))
        self.report("a.geojson", "-o", "a.xyz", "-o", "b.geojson")
        self.assertEqual(self.read("a.xyz"), b"0 0 1.5\n8 0 -2\n0 8 3e+300\n")
        self.report("b.geojson", "-o", "b.xyz")
        self.assertEqual(self.read("b.xyz"), self.read("a.xyz"))
        ring[1] = ring[1][:2]
        self.write("a.geojson", json.dumps(self.geometry("Polygon", [ring])))
        self.assertIn("1 of 3 positions have no height", self.run_kivo("triangulate", "a.geojson").stderr)
        self.assertIn("no heights", self.run_kivo("triangulate", "a.geojson", "-o", "a.xyz", exit_code=1).stderr)

    def test_what_is_no_geojson_is_refused_with_its_place(self):
        polygon = '{"type":"FeatureCollection","features":[{"type":"Feature","geometry":{"type":"Polygon","coordinates":%s}}]}'
        place = "features[0].geometry.coordinates"
        for rings, words in (("7", [place, "a number"]), ("[7]", [place + "[0]", "a number"]), ("[[[0,0],[1,0],[0,0]]]", [place + "[0]", "3 positions"]),
                             ("[[[0,0],[1,0],[0,1],[0,2]]]", [place + "[0]", "not closed"]), ("[[[0,0],[1,0],[1],[0,0]]]", [place + "[0][2]", "1 number"]),
                             ('[[[0,0],[1,0],[1,"2"],[0,0]]]', [place + "[0][2][1]", "a string"]), ("[[[0,0],\n[1,0],[1,1e999],[0,0]]]", ["line 2", "'1e999'"]),
                             ("[[[0,0],\n[1,NaN]]]", ["line 2", "no JSON"])):
            self.expect_refusal("bad.geojson", polygon % rings, *words)
        for content, words in (("", ["line 1"]), ("null", ["the document is null"]), ("[]", ["an array"]), ("{}", ['no member "type"']), ('{"type":1}', ["type is a number"]),
                               ('{"type":"Circle"}', ["'Circle'"]), ('{"type":"Feature"}', ['"geometry"']), ('{"type":"Point"}', ['"coordinates"']),
                               ('{"type":"FeatureCollection","features":[{"type":"Point"}]}', ["features[0]", "'Point'"]),
                               ('{"type":"LineString","coordinates":[[1,2]]}', ["one position"]), ('{"type":"Point","coordinates":[1,2]} 3', ["line 1"]),
                               (b'{"type":"\xff"}', ["UTF-8"]), (b"\0", ["line 1"]), ('{"type":"' + "x" * 999 + '"}', ["xxx...'"])):
            self.expect_refusal("bad.geojson", content, *words)

    def test_nesting_without_end_is_refused(self):
        deep = 100000
        for content in ("[" * deep, "[" * deep + "]" * deep, '{"type":"Point","coordinates":' + "[" * deep + "]" * deep + "}",
                        '{"a":' * deep + "1" + "}" * deep, '{"type":"GeometryCollection","geometries":[' * 40 + "]}" * 40):
            self.expect_refusal("bad.geojson", content)


class GeoJsonOutput(CommandTest):
    def test_triangles_with_regions_and_constraints_byte_for_byte(self):
        self.write("a.poly", "4 2\n0 0 0\n1 4 0\n2 4 2.5\n3 0 1e-7\n2\n0 0 2\n1 2 3\n0\n1\n0 3 0.5 -2.5\n")
        self.report("a.poly", "-o", "a.geojson")
        feature = '{"type":"Feature","properties":{%s},"geometry":{"type":"%s","coordinates":[%s]}}'
        self.assertEqual(self.read("a.geojson").decode().splitlines(), [
            '{"type":"FeatureCollection","features":[', feature % ('"triangle":0,"region":-2.5', "Polygon", "[[0,0],[4,0],[4,2.5],[0,0]]") + ",",
            feature % ('"triangle":1,"region":0', "Polygon", "[[0,0],[4,2.5],[0,1e-07],[0,0]]") + ",",
            feature % ('"constraints":2', "MultiLineString", "[[0,0],[4,2.5],[0,1e-07]]"), "]}"])

    def test_points_without_a_triangle_are_written_as_points(self):
        self.write("line.xy", "0 0\n1 1\n3 3\n1 1\n")
        self.report("line.xy", "-o", "a.geojson")
        self.assertEqual([feature["geometry"] for feature in json.loads(self.read("a.geojson"))["features"]],
                         [{"type": "MultiPoint", "coordinates": [[0, 0], [1, 1], [3, 3]]}])
        self.write("none.xy", "")
        self.report("none.xy", "-o", "a.geojson")
        self.assertEqual(json.loads(self.read("a.geojson")), {"type": "FeatureCollection", "features": []})

    def test_polygons_are_the_triangles_of_the_other_files_and_come_back(self):
        source = random.Random(5)
        points = [[source.uniform(-1, 1) * 10.0 ** source.randint(-9, 9) for _ in range(2)] for _ in range(300)]
        self.write("a.xy", "".join(f"{x!r} {y!r}\n" for x, y in points))
        self.report("a.xy", "-o", "a.geojson", "-o", "a.ele")
        rings = [feature["geometry"]["coordinates"][0] for feature in json.loads(self.read("a.geojson"))["features"]]
        self.assertEqual([ring[:3] for ring in rings], [[points[int(corner) - 1] for corner in row[1:]] for row in self.rows("a.ele")[1:]])
        for ring in rings:
            self.assertEqual((len(ring), ring[3]), (4, ring[0]))
            self.assertGreater(twice_area(ring[:3]), 0)
        again = self.report("a.geojson", "--check", "-o", "b.geojson")
        self.assertEqual((again["vertices"], again["triangles"], again["segments"]["steinerPoints"]), (300, len(rings), 0))


class Svg(CommandTest):
    SCALE = 100000

    def picture(self, name):
        """Closed lines of the filled path, and the drawn edges of each class, as pairs of points."""
        space = "{http://www.w3.org/2000/svg}"
        root = ElementTree.fromstring(self.read(name).decode())
        group = root.find(space + "g")
        edges = {part.get("class"): [edge for path in part for line in self.lines(path.get("d")) for edge in zip(line, line[1:])]
                 for part in group.findall(space + "g")}
        return self.lines(group.find(space + "path").get("d")), edges

    def lines(self, data):
        lines = []
        at = (0, 0)
        for text in data.split("m")[1:]:
            numbers = [int(number) for number in re.findall(r"-?\d+", text)]
            line = []
            for dx, dy in zip(numbers[::2], numbers[1::2]):
                at = (at[0] + dx, at[1] + dy)
                line.append(at)
            if text.endswith("z"):
                at = line[0]
                line.append(at)
            lines.append(line)
        return lines

    def test_picture_byte_for_byte(self):
        self.write("a.xy", "0 0\n4 0\n4 4\n0 4\n1 1\n")
        self.write("a.seg", "1 1 4 4\n0 0 4 0\n")
        self.report("a.xy", "--segments", "a.seg", "-o", "a.svg")
        self.assertEqual(self.read("a.svg").decode().splitlines(), [
            '<svg xmlns="http://www.w3.org/2000/svg" class="kivo2d" role="img" viewBox="0 0 1020 1020">', "<title>4 triangles, 2 constraint edges</title>",
            '<g transform="translate(10 10) scale(.01)" stroke-linejoin="round" stroke-linecap="round">',
            '<path class="area" fill="#8296ab" fill-opacity=".12" fill-rule="evenodd" d="m0 100000 0-100000 100000 0 0 100000z"/>',
            '<g class="mesh" fill="none" stroke="#6f869d" stroke-width="100">', '<path d="m0 100000 25000-25000-25000-75000m25000 75000 75000 25000"/>', "</g>",
            '<g class="hull" fill="none" stroke="#64748b" stroke-width="200">', '<path d="m0 100000 0-100000 100000 0 0 100000"/>', "</g>",
            '<g class="constraints" fill="none" stroke="#e8590c" stroke-width="200">', '<path d="m0 100000 100000 0m-75000-25000 75000-75000"/>', "</g>", "</g>", "</svg>"])

    def test_every_edge_is_drawn_once_in_its_class_and_the_border_is_filled(self):
        source = random.Random(3)
        points = [(source.uniform(-3, 7), source.uniform(0, 2)) for _ in range(900)]
        self.write("a.xy", "".join(f"{x!r} {y!r}\n" for x, y in points))
        self.write("a.seg", "".join("%r %r %r %r\n" % (*points[i], *points[i + 1]) for i in range(0, 40, 2)))
        self.report("a.xy", "--segments", "a.seg", "-o", "a.svg", "-o", "a.node", "-o", "a.edge", "-o", "b.seg")
        nodes = [tuple(map(float, row[1:3])) for row in self.rows("a.node")[1:]]
        left, right, top = min(x for x, _ in nodes), max(x for x, _ in nodes), max(y for _, y in nodes)
        pixel = lambda x, y: (math.floor((x - left) / (right - left) * self.SCALE + 0.5), math.floor((top - y) / (right - left) * self.SCALE + 0.5))
        constraints = {frozenset((pixel(*row[:2]), pixel(*row[2:]))) for row in (tuple(map(float, row)) for row in self.rows("b.seg"))}
        wanted = {"mesh": set(), "hull": set(), "constraints": constraints}
        border = set()
        for row in self.rows("a.edge")[1:]:
            edge = frozenset(pixel(*nodes[int(end) - 1]) for end in row[1:3])
            if row[3] == "1":
                border.add(edge)
            if edge not in constraints:
                wanted["hull" if row[3] == "1" else "mesh"].add(edge)
        rings, drawn = self.picture("a.svg")
        self.assertEqual({name: edge_set(edges) for name, edges in drawn.items()}, wanted)
        self.assertEqual(sum(map(len, drawn.values())), sum(map(len, wanted.values())))
        self.assertEqual((edge_set(rings), sum(len(ring) - 1 for ring in rings)), (border, len(border)))

    def test_picture_is_the_same_at_the_ends_of_the_doubles(self):
        source = random.Random(9)
        points = [(source.uniform(-1, 1), source.uniform(-1, 1)) for _ in range(60)]
        pictures = []
        for exponent in (0, 1023, -900):
            self.write("a.xy", "".join(f"{math.ldexp(x, exponent)!r} {math.ldexp(y, exponent)!r}\n" for x, y in points))
            self.report("a.xy", "-o", "a.svg")
            rings, edges = self.picture("a.svg")
            pictures.append((edge_set(rings), {name: edge_set(lines) for name, lines in edges.items()}))
        self.assertEqual(pictures, pictures[:1] * 3)

    def test_large_mesh_is_small_and_without_triangles_there_is_none(self):
        self.run_kivo("generate", "uniform", "-n", "50000", "-o", "a.bin")
        report = self.report("a.bin", "-o", "a.svg")
        self.assertLess(os.path.getsize(self.path("a.svg")), 15 * report["triangles"])
        ElementTree.parse(self.path("a.svg"))
        self.write("line.xy", "0 0\n1 1\n")
        self.assertIn("line.svg", self.run_kivo("triangulate", "line.xy", "-o", "line.ele", "-o", "line.svg", exit_code=1).stderr)
        self.assertEqual([name for name in os.listdir(self.folder.name) if name.startswith("line.")], ["line.xy"])


if __name__ == "__main__":
    unittest.main()
