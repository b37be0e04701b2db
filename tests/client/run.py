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


class ConvertTest(harness.ClientTest):
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


class Formats(ConvertTest):
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


class Colours(ConvertTest):
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


class Methods(ConvertTest):
    def setUp(self):
        super().setUp()
        for name, samples, pixels, photometric in (
                ("rgb", 3, RGB, 2), ("cmyk", 4, images.pixels(W * H * 4), 5), ("lab", 3, RGB, 8),
                ("offset-lab", 3, flipped_lab(RGB), 9)):
            (self.folder / name).write_bytes(images.tiff(W, H, samples, pixels, photometric))

    def made(self, picture, to, *arguments):
        """Photometric interpretation and pixels that the client makes of a picture in the folder."""
        run = self.run_client("convert", picture, "made.tif", "--to", to, *arguments)
        self.assertEqual((run.returncode, run.stderr), (0, ""), run.args)
        tags, pixels = images.read_tiff((self.folder / "made.tif").read_bytes())
        return tags[262][0], pixels

    def write_table(self, name):
        entries = (RES / f"{name}.et").read_bytes()
        side = math.isqrt(len(entries) // 3)
        self.assertEqual(side * side * 3, len(entries))
        (self.folder / f"{name}.tif").write_bytes(images.tiff(side, side, 3, entries, 2))
        return f"{name}.tif"

    def test_the_callers_profiles(self):
        def profiles(source, dest):
            return (["--src-profile", str(RES / source)] if source else []) + (
                ["--dst-profile", str(RES / dest)] if dest else [])

        for picture, to, arguments in (("rgb", "cmyk", profiles("srgb.icc", "cmyk.icc")),
                                       ("cmyk", "rgb", profiles("cmyk.icc", None)),
                                       ("rgb", "lab", profiles(None, "lab.icc")),
                                       ("offset-lab", "rgb", [*profiles("lab.icc", "srgb.icc"), "--method", "custom"])):
            with self.subTest(arguments):
                by_icc = self.made(picture, to, "--method", "icc", "--white", "d65")
                self.assertEqual(self.made(picture, to, "--white", "d65", *arguments), by_icc)
        self.assertNotEqual(self.made(picture, to, *arguments), by_icc)

    def test_files_of_any_name(self):
        # Red and blue change places in the profile, which is what another order of samples does.
        content = (RES / "srgb.icc").read_bytes()
        for old, new in ((b"rXYZ", b"????"), (b"bXYZ", b"rXYZ"), (b"????", b"bXYZ")):
            content = content.replace(old, new, 1)
        (self.folder / "pr\u00f6fil \u8868.icc").write_bytes(content)
        (self.folder / "b\u00efld \u8868").write_bytes(images.ppm(W, H, RGB))
        run = self.run_client("convert", "b\u00efld \u8868", "\u00f6ut \u8868.tif", "--to", "lab",
                              "--src-profile", "pr\u00f6fil \u8868.icc")
        self.assertEqual((run.returncode, run.stderr), (0, ""))
        tags, lab = images.read_tiff((self.folder / "\u00f6ut \u8868.tif").read_bytes())
        self.assertEqual((tags[262][0], lab), self.made("rgb", "lab", "--from", "bgr", "--method", "icc"))
        (self.folder / "t\u00e4fel \u8868.tif").write_bytes((self.folder / self.write_table("rgb_lab")).read_bytes())
        self.assertEqual(self.made("b\u00efld \u8868", "lab", "--table", "t\u00e4fel \u8868.tif"),
                         self.made("rgb", "lab", "--method", "table"))

    def test_tables(self):
        for picture, to, name in (("rgb", "lab", "rgb_lab"), ("lab", "rgb", "lab_rgb"), ("cmyk", "rgb", "cmyk_rgb")):
            table, by_table = self.write_table(name), self.made(picture, to, "--method", "table")
            self.assertNotEqual(by_table, self.made(picture, to, "--method", "formula"))
            self.assertEqual(self.made(picture, to, "--table", table), by_table)
        nodes = [(c, m, y, k) for c in (0, 15) for m in (1, 9) for y in range(16) for k in (0, 3, 12)]
        ink = bytes(16 * value for node in nodes for value in node)
        (self.folder / "cmyk").write_bytes(images.tiff(len(nodes), 1, 4, ink, 5))
        entries = (RES / "cmyk_rgb.et").read_bytes()
        expected = (entries[3 * (4913 * c + 289 * m + 17 * y + k):][:3] for c, m, y, k in nodes)
        self.assertEqual(self.made("cmyk", "rgb", "--method", "table"), (2, b"".join(expected)))
        self.assertEqual(self.made("rgb", "cmyk", "--method", "table", "--black", "90"), (5, cmyk_by_formula(RGB, 90)))

    def test_coding_of_lab(self):
        profile, table = ["--dst-profile", str(RES / "lab.icc")], ["--table", self.write_table("rgb_lab")]
        back_profile, back_table = ["--src-profile", str(RES / "lab.icc")], ["--table", self.write_table("lab_rgb")]
        made = {}
        for method, there, back, coding in (("formula", [], [], 8), ("icc", [], [], 9), ("table", [], [], 8),
                                            ("custom", profile, back_profile, 9), ("auto", [], [], 8),
                                            ("custom-table", table, back_table, 8)):
            with self.subTest(method):
                made[method] = self.made("rgb", "lab", "--method", method, *there)
                self.assertEqual(made[method][0], coding)
                rgb = self.made("lab", "rgb", "--method", method, *back)
                self.assertEqual(rgb, self.made("offset-lab", "rgb", "--method", method, *back))
        self.assertEqual(made["auto"], made["formula"])
        self.assertNotEqual(made["icc"][1], made["formula"][1])
        # Without an RGB side it is the formula, whose Lab is signed.
        ink, lab = self.made("lab", "cmyk"), self.made("cmyk", "lab")
        self.assertEqual(lab[0], 8)
        for method, there, back in (("icc", [], []), ("custom", profile, back_profile)):
            with self.subTest(method):
                self.assertEqual(self.made("cmyk", "lab", "--method", method, *there), lab)
                self.assertEqual(self.made("lab", "cmyk", "--method", method, *back), ink)
                self.assertEqual(self.made("offset-lab", "cmyk", "--method", method, *back), ink)
                self.assertEqual(self.made("lab", "lab", "--method", method, *back),
                                 self.made("offset-lab", "lab", "--method", method, *back))

    def test_the_automatic_choice(self):
        for picture, to in (("rgb", "cmyk"), ("cmyk", "rgb")):
            self.assertEqual(self.made(picture, to, "--method", "auto"), self.made(picture, to, "--method", "icc"))

    def test_what_methods_refuse(self):
        picture = images.ppm(W, H, RGB)
        (self.folder / "text").write_text("neither a profile nor a table, only some words in a row, and more of them")
        own, other = str(RES / "srgb.icc"), str(PROFILE)
        custom, custom_table = ["--method", "custom"], ["--method", "custom-table"]
        for reason, arguments in (
                ("--src-profile and --dst-profile need --method custom", ["--method", "icc", "--src-profile", own]),
                ("--src-profile and --dst-profile need --method custom", [*custom_table, "--dst-profile", own]),
                ("--table needs --method custom-table", ["--method", "table", "--table", "text"]),
                ("--table needs --method custom-table", ["--table", "text", "--src-profile", own]),
                ("--method custom needs --src-profile or --dst-profile", custom),
                ("--method custom-table needs --table", custom_table),
                ("--src-profile: a file name is needed", ["--src-profile", ""]),
                ("ERR_PROFILE_NAME (-8): ", ["--src-profile", "nowhere.icc"]),
                ("ERR_PROFILE_NAME (-8): ", ["--table", "nowhere.tif"]),
                ("a name of more than 259 characters", ["--dst-profile", "\u00e4" * 260]),
                ("ERR_PROFILE_NAME (-8): ", ["--dst-profile", "\u00e4" * 130 + "/" + "n" * 128]),
                ("a name of more than 259 characters", ["--table", "t/" * 130]),
                ("ERR_PROFILE_OPEN (-787): ", ["--src-profile", other]),
                ("ERR_PROFILE_OPEN (-787): ", ["--dst-profile", "text"]),
                ("ERR_FILE_READ (-7): ", ["--table", "text"])):
            with self.subTest(arguments):
                self.assert_fails(picture, reason, "--to", "lab", *arguments, out="out.tif")
        for method in ("table", "auto"):
            reason = "there is no table" if method == "table" else "ERR_UNSUPPORTED_METHOD (-786): "
            for to in ("hsv", "bgr"):
                self.assert_fails(picture, reason, "--to", to, "--method", method, out="out")


class Errors(ConvertTest):
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
    harness.main()
