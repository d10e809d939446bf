#!/usr/bin/env python3
"""The command `quality`, and the mesh files that it reads.

usage: quality_test.py PATH_OF_KIVO2D [unittest options]
"""
import bisect
import itertools
import json
import math
import os
import random
import re
import unittest
import xml.etree.ElementTree

from mesh_test import NIPIGON, MeshTest, angles_of, area_of, edges_of

SVG = "{http://www.w3.org/2000/svg}"


class QualityTest(MeshTest):
    def quality(self, *arguments, **options):
        return json.loads(self.run_kivo("quality", *arguments, "--json", **options).stdout)

    def write_obj(self, name, points, faces):
        return self.write(name, "".join("v %r %r 0\n" % point for point in points) + "".join("f %s %s %s\n" % face for face in faces))

    def expect_distribution(self, found, values):
        values = list(values)
        self.assertEqual((found["count"], found["min"] is None), (len(values), False))
        for key, value in (("min", min(values)), ("max", max(values)), ("mean", math.fsum(values) / len(values))):
            self.assertAlmostEqual(found[key] / value, 1, places=9)
        limits = [entry["from"] for entry in found["bins"]] + [found["bins"][-1]["to"]]
        counts = [0] * (len(limits) - 1)
        for value in values:
            counts[min(max(bisect.bisect_right(limits, value) - 1, 0), len(counts) - 1)] += 1
        self.assertEqual([entry["count"] for entry in found["bins"]], counts)

    def expect_figures(self, quality, triangles):
        """Against a second opinion."""
        edges = {frozenset(edge) for triangle in triangles for edge in itertools.combinations(triangle, 2)}
        smallest = sorted(min(angles_of(triangle)) for triangle in triangles)
        self.assertEqual((quality["triangles"], quality["vertices"]), (len(triangles), len(set(itertools.chain(*triangles)))))
        self.assertAlmostEqual(quality["area"] / math.fsum(map(area_of, triangles)), 1, places=12)
        self.expect_distribution(quality["angles"], itertools.chain(*map(angles_of, triangles)))
        self.expect_distribution(quality["smallestAngles"], smallest)
        self.expect_distribution(quality["areas"], map(area_of, triangles))
        self.expect_distribution(quality["edges"], (math.dist(*edge) for edge in edges))
        self.expect_distribution(quality["aspectRatios"], (max(edges_of(t)) ** 2 / 2 / area_of(t) for t in triangles))
        for entry, angle in itertools.zip_longest(quality["worst"], smallest[:100]):
            self.assertAlmostEqual(entry["smallestAngle"], angle, places=9)
            self.assertAlmostEqual(min(angles_of(entry["corners"])), angle, places=9)

    def jittered_squares(self, seed, size=12):
        """Halves of skew squares by any diagonal, Delaunay or not, some missing; corners in either direction."""
        source = random.Random(seed)
        points = [(x + source.uniform(-0.2, 0.2), y + source.uniform(-0.2, 0.2)) for y in range(size) for x in range(size)]
        faces = []
        for x, y in itertools.product(range(size - 1), repeat=2):
            a, b, c, d = (x + i + (y + j) * size for i, j in ((0, 0), (1, 0), (1, 1), (0, 1)))
            halves = source.choice([[(a, b, c), (a, c, d)], [(a, b, d), (b, c, d)]])
            faces += source.sample(halves, source.choice([2, 2, 2, 1, 0]))
        source.shuffle(faces)
        return points, faces, [[points[corner] for corner in face] for face in faces]


class MeshFiles(QualityTest):
    def test_meshes_have_the_same_figures_in_every_file_as_when_they_were_made(self):
        outputs = ("b.node", "b.ele", "b.obj", "b.msh", "b.vtu")
        mesh = self.mesh(NIPIGON, "--min-angle", "25", "--max-area", "9", *itertools.chain(*(("-o", output) for output in outputs)))["mesh"]
        for name in outputs[1:]:
            report = self.quality(name, "--check")
            quality = report["quality"]
            self.expect_figures(quality, self.triangles())
            self.assertEqual((mesh["vertices"], mesh["triangles"]), (quality["vertices"], quality["triangles"]))
            self.assertEqual([entry["triangles"] for entry in mesh["smallestAngles"]], [entry["count"] for entry in quality["smallestAngles"]["bins"]])
            pairs = [(mesh["smallestAngle"], quality["angles"]["min"]), (mesh["largestAngle"], quality["angles"]["max"])]
            pairs += [(mesh[key][end], quality[key][end]) for key in ("areas", "edges") for end in ("min", "max")]
            for of_mesh, measured in pairs:
                self.assertAlmostEqual(of_mesh / measured, 1, places=12)
            self.assertEqual((report["zone"]["kind"], report["zone"]["parts"], report["valid"]), ("mesh", 1, True))

    def test_exactly_the_triangles_of_the_file_are_measured_whether_delaunay_or_not(self):
        for seed in range(5):
            points, faces, triangles = self.jittered_squares(seed)
            turned = [random.Random(seed + k).choice([face, face[::-1]]) for k, face in enumerate(faces)]
            self.write_obj("a.obj", points, [tuple(corner + 1 for corner in face) for face in turned])
            self.expect_figures(self.quality("a.obj")["quality"], triangles)
            mirrored = self.quality("a.obj", "--flip-y")["quality"]
            self.expect_figures(mirrored, [[(x, -y) for x, y in triangle[::-1]] for triangle in triangles])

    def test_sizes_up_to_the_ends_of_the_doubles(self):
        angles = []
        for size in (5e-324, 2.0**-900, 1.0, 2.0**1000, 1.7e308):
            self.write_obj("a.obj", [(-size, 0.0), (size, 0.0), (0.0, size)], [(1, 2, 3)])
            quality = self.quality("a.obj", "-o", "b.svg")["quality"]
            angles += [quality["angles"]["min"] - 45, quality["angles"]["max"] - 90]
            self.assertEqual(quality["area"], size**2 if size < 2.0**500 else None)
            xml.etree.ElementTree.fromstring(self.read("b.svg"))
        self.assertLess(max(map(abs, angles)), 1e-9)

    def test_files_of_other_programs(self):
        expected = self.quality(self.write("a.obj", "v 0 0 0\nv 2 0 0\nv 0 1 0\nf 1 2 3\n"))["quality"]
        self.assertEqual((expected["vertices"], expected["area"]), (3, 1))
        obj = ("# c\nmtllib x\no part\nv 0 0 0 1.0\nv 2 0 0\nv 0 1 0 # corner\nvn 0 0 1\nvt 0 0\ns off\n", "l 1 2\n")
        msh = ("$MeshFormat\n2.2 0 8\n$EndMeshFormat\n$Comment\n$Nodes\n$EndComment\n$Nodes\n3\n70 0 0 0\n5 2 0 0\n-6 0 1 0\n$EndNodes\n"
               "$Elements\n3\n1 15 2 0 1 5\n2 1 2 0 1 5 70\n9 2 3 0 1 7 70 5 -6\n$EndElements\n")
        vtu = ("<VTKFile type='UnstructuredGrid'>\n<UnstructuredGrid><Piece NumberOfCells='2' NumberOfPoints='3'>\n"
               "<Points><DataArray NumberOfComponents='3' format='ascii' type='Float32'>0 0 0 2 0 0\t0 1 -0.0</DataArray></Points><Cells>"
               "<DataArray Name='types' format='ascii'>3 5</DataArray><DataArray Name='offsets' format='ascii'>2 5</DataArray>"
               "<DataArray Name='connectivity' format='ascii'>0 1 2 1 0</DataArray></Cells></Piece></UnstructuredGrid></VTKFile>")
        for name, content in (("b.obj", obj[0] + "f -3/1/1 2//1 3/2\n" + obj[1]), ("b.msh", msh), ("b.vtu", vtu),
                              ("twice.obj", "v 9 9 0\nv 0 0 0\nv 2 0 0\nv 2 0 0\nv 0 1 0\nf 5 4 2\n")):
            report = self.quality(self.write(name, content))
            for worst in (expected, report["quality"]):
                worst["worst"][0]["corners"].sort()
            self.assertEqual((report["quality"], report["duplicates"]), (expected, int(name == "twice.obj")), name)

    def test_files_that_are_no_mesh_are_refused_with_the_place_and_the_reason(self):
        square = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n"
        head, nodes = "$MeshFormat\n2.2 0 8\n$EndMeshFormat\n", "$Nodes\n3\n1 0 0 0\n2 1 0 0\n3 0 1 0\n$EndNodes\n"
        vtu = ('<UnstructuredGrid><Piece NumberOfPoints="3" NumberOfCells="1"><Points><DataArray format="ascii">0 0 0 1 0 0 0 1 0</DataArray></Points><Cells>'
               '<DataArray Name="connectivity" format="ascii">0 1 2</DataArray><DataArray Name="offsets" format="ascii">3</DataArray>'
               '<DataArray Name="types" format="ascii">5</DataArray></Cells></Piece></UnstructuredGrid>')
        self.assertEqual(self.quality(self.write("a.vtu", vtu))["quality"]["triangles"], 1)
        self.write("a.node", "3 2 0 0\n1 0 0\n2 1 0\n3 0 1\n")
        for name, content, text in (
                ("a.obj", "", "holds no triangles"),
                ("a.obj", square, "holds no triangles"),
                ("a.obj", square + "f 1 2 3 4\n", "line 5: a face of 4 corners; only triangles are read"),
                ("a.obj", square + "f 1 2 5\n", "line 5: a triangle with a corner that is no vertex of the 4 before it"),
                ("a.obj", square + "f 1 2 -5\n", "line 5: a triangle with a corner that is no vertex of the 4 before it"),
                ("a.obj", square + "f 1 2 0\n", "line 5: '0' names no vertex"),
                ("a.obj", square + "f 1 2 99999999999999999999\n", "line 5: '99999999999999999999' names no vertex"),
                ("a.obj", "v 0 0 nan\n", "line 1: 'nan' is not a finite number"),
                ("a.obj", "v 0 1e999 0\n", "line 1: '1e999' is out of the range of a double"),
                ("a.obj", "v 0 0\n", "line 1: a vertex without three coordinates"),
                ("a.obj", "v 0 0 1e-9\n", "line 1: a vertex beside the plane z = 0"),
                ("a.msh", "", "has no section $MeshFormat"),
                ("a.msh", head.replace("2.2", "4.1"), "line 2: only version 2.2 as text is read"),
                ("a.msh", head.replace("2 0", "2 1"), "line 2: only version 2.2 as text is read"),
                ("a.msh", head + nodes[:-18], "ends inside a section"),
                ("a.msh", head + nodes.replace("3\n", "-3\n", 1), "line 5: a negative number"),
                ("a.msh", head + nodes.replace("2 1", "1 1"), "line 7: a node's number again"),
                ("a.msh", head + nodes + "$Elements\n1\n1 3 2 0 1 1 2 3 3\n", "line 12: an element of kind 3; only triangles are read"),
                ("a.msh", head + nodes + "$Elements\n1\n1 2 2 0 1 1 2 4\n", "line 12: there is no node 4"),
                ("a.msh", head + nodes + "$Elements\n1\n1 2 -2 0 1 1 2 3\n", "line 12: a negative number of tags"),
                ("a.vtu", vtu[:-100], "ends inside Piece"),
                ("a.vtu", vtu.replace("ascii", "appended", 1), "an array in the format 'appended'; only 'ascii' is read"),
                ("a.vtu", vtu.replace(">5<", ">9<"), "a cell of type 9 with 3 corners; only triangles are read"),
                ("a.vtu", vtu.replace(">3<", ">4<"), "a cell's corners lie outside their array"),
                ("a.vtu", vtu.replace(">3<", ">-1<"), "a cell's corners lie outside their array"),
                ("a.vtu", vtu.replace(">0 1 2<", ">0 1 -2<"), "a triangle with a corner that is no vertex of the 3 before it"),
                ("a.vtu", vtu.replace('Points="3"', 'Points="4"'), "has 3 points where '4' are told"),
                ("a.vtu", vtu.replace(">0 0 0 1", ">nan 0 0 1"), "'nan 0 0 1 0 0 0 1 0' in an array starts with no number that can be read"),
                ("a.ele", "-1 3 0\n", "line 1: a wrong header"),
                ("a.ele", "2 3 0\n1 1 2 3\n", "ends after 1 of 2 triangles"),
                ("a.ele", "1 6 0\n1 1 2 3 1 2 3\n", "line 1: triangles of 6 corners"),
                ("a.ele", "1 3 0\n1 0 1 2\n", "line 2: a triangle with a corner that is no vertex of the 3 before it")):
            done = self.run_kivo("quality", self.write(name, content), "-o", "b.svg", exit_code=1)
            self.assertEqual((done.stdout, done.stderr.splitlines()[-1:]), ("", [f"kivo2d: {name}: {text}"]))
        for faces, text in (("f 1 2 3\nf 3 4 3\n", "Triangle 1 (1, 1) (0, 1) (1, 1) is degenerate"),
                            ("v 2 2 0\nf 1 2 4\nf 1 3 5\n", "Triangle 1 (0, 0) (1, 1) (2, 2) is degenerate"),
                            ("f 1 2 3\nf 1 2 4\n", "Triangle 0 (0, 0) (1, 0) (1, 1) and triangle 1 (0, 0) (1, 0) (0, 1) overlap"),
                            ("v 0.5 0.25 0\nf 1 3 4\nf 1 2 3\n", "The vertex (0.5, 0.25) lies inside triangle 1 (0, 0) (1, 0) (1, 1)"),
                            ("v 0.5 0 0\nf 1 2 4\n", "The vertex (0.5, 0) lies inside the edge (0, 0) (1, 0) of triangle 0")):
            for command in ("quality", "import"):
                done = self.run_kivo(command, self.write("a.obj", square + faces), "-o", "b.svg", exit_code=1)
                lines = [line.split("Dt2::importTriangles(..), ERROR: ")[-1] for line in done.stderr.splitlines()]
                self.assertEqual((done.stdout, lines), ("", [text, "1 fault, nothing imported, returning NULL",
                                 "kivo2d: a.obj: the triangles can't be kept as they are; the lines above tell why, and count them from 0"
                                 + ("; b.svg shows where" if command == "import" else "")]))
            # One ring a fault, and each shape that the line names.
            root = xml.etree.ElementTree.fromstring(self.read("b.svg"))
            self.assertEqual([len(group) for group in root.iter(SVG + "g") if group.get("class") in ("at-fault", "places")],
                             [len(re.findall(r"(?<!\) )\(\d", text)), 1])
            os.remove(self.path("b.svg"))
        done = self.run_kivo("quality", self.write("b.ele", "1 3 0\n1 1 2 3\n"), exit_code=1)
        self.assertTrue(done.stderr.startswith("kivo2d: b.node: can't be opened"), done.stderr)
        self.assertFalse(os.path.exists(self.path("b.svg")))

    def test_damaged_files_and_heaps_of_triangles_end_with_an_error_or_a_measurement(self):
        source = random.Random(3)
        self.write_poly("a.poly", [[(0, 0), (3, 0), (3, 2), (0, 2)]])
        self.mesh("a.poly", *itertools.chain(*(("-o", "b." + ending) for ending in ("node", "ele", "obj", "msh", "vtu"))))
        for name in ("b.ele", "b.obj", "b.msh", "b.vtu"):
            content = self.read(name)
            for _ in range(15):
                at = source.randrange(len(content))
                damage = source.choice([b"", b"-", b"nan", b"1e400", b"\0", b"\n", b"99999999999", content[at:at + 60]])
                rest = content[at + source.randrange(3):] if source.random() < 0.7 else b""
                self.write("b" + name[1:], content[:at] + damage + rest)
                done = self.run_kivo("quality", name, "--json", exit_code=None)
                self.assertIn(done.returncode, (0, 1), done.stderr)
                self.assertEqual(done.stdout == "", done.returncode == 1)
            self.write(name, content)
        points = [(source.random(), source.random()) for _ in range(3000)]
        self.write_obj("heap.obj", points, [tuple(source.sample(range(1, 3001), 3)) for _ in range(5000)])
        self.assertIn("faults, nothing imported, returning NULL", self.run_kivo("quality", "heap.obj", exit_code=1).stderr)


class Triangulations(QualityTest):
    def test_points_are_triangulated_and_zones_measured(self):
        source = random.Random(8)
        self.write("a.xy", "".join(f"{source.random()!r} {source.random()!r}\n" for _ in range(300)))
        self.write("a.seg", "0.1 0.13 0.9 0.11\n0.9 0.11 0.87 0.93\n0.87 0.93 0.12 0.9\n0.12 0.9 0.1 0.13\n")
        for extra in ([], ["--segments", "a.seg"], ["--segments", "a.seg", "--zone", "inside"], ["--segments", "a.seg", "--conforming", "--flip-y"]):
            report = self.quality("a.xy", *extra, "--check")
            self.report("a.xy", *extra, "-o", "b.node", "-o", "b.ele")
            self.expect_figures(report["quality"], self.triangles())
            self.assertEqual((report["command"], report["valid"]), ("quality", True))
        text = self.run_kivo("quality", "a.xy").stdout
        for line in (r"  quality +\d+ triangles, 300 vertices, \d+ edges, area [\d.e-]+", r"  angles +[\d.]+ to [\d.]+ degrees; .*",
                     r" +0 to  5 +\d+  #+", r"  aspect ratios  1\.1\d+ to [\d.e+]+, mean [\d.]+", r"  worst +[\d.]+ degrees at \(.*\)"):
            self.assertRegex(text, "(?m)^" + line + "$")

    def test_wrong_usage_is_refused(self):
        self.write("a.xy", "0 0\n1 1\n2 2\n")
        self.assertEqual(self.run_kivo("quality", "a.xy", "-o", "b.svg", exit_code=1).stderr,
                         "kivo2d: a.xy: has no triangles: all points lie on one line\n")
        for arguments, text in ((["a.xy", "-o", "b.ps"], "b.ps: pictures of quality are .svg files"),
                                (["a.xy", "--zone", "inside"], "--zone is about segments: give --segments, or a .poly or .geojson file"),
                                (["a.obj", "--zone", "inside"], "a.obj: a mesh is measured as it is, without --segments, --zone and --conforming"),
                                (["a.stl"], "a.stl: unknown kind of file; ")):
            self.assertIn("kivo2d: " + text, self.run_kivo("quality", *arguments, exit_code=2).stderr)
        self.run_kivo("quality", "a.xy", "--unify", "1", exit_code=2)
        self.write("a.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n")
        self.assertIn("only written", self.run_kivo("triangulate", "a.obj", exit_code=2).stderr)
        self.assertEqual(sorted(os.listdir(self.folder.name)), ["a.obj", "a.xy"])

    def test_picture_shows_every_triangle_in_its_class_the_worst_ringed_and_the_figures(self):
        points, faces, _ = self.jittered_squares(1)
        self.write_obj("a&<b.obj", points, [tuple(corner + 1 for corner in face) for face in faces])
        quality = self.quality("a&<b.obj", "-o", "b.svg")["quality"]
        root = xml.etree.ElementTree.fromstring(self.read("b.svg"))
        groups = [group for group in root.iter(SVG + "g") if group.get("fill", "none") != "none" and group.get("class") is None]
        drawn = [sum(path.get("d").count("z") for path in group) for group in groups]
        self.assertEqual(drawn[::-1], [entry["count"] for entry in quality["smallestAngles"]["bins"] if entry["count"]])
        bars = [rect.get("fill") for rect in root.iter(SVG + "rect")][:12]
        used = [color for color, entry in zip(bars, quality["smallestAngles"]["bins"]) if entry["count"]]
        self.assertEqual([group.get("fill") for group in groups], used[::-1])
        texts = [text.text for text in root.iter(SVG + "text")]
        self.assertIn("a&<b.obj", texts)
        self.assertIn(f"{quality['triangles']} triangles, {quality['vertices']} vertices", texts)
        worst = root.find(f".//{SVG}g[@class='worst']")
        self.assertEqual(len(worst), 20)
        box = [min(p[0] for p in points), max(p[1] for p in points)]
        size = max(max(p[i] for p in points) - min(p[i] for p in points) for i in (0, 1)) / 100000
        for circle, entry in zip(worst, quality["worst"]):
            x, y = (sum(corner[i] for corner in entry["corners"]) / 3 for i in (0, 1))
            self.assertAlmostEqual(float(circle.get("cx")), (x - box[0]) / size, delta=3)
            self.assertAlmostEqual(float(circle.get("cy")), (box[1] - y) / size, delta=3)


if __name__ == "__main__":
    unittest.main()
