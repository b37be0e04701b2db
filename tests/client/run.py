"""Tests of the command-line client: run.py QVCLR_COMMAND... (an emulator may stand before the program)."""

import pathlib
import resource
import subprocess
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True  # the source tree stays clean
import images  # noqa: E402

QVCLR = []
PROFILE = pathlib.Path(__file__).parents[2] / "res" / "cmyk.icc"
W, H = 21, 10
RGB = images.pixels(W * H * 3)
COMPLEMENT = bytes(range(255, -1, -1))


def cmyk_by_formula(rgb, black=175):
    cmy = rgb.translate(COMPLEMENT)
    return b"".join(cmy[i:i + 3] + bytes([black * min(cmy[i:i + 3]) // 1000]) for i in range(0, len(cmy), 3))


def swapped_ends(rgb):
    return b"".join(rgb[i:i + 3][::-1] for i in range(0, len(rgb), 3))


def flipped_lab(lab):
    return bytes(value ^ (0x80 if i % 3 else 0) for i, value in enumerate(lab))


def mean_difference(a, b):
    return sum(abs(x - y) for x, y in zip(a, b, strict=True)) / len(a)


class ClientTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def run_client(self, *arguments):
        return subprocess.run([*QVCLR, *arguments], cwd=self.folder, capture_output=True, text=True, timeout=120)

    def convert(self, content, out, *arguments):
        """The bytes that the client makes of the content."""
        (self.folder / "in").write_bytes(content)
        run = self.run_client("convert", "in", out, *arguments)
        self.assertEqual((run.returncode, run.stderr), (0, ""))
        return (self.folder / out).read_bytes()

    def to_rgb(self, content, *arguments):
        return images.read_ppm(self.convert(content, "out.ppm", "--to", "rgb", *arguments))[2]

    def assert_fails(self, content, reason, *arguments, out="out.ppm"):
        """One line with the reason, status 1, an older output file as it was, and no other file."""
        (self.folder / "in").write_bytes(content)
        (self.folder / out).write_bytes(b"older")
        before = set(self.folder.iterdir())
        run = self.run_client("convert", "in", out, *arguments)
        self.assertEqual(run.returncode, 1, run)
        self.assertRegex(run.stderr, r"\Aqvclr: [^\n]+\n\Z")
        self.assertIn(reason, run.stderr)
        self.assertEqual((self.folder / out).read_bytes(), b"older")
        self.assertEqual(set(self.folder.iterdir()), before)


class Formats(ClientTest):
    def test_netpbm(self):
        self.assertEqual(self.to_rgb(images.ppm(W, H, RGB)), RGB)
        self.assertEqual(self.to_rgb(b"P6\n# a comment\n#\n%d # another\n%d\n255\n" % (W, H) + RGB), RGB)
        grey = images.pixels(W * H)
        self.assertEqual(self.to_rgb(b"P5 %d %d 255\n" % (W, H) + grey), bytes(v for g in grey for v in (g, g, g)))

    def test_arrangements_of_tiff(self):
        for arrangement in ({}, {"rows": 3}, {"order": ">"}, {"planar": True, "rows": 4}, {"tile": (16, 16)},
                            {"tile": (16, 16), "planar": True, "order": ">"}, {"rows": 3, "deflate": True}):
            with self.subTest(arrangement):
                self.assertEqual(self.to_rgb(images.tiff(W, H, 3, RGB, 2, **arrangement)), RGB)

    def test_alpha_is_left_out(self):
        rgba = b"".join(RGB[i:i + 3] + b"\x7f" for i in range(0, len(RGB), 3))
        for arrangement in ({}, {"planar": True}, {"tile": (16, 16)}):
            with self.subTest(arrangement):
                self.assertEqual(self.to_rgb(images.tiff(W, H, 4, rgba, 2, **arrangement)), RGB)

    def test_jpeg(self):
        for blocks, adobe, to, expected in (
                ([(10,), (250,)], None, "rgb", [(10, 10, 10), (250, 250, 250)]),
                ([(9, 80, 200), (255, 0, 1)], 0, "rgb", [(9, 80, 200), (255, 0, 1)]),
                ([(76, 85, 255), (150, 44, 21)], None, "rgb", [(254, 0, 0), (0, 255, 1)]),
                ([(1, 2, 3, 4), (255, 0, 77, 9)], None, "cmyk", [(1, 2, 3, 4), (255, 0, 77, 9)]),
                ([(1, 2, 3, 4), (255, 0, 77, 9)], 0, "cmyk", [(254, 253, 252, 251), (0, 255, 178, 246)]),
                ([(200, 128, 128, 4), (0, 128, 128, 9)], 2, "cmyk", [(200, 200, 200, 251), (0, 0, 0, 246)])):
            with self.subTest(blocks=blocks, adobe=adobe):
                raw = self.convert(images.jpeg(blocks, adobe), "out", "--to", to)
                line = b"".join(bytes(pixel) * 8 for pixel in expected)
                self.assertEqual(raw, line * 8)

    def test_raw_pixels(self):
        size = ["--size", f"{W}x{H}", "--from"]
        for space, stored in (("rgb", RGB), ("bgr", swapped_ends(RGB)), ("cmy", RGB.translate(COMPLEMENT)),
                              ("12", swapped_ends(RGB))):
            with self.subTest(space):
                self.assertEqual(self.to_rgb(stored, *size, space), RGB)
                self.assertEqual(self.convert(images.ppm(W, H, RGB), "out.ppm", "--raw", "--to", space), stored)
        cmyk = images.pixels(W * H * 4)
        tags, copy = images.read_tiff(self.convert(cmyk, "out.tif", *size, "cmyk", "--to", "cmyk"))
        self.assertEqual((copy, tags[262], tags[277]), (cmyk, (5,), (4,)))
        self.assertEqual(self.convert(cmyk[:18], "out", "--size", "4x4", "--from", "yvu9", "--to", "yvu9"), cmyk[:18])

    def test_an_image_taken_for_another_space(self):
        self.assertEqual(self.to_rgb(images.ppm(W, H, RGB), "--from", "bgr"), swapped_ends(RGB))
        self.assert_fails(images.ppm(W, H, RGB), "cannot be taken for cmyk", "--from", "cmyk", "--to", "rgb")

    def test_output_over_the_input_and_in_several_bands(self):
        rgb = images.pixels(1001 * 900 * 3)
        (self.folder / "same.ppm").write_bytes(images.ppm(1001, 900, rgb))
        run = self.run_client("convert", "same.ppm", "same.ppm", "--to", "rgb", "--from", "cmy", "--time")
        self.assertRegex(run.stdout, r"\A0\.901 megapixels in \d+\.\d+ s: [\d.]+ megapixels per second\n\Z")
        self.assertEqual(images.read_ppm((self.folder / "same.ppm").read_bytes())[2], rgb.translate(COMPLEMENT))


class Colours(ClientTest):
    def test_cmyk_by_formula(self):
        for arguments, black in (([], 175), (["--black", "0"], 0), (["--black", "90"], 90)):
            raw = self.convert(images.ppm(W, H, RGB), "out", "--to", "cmyk", *arguments)
            self.assertEqual(raw, cmyk_by_formula(RGB, black))

    def test_cmyk_by_profiles_and_back(self):
        soft = bytes(70 + value // 3 for value in RGB)  # colours that ink can print
        picture = images.ppm(W, H, soft)
        arguments = ["--to", "cmyk", "--method", "icc", "--embed", str(PROFILE)]
        plain = self.convert(picture, "out.tif", *arguments)
        tags, inks = images.read_tiff(plain)
        self.assertEqual((tags[262], tags[277], tags[332], tags[296]), ((5,), (4,), (1,), (2,)))
        self.assertEqual(tags[34675], PROFILE.read_bytes())
        self.assertGreater(mean_difference(inks, cmyk_by_formula(soft)), 5)
        proof = self.to_rgb(plain, "--method", "icc")
        self.assertLess(mean_difference(proof, soft), 8)
        packed = self.convert(picture, "out.tif", *arguments, "--compress")
        self.assertEqual(images.read_tiff(packed)[0][259], (8,))
        self.assertEqual(self.to_rgb(packed, "--method", "icc"), proof)
        self.assert_fails(picture, "a profile of cmyk, not of rgb", "--to", "rgb", "--embed", str(PROFILE),
                          out="out.tif")

    def test_coding_of_lab(self):
        picture = images.ppm(3, 1, bytes([255, 255, 255, 119, 119, 119, 200, 40, 40]))
        tags, by_profiles = images.read_tiff(self.convert(picture, "out.tif", "--to", "lab", "--method", "icc"))
        self.assertEqual(tags[262], (9,))
        self.assertEqual(by_profiles[:3], b"\xff\x80\x80")
        self.assertLess(max(abs(by_profiles[4] - 128), abs(by_profiles[5] - 128)), 3)
        self.assertGreater(min(by_profiles[7:9]), 150)

        signed = images.tiff(3, 1, 3, flipped_lab(by_profiles), 8)
        offset = images.tiff(3, 1, 3, by_profiles, 9)
        self.assertEqual(self.to_rgb(signed, "--method", "icc"), self.to_rgb(offset, "--method", "icc"))
        tags, copy = images.read_tiff(self.convert(offset, "out.tif", "--to", "lab", "--method", "formula"))
        self.assertEqual((tags[262], copy), ((8,), flipped_lab(by_profiles)))

    def test_white_points(self):
        def lab(white):
            return self.convert(images.ppm(W, H, RGB), "out", "--to", "lab", "--method", "icc", "--white", white)

        self.assertNotEqual(lab("d50"), lab("d65"))
        self.assertLess(mean_difference(lab("0.3127,0.3290"), lab("d65")), 2)
        for white, reason in (("0,0", "ERR_INV_PARAMETER (-13)"), ("1,2,3", "no chromaticity"), ("d51", "white point")):
            self.assert_fails(images.ppm(W, H, RGB), reason, "--to", "lab", "--method", "icc", "--white", white)


class Errors(ClientTest):
    def test_arguments(self):
        picture = images.ppm(W, H, RGB)
        for reason, arguments in (
                ("unknown colour space 'rgbb'", ["--to", "rgbb"]), ("unknown colour space '99'", ["--to", "99"]),
                ("unknown method 'magic'", ["--to", "rgb", "--method", "magic"]), ("--to", []),
                ("need --from", ["--to", "rgb", "--size", "2x2"]),
                ("no size", ["--to", "rgb", "--size", "2x2x2", "--from", "cmy"]),
                ("have 630", ["--to", "rgb", "--size", f"{W}x{H}", "--from", "cmy"]),
                ("PPM files hold rgb only", ["--to", "cmyk"]),
                ("ERR_UNSUPPORTED_COLORSPACE (-785): ", ["--to", "hsv", "--method", "icc"])):
            with self.subTest(reason):
                self.assert_fails(picture, reason, *arguments)
        self.assert_fails(picture, "TIFF files hold", "--to", "bgr", out="out.tif")
        missing = self.run_client("convert", "nowhere.ppm", "new.ppm", "--to", "rgb")
        self.assertEqual((missing.returncode, missing.stderr), (1, "qvclr: nowhere.ppm: cannot be read\n"))
        self.assertFalse((self.folder / "new.ppm").exists())

    def test_files_cut_short(self):
        jpeg = images.jpeg([(9, 80, 200), (255, 0, 1)] * 40, 0)
        scan = jpeg.index(b"\xff\xda") + 40
        for content in (images.ppm(W, H, RGB)[:-1], b"P6 21", b"P6 2 2 255", b"P", b"", jpeg[:scan], jpeg[:50],
                        images.tiff(W, H, 3, RGB, 2)[:500], images.tiff(W, H, 3, RGB, 2)[:-20]):
            with self.subTest(content[:20]):
                self.assert_fails(content, "in: ", "--to", "rgb")
        # Complete directories, and strips that end too early.
        for claim in ((W, H + 40), (W + 80, H)):
            for deflate in (False, True):
                self.assert_fails(images.tiff(W, H, 3, RGB, 2, claim=claim, deflate=deflate), "in: ", "--to", "rgb")

    def test_hostile_headers(self):
        for claim in ((65535, 65535), (20000, 20000), (2**31, 1), (1, 2**31), (2**32 - 1, 2**32 - 1), (0, 5)):
            for arrangement in ({}, {"planar": True}, {"tile": (16, 16)}, {"deflate": True}):
                with self.subTest(claim=claim, **arrangement):
                    content = images.tiff(W, H, 3, RGB, 2, claim=claim, **arrangement)
                    self.assert_fails(content, "in: ", "--to", "rgb")
        big = images.jpeg([(9, 80, 200)], 0).replace(b"\x08\0\x08\0\x08", b"\x08\xff\xff\xff\xff")
        for content in (b"P6 65536 32768 255\n", b"P6 2147483648 1 255\n", b"P6 99999999999999999999 1 255\n",
                        b"P6 0 1 255\n", b"P6 -1 1 255\n", b"P6 1 1 65535\n123456", big,
                        images.tiff(W, H, 3, RGB, 6), images.tiff(W, H, 3, RGB, 5)):
            with self.subTest(content[:30]):
                self.assert_fails(content, "in: ", "--to", "rgb")
        peak_of_any_run = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss * 1024
        self.assertLess(peak_of_any_run, 1 << 30)


if __name__ == "__main__":
    # The tests run in folders of their own.
    QVCLR = [str(pathlib.Path(part).resolve()) if pathlib.Path(part).exists() else part for part in sys.argv[1:]]
    unittest.main(argv=sys.argv[:1])
