"""Pictures of many colours in formats of few, as other programs see them."""
import json
import math
import unittest

from support import ToolTest, command, pgm, samples_of

WIDTH, HEIGHT = 96, 80


def psnr(a, b):
    squares = sum((x - y) ** 2 for x, y in zip(a, b))
    return 10 * math.log10(255 ** 2 * len(a) / squares) if squares else math.inf


class Reduced(ToolTest):
    def setUp(self):
        super().setUp()
        # Broad areas and fine grain of a few hues.
        self.photo = [min(255, max(0, int(v + 9 * math.sin(x * y * (c + 1)))))
                      for y in range(HEIGHT) for x in range(WIDTH)
                      for c, v in enumerate((x * 2.5, 60 + 50 * math.sin(y / 9), 250 - 3 * y))]
        self.write("photo.ppm", pgm(WIDTH, HEIGHT, self.photo))

    def gif(self, source, *words, note=""):
        """The samples of a picture that went through GIF, as netpbm sees them."""
        self.assertEqual(self.zel("convert", source, "out.gif", *words).err, note)
        return samples_of(command("giftopnm", "-quiet", "out.gif"))

    def test_as_good_as_another_program(self):
        reduced = "zel: out.gif: colours reduced to a palette of 256\n"
        for words, peer in ((["--dither", "none"], ["-nofloyd"]), ([], ["-floyd"])):
            peers = samples_of(command("pnmquant", *peer, "256", stdin=self.read("photo.ppm")))
            ours = self.gif("photo.ppm", *words, note=reduced)
            self.assertGreaterEqual(psnr(ours, self.photo), psnr(peers, self.photo), words)

    def test_diffusion_keeps_the_means_of_areas(self):
        # Seen from afar, what a palette lacks is mixed of what it has.
        def means(samples):
            return [sum(samples[3 * ((y + b) * WIDTH + x + a) + c]
                        for a in range(8) for b in range(8)) / 64
                    for y in range(0, HEIGHT, 8) for x in range(0, WIDTH, 8) for c in range(3)]

        wanted = means(self.photo)
        errors = {}
        for dither in ("diffusion", "none"):
            self.zel("convert", "photo.ppm", "out.gif", "--dither", dither)
            found = means(samples_of(command("giftopnm", "-quiet", "out.gif")))
            errors[dither] = sum(abs(a - b) for a, b in zip(wanted, found))
        self.assertLess(errors["diffusion"], errors["none"])

    def test_few_colours_stay_exactly(self):
        self.write("grey.pgm", pgm(256, 2, list(range(256)) * 2))
        for words in ([], ["--model", "palette"]):
            self.assertEqual(self.gif("grey.pgm", *words), list(range(256)) * 2)
        self.write("few.ppm", command("pnmquant", "255", "photo.ppm"))
        self.assertEqual(self.gif("few.ppm"), samples_of(self.read("few.ppm")))

    def test_transparency_is_all_or_nothing(self):
        alpha = [x * 255 // (WIDTH - 1) for _ in range(HEIGHT) for x in range(WIDTH)]
        self.write("alpha.pgm", pgm(WIDTH, HEIGHT, alpha))
        self.write("few.ppm", command("pnmquant", "200", "photo.ppm"))
        self.write("in.pam", command("pamstack", "-tupletype=RGB_ALPHA", "few.ppm", "alpha.pgm"))
        self.gif("in.pam", note="zel: out.gif: alpha cut: half and more is opaque, the rest "
                                "transparent\n")
        command("giftopnm", "-quiet", "-alphaout=mask.pbm", "out.gif")
        self.assertEqual(samples_of(command("pamdepth", "255", "mask.pbm")),
                         [255 * (a >= 128) for a in alpha])
        # Another format gets the colours and the alpha of the palette.
        self.zel("convert", "out.gif", "out.pam", "--model", "rgba")
        seen = list(zip(*[iter(self.read("out.pam")[-4 * WIDTH * HEIGHT:])] * 4))
        colors = list(zip(*[iter(samples_of(self.read("few.ppm")))] * 3))
        self.assertEqual(seen, [c + (255,) if a >= 128 else (0, 0, 0, 0)
                                for c, a in zip(colors, alpha)])

    def test_palettes_without_alpha_do_not_take_it(self):
        self.write("in.pam", b"P7\nWIDTH 3\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\n"
                   b"ENDHDR\n" + bytes([9, 8, 7, 255, 0, 0, 0, 0, 200, 100, 0, 255]))
        self.zel("convert", "in.pam", "p.png", "--model", "palette")
        for name in ("o.tif", "o.bmp", "o.tga", "o.webp", "o.gif"):
            with self.subTest(name):
                self.assertEqual(self.zel("convert", "p.png", name).err, "")
                self.zel("convert", name, "o.pam", "--model", "rgba")
                self.assertEqual(self.read("o.pam"), self.read("in.pam"))
        self.assertEqual(self.zel("convert", "p.png", "o.tif", "--model", "palette").err,
                         "zel: o.tif: alpha was dropped\n")
        self.assertEqual(self.zel("convert", "in.pam", "o.tif", "--model", "palette").err,
                         "zel: o.tif: alpha was dropped\n")

    def test_palettes_with_half_transparent_entries(self):
        self.write("two.ppm", b"P6 4 1 255\n" + bytes([250, 0, 0, 0, 0, 250] * 2))
        self.write("alpha.pgm", pgm(4, 1, [255, 128] * 2))
        self.write("p.png", command("pnmtopng", "-quiet", "-alpha=alpha.pgm", "two.ppm"))
        self.assertEqual(json.loads(self.zel("info", "--json", "p.png").out)[0]["colorModel"],
                         "palette")
        self.assertIn("alpha cut", self.zel("convert", "p.png", "o.gif").err)
        for name in ("o.tga", "o.tif"):
            self.assertEqual(self.zel("convert", "p.png", name).err, "")
            self.zel("convert", name, "o.pam", "--model", "rgba")
            self.assertEqual(self.read("o.pam")[-16:], bytes([250, 0, 0, 255, 0, 0, 250, 128] * 2))

    def test_palette_on_demand(self):
        reduced = ": colours reduced to a palette of 256\n"
        for name, reader in (("p.png", ["pngtopam"]), ("p.bmp", ["bmptopnm", "-quiet"]),
                             ("p.tif", ["tifftopnm", "-quiet"])):
            with self.subTest(name):
                note = self.zel("convert", "photo.ppm", name, "--model", "palette").err
                self.assertEqual(note, "zel: " + name + reduced)
                info = json.loads(self.zel("info", "--json", name).out)[0]
                self.assertEqual((info["colorModel"], info["type"]), ("palette", "uchar"))
                self.assertGreater(psnr(samples_of(command(*reader, name)), self.photo), 30)
        for words, text in ((["p.gif", "--type", "u16"], "GIF cannot store type ushort"),
                            (["p.tif", "--type", "u16", "--model", "palette"],
                             "reduced to indexes of type uchar only"),
                            (["p.gif", "--dither", "some"], "none of diffusion, none")):
            status = 2 if "--dither" in words else 1
            self.assertIn(text, self.zel("convert", "photo.ppm", *words, status=status).err)


if __name__ == "__main__":
    unittest.main()
