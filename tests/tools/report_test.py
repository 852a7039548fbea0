"""What the commands that only read say about images."""
import json
import math
import os
import pty
import re
import statistics
import subprocess
import unittest

from support import ZEL, ToolTest, command, pfm, pgm


class Formats(ToolTest):
    def test_lists_what_the_database_has(self):
        formats = {f["name"]: f for f in json.loads(self.zel("formats", "--json").out)}
        self.assertEqual(formats["TIFF"]["suffixes"][:2], [".tif", ".tiff"])
        for entry in formats.values():
            self.assertTrue(entry["read"] and entry["write"] and entry["loads"], entry)

    def test_plug_in_that_does_not_load(self):
        self.write("db", b'format BROKEN description "none" dll nowhere.so subsystem base '
                         b"suffixes .brk access readonly\n")
        environment = dict(os.environ, ZEL_DATABASE="db")
        entry = json.loads(self.zel("formats", "--json", env=environment).out)[0]
        self.assertFalse(entry["loads"])
        self.assertFalse(entry["write"])
        self.assertIn("nowhere_d.so: cannot open shared object file", entry["reason"])
        self.write("a.brk", b"x")
        error = self.zel("info", "a.brk", status=1, env=environment).err
        self.assertIn("zel: a.brk: Dynamic shared object", error)
        self.assertIn("nowhere_d.so: cannot open shared object file", error)

    def test_database_that_cannot_be_read(self):
        for name, text in (("missing", "No such file or directory"), ("bad", "parse error")):
            self.write("bad", b"format x\n")
            result = self.zel("formats", status=1, env=dict(os.environ, ZEL_DATABASE=name))
            self.assertIn(text, result.err)

    def test_loads_only_the_plug_ins_that_are_needed(self):
        def loaded(*words):
            # The loader of glibc tells what it was asked for.
            result = self.zel(*words, env=dict(os.environ, LD_DEBUG="files"))
            self.assertIn("file=libzel.so.2", result.err)
            return set(re.findall(r"file=\S*zel_(\w+)_d\.so", result.err))

        self.scene("a.ppm")
        self.zel("convert", "a.ppm", "a.png")
        for words, plugins in [(["--version"], set()),
                               (["info", "a.png"], {"png"}),
                               (["info", "a.ppm"], {"pnm"}),
                               (["convert", "a.png", "a.tif"], {"png", "tiff"})]:
            self.assertEqual(loaded(*words), plugins, words)


class Info(ToolTest):
    def test_attributes(self):
        self.scene()
        self.zel("convert", "scene.ppm", "a.tif", "--orientation", "left-lower", "--type", "u16",
                 "--page", "32x16", "--order", "separate", "--compression", "packbits")
        info = json.loads(self.zel("info", "--json", "a.tif").out)
        self.assertEqual(info, [{
            "name": "a.tif", "file": "a.tif", "format": "TIFF", "image": 0, "images": 1,
            "width": 61, "height": 43, "depth": 1, "channels": 3, "type": "ushort",
            "order": "separate", "colorModel": "RGB", "orientation": "left-lower",
            "pageWidth": 32, "pageHeight": 16, "pageDepth": 1, "pageChannels": 1,
            "compression": "Mac-RLE"}])

    def test_names_open_the_same_image_again(self):
        os.mkdir("d#1")
        path = "d#1/5%:2:7"
        self.write(path, pgm(3, 2, range(6)) + pgm(1, 1, [9]))
        escaped = "d##1/5%%::2::7"
        infos = json.loads(self.zel("info", "--json", escaped + "#PNM%x").out)
        self.assertEqual([i["name"] for i in infos],
                         [escaped + "#PNM:0%x", escaped + "#PNM:1%x"])
        for info in infos:
            self.assertEqual(info["file"], path)
            self.assertEqual(json.loads(self.zel("info", "--json", info["name"]).out), [info])

    def test_a_great_many_images(self):
        self.write("many.pgm", b"".join(pgm(i % 7 + 1, 1, [0] * (i % 7 + 1)) for i in range(600)))
        infos = json.loads(self.zel("info", "--json", "many.pgm").out)
        self.assertEqual([(i["image"], i["width"]) for i in infos],
                         [(i, i % 7 + 1) for i in range(600)])
        lines = self.zel("info", "many.pgm").out.splitlines()
        self.assertEqual([line.split()[0] for line in lines],
                         [f"many.pgm:{i}" for i in range(600)])
        self.assertEqual(json.loads(self.zel("info", "--json", "-v", "many.pgm:599").out)[0]["tags"],
                         {})

    def test_goes_on_after_a_failure(self):
        self.scene("[a].ppm")
        result = self.zel("info", "none", "[a].ppm", status=1)
        self.assertEqual(len(result.out.splitlines()), 1)
        self.assertIn("61x43", result.out)
        self.assertIn("zel: none: ", result.err)


class Stats(ToolTest):
    def test_numbers_and_hash(self):
        samples = self.scene()
        found = json.loads(self.zel("stats", "--json", "scene.ppm").out)[0]
        for c, channel in enumerate(found["channels"]):
            values = samples[c::3]
            self.assertEqual((channel["min"], channel["max"]), (min(values), max(values)))
            self.assertAlmostEqual(channel["mean"], statistics.fmean(values))
            self.assertAlmostEqual(channel["stddev"], statistics.pstdev(values))
        hashes = {found["hash"]}
        for words in (["--orientation", "right-lower"], ["--order", "separate"],
                      ["--page", "16x48"], ["--type", "float", "--values", "keep"]):
            self.zel("convert", "scene.ppm", "o.tif", *words)
            hashes.add(json.loads(self.zel("stats", "--json", "o.tif").out)[0]["hash"])
        self.assertEqual(len(hashes), 1)
        self.zel("convert", "scene.ppm", "o.ppm", "--channels", "1,0,2")
        self.assertNotIn(json.loads(self.zel("stats", "--json", "o.ppm").out)[0]["hash"], hashes)

    def test_numbers_that_are_not_finite(self):
        self.write("a.pfm", pfm(5, 1, [1.0, math.nan, math.inf, -math.inf, 4.0]))
        channel = json.loads(self.zel("stats", "--json", "a.pfm").out)[0]["channels"][0]
        self.assertEqual(channel, {"channel": 0, "min": 1.0, "max": 4.0, "mean": 2.5,
                                   "stddev": 1.5, "nan": 1, "inf": 2})


class ProgressLine(ToolTest):
    def stats(self, side):
        """What is written to standard error, a terminal, while an image of zeros is measured."""
        with open("in.pgm", "wb") as file:
            header = b"P5\n%d %d\n255\n" % (side, side)
            file.write(header)
            file.truncate(len(header) + side * side)
        main, terminal = pty.openpty()
        with subprocess.Popen([ZEL, "stats", "in.pgm"], stderr=terminal,
                              stdout=subprocess.DEVNULL):
            os.close(terminal)
            seen = b""
            while True:
                try:
                    seen += os.read(main, 4096)
                except OSError:  # the other end is closed
                    os.close(main)
                    return seen

    def test_on_a_terminal_for_long_work(self):
        self.assertEqual(self.stats(500), b"")
        side = 3000
        seen = b""
        while not seen and side <= 64000:
            seen = self.stats(side)
            side *= 2
        self.assertRegex(seen, br"^(\rzel: in.pgm: \d+%\x1b\[K)+\r\x1b\[K$")
        percents = [int(p) for p in re.findall(br"(\d+)%", seen)]
        self.assertEqual(percents, sorted(percents))
        self.assertEqual(self.zel("stats", "in.pgm").err, "")


class Compare(ToolTest):
    def test_equal_close_and_different(self):
        samples = self.scene("a.ppm")
        self.zel("convert", "a.ppm", "a.tif", "--orientation", "right-upper", "--order",
                 "separate")
        self.assertEqual(self.zel("compare", "a.ppm", "a.tif").out, "equal\n")
        samples[3 * (61 * 7 + 11) + 1] ^= 4
        self.write("b.ppm", pgm(61, 43, samples))
        result = json.loads(self.zel("compare", "--json", "a.tif", "b.ppm", status=1).out)
        self.assertEqual((result["result"], result["largest"], result["x"], result["y"],
                          result["channel"]), ("different", 4, 11, 7, 1))
        self.assertAlmostEqual(result["mean"], 4 / len(samples))
        self.assertAlmostEqual(result["psnr"], 10 * math.log10(255**2 * len(samples) / 16))
        self.assertTrue(self.zel("compare", "a.ppm", "b.ppm", "--tolerance", "4").out
                        .startswith("close\n"))
        self.write("c.pgm", command("ppmtopgm", "a.ppm"))
        self.assertIn("different: sizes", self.zel("compare", "a.ppm", "c.pgm", status=1).out)
        self.zel("compare", "a.ppm", "none", status=2)


if __name__ == "__main__":
    unittest.main()
