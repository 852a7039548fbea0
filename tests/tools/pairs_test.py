"""Every kind of picture to every format: what a person expects comes out."""
import array
import json
import unittest

from support import ToolTest, command, pfm, pgm

WIDTH, HEIGHT = 61, 43
# The suffix of each format, and how far 8-bit samples may move in it: HDR keeps eight bits of the
# largest of three, and JPEG is lossy and counted by the mean.
FORMATS = {"pnm": 0, "tif": 0, "png": 0, "jpg": 6, "gif": 0, "webp": 0, "jp2": 0, "exr": 0,
           "bmp": 0, "tga": 0, "hdr": 2, "fits": 0}
# GIF has 256 colours, and dots of these for what is between them.
REDUCED = {("gif", "photo"): 6, ("gif", "alpha"): 6}


class Pairs(ToolTest):
    def setUp(self):
        super().setUp()
        # Smooth, as photographs are in the main.
        self.write("photo.ppm", pgm(WIDTH, HEIGHT, [v for y in range(HEIGHT) for x in range(WIDTH)
                                                    for v in (x * 4, y * 5, 255 - x - y)]))
        photo = self.read("photo.ppm")
        grey = command("ppmtopgm", stdin=photo)
        self.write("bits.pbm", command("pamditherbw", "-threshold", stdin=grey))
        self.write("bits.pbm", command("pamtopnm", stdin=self.read("bits.pbm")))
        self.write("deep.pgm", pgm(WIDTH, HEIGHT, [(x * 1021 + y * 331) % 65536
                                                   for y in range(HEIGHT) for x in range(WIDTH)],
                                   65535))
        self.write("real.pfm", pfm(WIDTH, HEIGHT, [(x + y * WIDTH) / (WIDTH * HEIGHT)
                                                   for y in range(HEIGHT) for x in range(WIDTH)]))
        self.write("grey.pgm", grey)
        alpha = command("pamstack", "-tupletype=RGB_ALPHA", "photo.ppm", "grey.pgm")
        self.write("alpha.pam", alpha)
        few = command("pnmquant", "16", stdin=photo)
        self.write("palette.gif", command("pamtogif", stdin=few))
        self.write("few.ppm", few)

    def pixels(self, name):
        """The picture as netpbm is handed it: upright 8-bit samples of red, green and blue."""
        self.zel("convert", name, "seen.ppm", "--type", "u8", "--model", "rgb", "--order",
                 "interleaved", "--orientation", "upper-left")
        header, size, _, data = self.read("seen.ppm").split(b"\n", 3)
        self.assertEqual((header, size), (b"P6", b"%d %d" % (WIDTH, HEIGHT)))
        return array.array("B", data)

    def opacities(self, kind):
        """The alpha of each sample of the picture, which is its luminance."""
        alpha = self.read("grey.pgm")[-WIDTH * HEIGHT:] if kind == "alpha" else b"\xff" * WIDTH * HEIGHT
        return [value for value in alpha for _ in range(3)]

    def check(self, source, kind):
        expected = self.pixels(source)
        for suffix, tolerance in FORMATS.items():
            target = "%s_out.%s" % (kind, suffix)
            with self.subTest(target):
                self.zel("convert", source, target)
                info = json.loads(self.zel("info", "--json", target).out)[0]
                self.assertEqual((info["width"], info["height"]), (WIDTH, HEIGHT))
                errors = [abs(a - b) for a, b, opacity in
                          zip(self.pixels(target), expected, self.opacities(kind))
                          if opacity >= 128 or suffix != "gif"]
                # Blocks of a lossy picture ring at the edges of a palette's areas.
                by_mean = suffix == "jpg" or (suffix, kind) in REDUCED
                error = sum(errors) / len(errors) if by_mean else max(errors)
                self.assertLessEqual(error, REDUCED.get((suffix, kind), tolerance), target)

    def test_photo(self):
        self.check("photo.ppm", "photo")

    def test_palette(self):
        # The colours that netpbm chose are the witness for what is seen of the palette.
        self.assertEqual(self.pixels("palette.gif").tobytes(),
                         self.read("few.ppm").split(b"\n", 3)[3])
        self.check("palette.gif", "palette")

    def test_grey(self):
        self.check("grey.pgm", "grey")

    def test_bits(self):
        self.check("bits.pbm", "bits")

    def test_deep(self):
        self.check("deep.pgm", "deep")

    def test_real(self):
        self.check("real.pfm", "real")

    def test_alpha(self):
        self.check("alpha.pam", "alpha")
        for suffix in ("png", "tif", "webp", "exr", "tga", "bmp"):
            with self.subTest(suffix):
                info = json.loads(self.zel("info", "--json", "alpha_out." + suffix).out)[0]
                self.assertEqual(info["channels"], 4)


if __name__ == "__main__":
    unittest.main()
