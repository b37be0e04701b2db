"""Tests of conversions by the command-line client: run.py QVCLR_COMMAND..."""

import math
import pathlib
import resource
import sys

sys.dont_write_bytecode = True  # the source tree stays clean
import harness  # noqa: E402
import images  # noqa: E402

RES = pathlib.Path(__file__).parents[2] / "res"
PROFILE = RES / "cmyk.icc"
W, H = 21, 10
RGB = images.pixels(W * H * 3)
PPM = images.ppm(W, H, RGB)
COMPLEMENT = bytes(range(255, -1, -1))


def cmyk_by_formula(rgb, black=175):
    cmy = rgb.translate(COMPLEMENT)
    return b"".join(cmy[i:i + 3] + bytes([black * min(cmy[i:i + 3]) // 1000]) for i in range(0, len(cmy), 3))


def swapped_ends(rgb):
    return b"".join(rgb[i:i + 3][::-1] for i in range(0, len(rgb), 3))


class ConvertTest(harness.ClientTest):
    def convert(self, content, out, *arguments):
        """The bytes that the client makes of the content."""
        (self.folder / "in").write_bytes(content)
        self.succeeds("convert", "in", out, *arguments)
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


class Formats(ConvertTest):
    def test_pictures(self):
        grey = images.pixels(W * H)
        rgba = b"".join(RGB[i:i + 3] + b"\x7f" for i in range(0, len(RGB), 3))
        for content, expected in (
                (PPM, RGB), (b"P6\n# a comment\n#\n%d # another\n%d\n255\n" % (W, H) + RGB, RGB),
                (b"P5 %d %d 255\n" % (W, H) + grey, bytes(v for g in grey for v in (g, g, g))),
                *((images.tiff(W, H, 3, RGB, 2, **arrangement), RGB) for arrangement in (
                    {}, {"rows": 3}, {"order": ">"}, {"planar": True, "rows": 4}, {"tile": (16, 16)},
                    {"tile": (16, 16), "planar": True, "order": ">"}, {"rows": 3, "deflate": True})),
                *((images.tiff(W, H, 4, rgba, 2, **arrangement), RGB) for arrangement in (
                    {}, {"planar": True}, {"tile": (16, 16)}))):
            with self.subTest(content[:30]):
                self.assertEqual(self.to_rgb(content), expected)

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
                self.assertEqual(raw, b"".join(bytes(pixel) * 8 for pixel in expected) * 8)

    def test_raw_pixels(self):
        size = ["--size", f"{W}x{H}", "--from"]
        for space, stored in (("bgr", swapped_ends(RGB)), ("cmy", RGB.translate(COMPLEMENT)), ("12", swapped_ends(RGB))):
            self.assertEqual(self.to_rgb(stored, *size, space), RGB)
            self.assertEqual(self.convert(PPM, "out.ppm", "--raw", "--to", space), stored)
        cmyk = images.pixels(W * H * 4)
        tags, copy = images.read_tiff(self.convert(cmyk, "out.tif", *size, "cmyk", "--to", "cmyk"))
        self.assertEqual((copy, tags[262], tags[277]), (cmyk, (5,), (4,)))
        self.assertEqual(self.convert(cmyk[:18], "out", "--size", "4x4", "--from", "yvu9", "--to", "yvu9"), cmyk[:18])
        self.assertEqual(self.to_rgb(PPM, "--from", "bgr"), swapped_ends(RGB))
        self.assert_fails(PPM, "cannot be taken for cmyk", "--from", "cmyk", "--to", "rgb")

    def test_output_over_the_input_and_in_several_bands(self):
        rgb = images.pixels(1001 * 900 * 3)
        (self.folder / "same.ppm").write_bytes(images.ppm(1001, 900, rgb))
        run = self.run_client("convert", "same.ppm", "same.ppm", "--to", "rgb", "--from", "cmy", "--time")
        self.assertRegex(run.stdout, r"\A0\.901 megapixels in \d+\.\d+ s: [\d.]+ megapixels per second\n\Z")
        self.assertEqual(images.read_ppm((self.folder / "same.ppm").read_bytes())[2], rgb.translate(COMPLEMENT))


class Methods(ConvertTest):
    def setUp(self):
        super().setUp()
        flipped = bytes(value ^ (0x80 if i % 3 else 0) for i, value in enumerate(RGB))
        for name, samples, pixels, photometric in (
                ("rgb", 3, RGB, 2), ("cmyk", 4, images.pixels(W * H * 4), 5), ("lab", 3, RGB, 8),
                ("offset-lab", 3, flipped, 9)):
            (self.folder / name).write_bytes(images.tiff(W, H, samples, pixels, photometric))

    def made(self, picture, to, *arguments):
        """Photometric interpretation and pixels that the client makes of a picture in the folder."""
        self.succeeds("convert", picture, "made.tif", "--to", to, *arguments)
        tags, pixels = images.read_tiff((self.folder / "made.tif").read_bytes())
        return tags[262][0], pixels

    def write_table(self, name, file):
        entries = (RES / f"{name}.et").read_bytes()
        side = math.isqrt(len(entries) // 3)
        (self.folder / file).write_bytes(images.tiff(side, side, 3, entries, 2))
        return file

    def test_settings(self):
        for arguments, black in (([], 175), (["--black", "0"], 0), (["--black", "90"], 90)):
            self.assertEqual(self.made("rgb", "cmyk", *arguments), (5, cmyk_by_formula(RGB, black)))
        by_icc = ["--method", "icc"]
        white = {name: self.made("rgb", "lab", *by_icc, "--white", name)
                 for name in ("d50", "d65", "0.3127,0.3290", "0.34567,0.35850")}
        self.assertEqual(len(set(white.values())), 4)
        self.assertLess(max(abs(a - b) for a, b in zip(white["d65"][1], white["0.3127,0.3290"][1])), 4)
        for name, reason in (("0,0", "ERR_INV_PARAMETER (-13)"), ("1,2,3", "no chromaticity"), ("d51", "white point")):
            self.assert_fails(PPM, reason, "--to", "lab", *by_icc, "--white", name)
        self.assertEqual(self.made("cmyk", "rgb", "--method", "auto"), self.made("cmyk", "rgb", *by_icc))
        for option, name in (("--src-profile", "srgb.icc"), ("--dst-profile", "cmyk.icc")):
            self.assertEqual(self.made("rgb", "cmyk", option, str(RES / name)), self.made("rgb", "cmyk", *by_icc))

    def test_embedded_profiles_and_compression(self):
        arguments = ["--to", "cmyk", "--method", "icc", "--embed", str(PROFILE)]
        plain, packed = (images.read_tiff(self.convert(PPM, "out.tif", *arguments, *more)) for more in ([], ["--compress"]))
        self.assertEqual([plain[0][tag] for tag in (262, 277, 332, 296)], [(5,), (4,), (1,), (2,)])
        self.assertEqual((plain[0][34675], packed[0][34675]), (PROFILE.read_bytes(),) * 2)
        self.assertEqual(packed[0][259], (8,))
        rgb = self.to_rgb((self.folder / "out.tif").read_bytes(), "--method", "icc")
        self.convert(PPM, "out.tif", *arguments)
        self.assertEqual(self.to_rgb((self.folder / "out.tif").read_bytes(), "--method", "icc"), rgb)
        self.assert_fails(PPM, "a profile of cmyk, not of rgb", "--to", "rgb", "--embed", str(PROFILE), out="out.tif")

    def test_files_of_any_name(self):
        # Red and blue change places in the profile, which is what another order of samples does.
        content = (RES / "srgb.icc").read_bytes()
        for old, new in ((b"rXYZ", b"????"), (b"bXYZ", b"rXYZ"), (b"????", b"bXYZ")):
            content = content.replace(old, new, 1)
        (self.folder / "pr\u00f6fil \u8868.icc").write_bytes(content)
        (self.folder / "b\u00efld \u8868").write_bytes(PPM)
        self.succeeds("convert", "b\u00efld \u8868", "\u00f6ut \u8868.tif", "--to", "lab",
                      "--src-profile", "pr\u00f6fil \u8868.icc")
        tags, lab = images.read_tiff((self.folder / "\u00f6ut \u8868.tif").read_bytes())
        self.assertEqual((tags[262][0], lab), self.made("rgb", "lab", "--from", "bgr", "--method", "icc"))
        self.assertEqual(self.made("b\u00efld \u8868", "lab", "--table", self.write_table("rgb_lab", "t\u00e4fel \u8868.tif")),
                         self.made("rgb", "lab", "--method", "table"))

    def test_coding_of_lab(self):
        profile, table = ["--dst-profile", str(RES / "lab.icc")], ["--table", self.write_table("rgb_lab", "rgb_lab.tif")]
        back_profile, back_table = ["--src-profile", str(RES / "lab.icc")], ["--table", self.write_table("lab_rgb", "lab_rgb.tif")]
        made = {}
        for method, there, back, coding in (("formula", [], [], 8), ("icc", [], [], 9), ("table", [], [], 8),
                                            ("custom", profile, back_profile, 9), ("auto", [], [], 8),
                                            ("custom-table", table, back_table, 8)):
            with self.subTest(method):
                made[method] = self.made("rgb", "lab", "--method", method, *there)
                self.assertEqual(made[method][0], coding)
                self.assertEqual(self.made("lab", "rgb", "--method", method, *back),
                                 self.made("offset-lab", "rgb", "--method", method, *back))
        self.assertEqual((made["auto"], made["custom-table"]), (made["formula"], made["table"]))
        self.assertEqual(len({made[method] for method in ("icc", "formula", "table")}), 3)
        # Without an RGB side it is the formula, whose Lab is signed.
        for picture, method, back in (("lab", "icc", []), ("offset-lab", "icc", []), ("offset-lab", "custom", back_profile)):
            self.assertEqual(self.made(picture, "cmyk", "--method", method, *back), self.made("lab", "cmyk"))

    def test_what_methods_refuse(self):
        (self.folder / "text").write_text("neither a profile nor a table, only some words in a row, and more of them")
        own, other = str(RES / "srgb.icc"), str(PROFILE)
        for reason, arguments in (
                ("--src-profile and --dst-profile need --method custom", ["--method", "icc", "--src-profile", own]),
                ("--table needs --method custom-table", ["--method", "table", "--table", "text"]),
                ("--table needs --method custom-table", ["--table", "text", "--src-profile", own]),
                ("--method custom needs --src-profile or --dst-profile", ["--method", "custom"]),
                ("--method custom-table needs --table", ["--method", "custom-table"]),
                ("--src-profile: a file name is needed", ["--src-profile", ""]),
                ("ERR_PROFILE_NAME (-8): ", ["--src-profile", "nowhere.icc"]),
                ("a name of more than 259 characters", ["--dst-profile", "\u00e4" * 260]),
                ("ERR_PROFILE_NAME (-8): ", ["--dst-profile", "\u00e4" * 130 + "/" + "n" * 128]),
                ("a name of more than 259 characters", ["--table", "t/" * 130]),
                ("ERR_PROFILE_OPEN (-787): ", ["--src-profile", other]),
                ("ERR_FILE_READ (-7): ", ["--table", "text"])):
            with self.subTest(arguments):
                self.assert_fails(PPM, reason, "--to", "lab", *arguments, out="out.tif")
        for method, reason in (("table", "there is no table"), ("auto", "ERR_UNSUPPORTED_METHOD (-786): ")):
            self.assert_fails(PPM, reason, "--to", "hsv", "--method", method, out="out")


class Errors(ConvertTest):
    def test_arguments(self):
        for reason, arguments in (
                ("unknown colour space 'rgbb'", ["--to", "rgbb"]), ("unknown colour space '99'", ["--to", "99"]),
                ("unknown method 'magic'", ["--to", "rgb", "--method", "magic"]), ("--to", []),
                ("need --from", ["--to", "rgb", "--size", "2x2"]),
                ("no size", ["--to", "rgb", "--size", "2x2x2", "--from", "cmy"]),
                ("have 630", ["--to", "rgb", "--size", f"{W}x{H}", "--from", "cmy"]),
                ("PPM files hold rgb only", ["--to", "cmyk"]),
                ("ERR_UNSUPPORTED_COLORSPACE (-785): ", ["--to", "hsv", "--method", "icc"])):
            with self.subTest(reason):
                self.assert_fails(PPM, reason, *arguments)
        self.assert_fails(PPM, "TIFF files hold", "--to", "bgr", out="out.tif")
        missing = self.run_client("convert", "nowhere.ppm", "new.ppm", "--to", "rgb")
        self.assertEqual((missing.returncode, missing.stderr), (1, "qvclr: nowhere.ppm: cannot be read\n"))
        self.assertFalse((self.folder / "new.ppm").exists())

    def test_files_cut_short_and_hostile_headers(self):
        jpeg, tiff = images.jpeg([(9, 80, 200), (255, 0, 1)] * 40, 0), images.tiff(W, H, 3, RGB, 2)
        big = images.jpeg([(9, 80, 200)], 0).replace(b"\x08\0\x08\0\x08", b"\x08\xff\xff\xff\xff")
        contents = [PPM[:-1], b"P6 21", b"P6 2 2 255", b"P", b"", jpeg[:jpeg.index(b"\xff\xda") + 40], jpeg[:50], big,
                    tiff[:500], tiff[:-20], images.tiff(W, H, 3, RGB, 6), images.tiff(W, H, 3, RGB, 5),
                    b"P6 65536 32768 255\n", b"P6 2147483648 1 255\n", b"P6 99999999999999999999 1 255\n",
                    b"P6 0 1 255\n", b"P6 -1 1 255\n", b"P6 1 1 65535\n123456"]
        # Complete directories, and strips that end too early or cannot be.
        contents += [images.tiff(W, H, 3, RGB, 2, claim=claim, deflate=deflate)
                     for claim in ((W, H + 40), (W + 80, H)) for deflate in (False, True)]
        contents += [images.tiff(W, H, 3, RGB, 2, claim=claim, **arrangement)
                     for claim in ((65535, 65535), (2**31, 1), (1, 2**31), (2**32 - 1, 2**32 - 1), (0, 5))
                     for arrangement in ({}, {"planar": True}, {"tile": (16, 16)}, {"deflate": True})]
        for content in contents:
            with self.subTest(content[:30]):
                self.assert_fails(content, "in: ", "--to", "rgb")
        peak_of_any_run = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss * 1024
        self.assertLess(peak_of_any_run, 1 << 30)


if __name__ == "__main__":
    harness.main()
