"""Pixels that come out of `zel convert`, against other programs and plain arithmetic."""
import json
import os
import random
import resource
import unittest

from support import ZEL, ToolTest, command, pfm, pgm, samples_of, tiff_samples

ORIENTATIONS = ["upper-left", "upper-right", "lower-right", "lower-left",
                "left-upper", "right-upper", "right-lower", "left-lower"]


def nearest(value):
    """Rounds half away from zero."""
    return int(value + 0.5) if value >= 0 else -int(0.5 - value)


class Values(ToolTest):
    RAMP = list(range(256))

    def test_scale_maps_full_ranges(self):
        self.write("in.pgm", pgm(256, 1, self.RAMP))
        expected = {
            ("i8", "b"): [v - 128 for v in self.RAMP],
            ("u16", "H"): [v * 257 for v in self.RAMP],
            ("i16", "h"): [v * 257 - 32768 for v in self.RAMP],
            ("u32", "I"): [v * 16843009 for v in self.RAMP],
            ("i32", "i"): [v * 16843009 - 2**31 for v in self.RAMP],
            ("double", "d"): [v / 255 for v in self.RAMP],
        }
        for (kind, code), samples in expected.items():
            with self.subTest(kind):
                note = self.zel("convert", "in.pgm", "out.tif", "--type", kind,
                                "--compression", "none").err
                self.assertRegex(note, r"^zel: out.tif: values scaled from uchar 0\.\.255 to .*\n$")
                self.assertEqual(tiff_samples("out.tif", code), samples)
                self.zel("convert", "out.tif", "back.pgm", "--type", "u8")
                self.assertEqual(samples_of(self.read("back.pgm")), self.RAMP)

    def test_scale_agrees_with_netpbm(self):
        wide = pgm(256, 256, range(65536), 65535)
        self.write("in.pgm", wide)
        self.zel("convert", "in.pgm", "out.pgm", "--type", "uchar")
        self.assertEqual(self.read("out.pgm"), command("pamdepth", "255", stdin=wide))
        self.zel("convert", "in.pgm", "signed.tif", "--type", "i16")
        self.zel("convert", "signed.tif", "again.pgm", "--type", "uchar")
        self.assertEqual(self.read("again.pgm"), self.read("out.pgm"))
        self.assertEqual(self.zel("convert", "in.pgm", "clamped.pgm", "--type", "uchar",
                                  "--values", "clamp").err,
                         "zel: clamped.pgm: 65280 values clamped to 0..255\n")
        self.zel("convert", "out.pgm", "out.pbm")
        bits = [int(v >= 128) for v in samples_of(self.read("out.pgm"))]
        self.zel("convert", "out.pbm", "out.pgm", "--type", "u8")
        self.assertEqual(samples_of(self.read("out.pgm")), [255 * b for b in bits])

    def test_floats_by_each_rule(self):
        values = [-1.0, 0.25, 0.6, 1.0, 254.6, 300.0, float("nan")]
        self.write("in.pfm", pfm(len(values), 1, values))
        expected = {
            ("--values", "scale"): [0, 64, 153, 255, 255, 255, 0],
            ("--values", "clamp"): [0, 0, 1, 1, 255, 255, 0],
            ("--values", "keep"): [255, 0, 0, 1, 254, 44, 0],
            ("--range", "0,300"): [0, 0, 1, 1, 216, 255, 0],
            ("--range", "1,-1"): [255, 96, 51, 0, 0, 0, 0],
        }
        for words, samples in expected.items():
            with self.subTest(words):
                self.zel("convert", "in.pfm", "out.pgm", "--type", "u8", *words)
                self.assertEqual(samples_of(self.read("out.pgm")), samples)

    def test_numbers_shown_as_white_become_white(self):
        samples = [0, 1, 2000, 4095]
        self.write("in.pgm", pgm(4, 1, samples, 4095))
        expected = samples_of(command("pamdepth", "255", "in.pgm"))
        for name in ("out.pgm", "out.png", "out.gif"):
            words = ["--type", "u8"] if name != "out.gif" else []
            note = self.zel("convert", "in.pgm", name, *words).err
            self.assertEqual(note, "zel: %s: values scaled from ushort 0..4095 to uchar 0..255\n" % name)
            self.zel("convert", name, "seen.pgm", "--model", "luminance")
            self.assertEqual(samples_of(self.read("seen.pgm")), expected, name)
        # A format that keeps the type shows the numbers all the same, unless it tells their range.
        self.zel("convert", "in.pgm", "out.png")
        self.assertEqual(samples_of(command("pngtopam", "out.png")),
                         [nearest(v * 65535 / 4095) for v in samples])
        self.zel("convert", "in.pgm", "out.tif")
        self.assertEqual(tiff_samples("out.tif", "H"), samples)
        self.zel("convert", "in.pgm", "out.png", "--values", "clamp")
        self.assertEqual(samples_of(command("pngtopam", "out.png")), samples)
        # The range of one colour model is not that of another.
        self.zel("convert", "in.pgm", "out.tif", "--model", "negative")
        self.zel("convert", "out.tif", "out.pgm", "--type", "u8", "--model", "luminance")
        self.assertEqual(samples_of(self.read("out.pgm")), expected)
        self.write("in.pfm", pfm(3, 1, [0.0, 1.5, 3.0]).replace(b"\n-1\n", b"\n-3\n"))
        self.zel("convert", "in.pfm", "out.pgm", "--type", "u8")
        self.assertEqual(samples_of(self.read("out.pgm")),
                         samples_of(command("pamtopnm", stdin=command("pfmtopam", "in.pfm"))))

    def test_notes_say_what_was_done(self):
        self.write("in.pgm", pgm(3, 1, [0, 255, 256], 65535))
        self.assertEqual(self.zel("convert", "in.pgm", "o.pgm", "--type", "u8", "--values",
                                  "clamp").err, "zel: o.pgm: 1 value clamped to 0..255\n")
        self.assertEqual(self.zel("convert", "in.pgm", "o.tif").err, "")
        self.assertEqual(self.zel("convert", "in.pgm", "o.tif", "--type", "i32", "--values",
                                  "clamp").err, "")


class Packing(ToolTest):
    def test_png_of_each_filter_and_level_is_read_by_netpbm(self):
        # Rows of waves and of noise, of more bytes than deflate keeps in sight.
        generator = random.Random(3)
        rows = [[(x * y // 7 + 40 * c) % 256 if y % 50 < 35 else generator.randrange(256)
                 for x in range(240) for c in range(3)] for y in range(300)]
        self.write("in.ppm", pgm(240, 300, [v for row in rows for v in row]))
        self.zel("convert", "in.ppm", "wide.ppm", "--type", "ushort")
        for source in ("in.ppm", "wide.ppm"):
            for filter_name in ("none", "sub", "up", "average", "paeth", "all"):
                for level in (0, 1, 6, 9):
                    arguments = "%%filter=%s%%level=%d" % (filter_name, level)
                    self.zel("convert", source, "out.png" + arguments)
                    self.assertTrue(command("pngtopnm", "out.png") == self.read(source),
                                    (source, arguments))


class Colour(ToolTest):
    def test_luminance_by_weights(self):
        samples = self.scene()
        pixels = list(zip(*[iter(samples)] * 3))
        for name, weights in {"rec601": (0.299, 0.587, 0.114), "2,1,1": (0.5, 0.25, 0.25),
                              "rec709": (0.2126, 0.7152, 0.0722)}.items():
            self.zel("convert", "scene.ppm", "out.pgm", "--weights", name)
            wanted = [nearest(sum(w * v for w, v in zip(weights, p))) for p in pixels]
            found = samples_of(self.read("out.pgm"))
            self.assertLessEqual(max(abs(a - b) for a, b in zip(wanted, found)), 0, name)

    def test_grey_fills_colour_and_negative_is_turned(self):
        self.scene()
        grey = command("ppmtopgm", "scene.ppm")
        self.write("grey.pgm", grey)
        self.zel("convert", "grey.pgm", "out.ppm")
        self.assertEqual(self.read("out.ppm"), command("pgmtoppm", "white", stdin=grey))
        bits = command("pgmtopbm", "-threshold", stdin=grey)
        self.write("in.pbm", bits)
        self.zel("convert", "in.pbm", "out.pgm", "--type", "u8")
        self.assertEqual(samples_of(self.read("out.pgm")),
                         samples_of(command("pamdepth", "255", stdin=bits)))
        self.zel("convert", "in.pbm", "out.tif", "--model", "luminance")
        self.assertEqual(command("tifftopnm", "-quiet", "out.tif"),
                         command("pamtopnm", stdin=bits))

    def test_alpha_is_dropped_with_a_note(self):
        self.scene()
        command("convert-im6.q16", "scene.ppm", "-alpha", "set", "-channel", "A", "-evaluate",
                "set", "50%", "a.tif")
        result = self.zel("convert", "a.tif", "out.ppm", "--strip")
        self.assertEqual(result.err, "zel: out.ppm: alpha was dropped\n")
        self.assertEqual(self.read("out.ppm"), self.read("scene.ppm"))

    def test_palette_is_kept_or_expanded(self):
        self.scene()
        few = command("pnmquant", "16", "scene.ppm")
        self.write("few.ppm", few)
        self.write("p.tif", command("pamtotiff", "-none", "few.ppm"))
        self.assertIn("palette", self.zel("info", "p.tif").out)
        self.zel("convert", "p.tif", "out.ppm")
        self.assertEqual(self.read("out.ppm"), few)
        self.zel("convert", "p.tif", "q.tif", "--compression", "lzw")
        self.assertIn("palette", self.zel("info", "q.tif").out)
        self.assertEqual(command("tifftopnm", "-quiet", "q.tif"), few)
        self.zel("convert", "p.tif", "q.tif", "--compression", "jpeg")
        self.assertIn("JPEG", self.zel("info", "q.tif").out)

    def test_channels(self):
        samples = self.scene()
        self.zel("convert", "scene.ppm", "out.ppm", "--channels", "2,0,0")
        wanted = [samples[i - i % 3 + (2, 0, 0)[i % 3]] for i in range(len(samples))]
        self.assertEqual(samples_of(self.read("out.ppm")), wanted)
        self.zel("convert", "scene.ppm", "out.pgm", "--channels", "1")
        self.assertEqual(samples_of(self.read("out.pgm")), samples[1::3])


class Geometry(ToolTest):
    def test_orientations_agree_with_imagemagick(self):
        self.scene()
        for orientation in ORIENTATIONS:
            for page in (["--page", "16x16"], [], ["--order", "separate"]):
                with self.subTest(orientation=orientation, page=page):
                    self.zel("convert", "scene.ppm", "o.tif", "--orientation", orientation, *page)
                    command("convert-im6.q16", "o.tif", "-auto-orient", "o.ppm")
                    self.assertEqual(self.read("o.ppm"), self.read("scene.ppm"))
                    self.zel("convert", "o.tif", "o.ppm", "--region", "3,5,40,30")
                    self.assertEqual(self.read("o.ppm"),
                                     command("pamcut", "-left", "3", "-top", "5", "-width", "40",
                                             "-height", "30", "scene.ppm"))

    def test_another_format_gets_the_picture_upright(self):
        samples = self.scene()
        self.zel("convert", "scene.ppm", "turned.tif", "--orientation", "right-upper")
        self.zel("convert", "turned.tif", "turned.jpg", "--orientation", "lower-left")
        for name, reader in (("o.png", ["pngtopam"]), ("o.webp", ["convert-im6.q16"]),
                             ("o.jpg", ["djpeg"]), ("o.bmp", ["bmptopnm", "-quiet"])):
            with self.subTest(name):
                self.zel("convert", "turned.tif", name)
                self.assertIn("upper-left", self.zel("info", name).out)
                to = ["ppm:-"] if name == "o.webp" else []
                seen = samples_of(command(*reader, name, *to))
                self.assertLess(sum(abs(a - b) for a, b in zip(seen, samples)) / len(samples),
                                20 if name == "o.jpg" else 1e-9)
        for name, orientation in (("p.jpg", "lower-left"), ("p.tif", "upper-left"),
                                  ("p.fits", "lower-left")):
            self.zel("convert", "turned.jpg", name)
            self.assertEqual(json.loads(self.zel("info", "--json", name).out)[0]["orientation"],
                             orientation)

    def test_losses_are_not_handed_on(self):
        self.scene()
        self.write("a.jpg", command("cjpeg", "scene.ppm"))
        for name, compression in (("a.tif", "none"), ("a.webp", "ZIP"), ("a.png", "ZIP")):
            self.zel("convert", "a.jpg", name)
            self.assertIn(compression, self.zel("info", name).out)
            self.assertEqual(self.zel("compare", "a.jpg", name).out, "equal\n")
        self.zel("convert", "a.jpg", "b.tif", "--compression", "jpeg")
        self.zel("convert", "b.tif", "c.tif")
        self.assertIn(b"Compression Scheme: JPEG", command("tiffinfo", "c.tif"))

    def test_large_images_in_little_memory(self):
        # Large enough that rows and columns cannot be exchanged in one block.
        width, height = 8000, 7000
        row = bytes(i * 7 & 255 for i in range(width + height))
        self.write("in.pgm", b"P5\n%d %d\n255\n" % (width, height) +
                   b"".join(row[y:y + width] for y in range(height)))
        # Under a sanitizer a process has far more memory than it uses.
        sanitized = b"__asan_init" in self.read(ZEL)
        limit = None if sanitized else lambda: resource.setrlimit(resource.RLIMIT_DATA,
                                                                  (64 << 20, 64 << 20))
        for words in (["--orientation", "right-lower"], ["--orientation", "lower-left"],
                      ["--orientation", "left-upper", "--page", "256x256", "--compression", "zip"]):
            self.zel("convert", "in.pgm", "t.tif", *words, preexec_fn=limit)
            self.zel("convert", "t.tif", "out.pgm", preexec_fn=limit)
            self.assertTrue(self.read("in.pgm") == self.read("out.pgm"), words)
        self.assertEqual(sorted(os.listdir()), ["in.pgm", "out.pgm", "t.tif"])

    def test_forward_codecs_turned(self):
        # Several bands on both sides, whose rows are met in the other order.
        self.write("in.ppm", pgm(500, 400, [i * i // 977 & 255 for i in range(600000)]))
        for suffix in ("png", "bmp"):
            self.zel("convert", "in.ppm", "in." + suffix)
            for orientation, flips in (("lower-left", ["-tb"]), ("upper-right", ["-lr"]),
                                       ("lower-right", ["-r180"]), ("left-upper", ["-xy"])):
                with self.subTest(suffix=suffix, orientation=orientation):
                    self.zel("convert", "in." + suffix, "out.png", "--orientation", orientation)
                    self.zel("convert", "out.png", "back.ppm")
                    self.assertTrue(self.read("back.ppm") == self.read("in.ppm"))
                    # What other programs take for the rows is turned.
                    turned = command("pamflip", *flips, "in.ppm")
                    stored = command("convert-im6.q16", "out.png", "-depth", "8", "ppm:-")
                    self.assertTrue(samples_of(stored) == samples_of(turned))

    def test_all_images(self):
        images = [pgm(5, 4, [i] * 20) for i in range(3)]
        self.write("in.pgm", b"".join(images))
        self.zel("convert", "--all", "in.pgm", "out.tif")
        self.assertEqual(command("tifftopnm", "-quiet", "out.tif"), b"".join(images))
        self.assertEqual(self.zel("convert", "out.tif", "one.PGM").err,
                         "zel: one.PGM: this is the first of 3 images; --all takes every one\n")
        self.assertEqual(self.read("one.PGM"), images[0])
        self.assertEqual(self.zel("convert", "out.tif:1", "one.pgm").err, "")
        self.assertEqual(self.read("one.pgm"), images[1])
        self.assertEqual(command("tiffinfo", "out.tif").count(b"TIFF Directory"), 3)
        for name in ("out.pfm", "out.png"):
            error = self.zel("convert", "--all", "in.pgm", name, status=1).err
            self.assertEqual(error, "zel: %s: this file cannot hold more than one image\n" % name)
            self.assertFalse(os.path.exists(name))


if __name__ == "__main__":
    unittest.main()
