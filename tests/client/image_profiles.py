"""Tests of profiles in image files by the command-line client: image_profiles.py QVCLR_COMMAND..."""

import pathlib
import sys

sys.dont_write_bytecode = True  # the source tree stays clean
import harness  # noqa: E402
import images  # noqa: E402

RES = pathlib.Path(__file__).parents[2] / "res"
PIXELS = images.pixels(7 * 5 * 3)
HEAD, SCAN = b"\xff\xd8\xff\xe0\0\4ab", b"\xff\xda\0\2some scan\xff\xd9"


def segment(number, total, content):
    body = b"ICC_PROFILE\0" + bytes([number, total]) + content
    return b"\xff\xe2" + (len(body) + 2).to_bytes(2, "big") + body


class ImageProfiles(harness.ClientTest):
    def profile(self, *arguments, status=0, says=""):
        run = self.run_client("profile", *arguments)
        self.assertEqual(run.returncode, status, run)
        self.assertIn(says, run.stdout + run.stderr)

    def write(self, name, content):
        (self.folder / name).write_bytes(content)
        return content

    def read(self, name):
        return (self.folder / name).read_bytes()

    def test_in_and_out(self):
        profile = (RES / "cmyk.icc").read_bytes()
        for name, before in (("a.tif", images.tiff(7, 5, 3, PIXELS, 2)), ("a.jpg", HEAD + SCAN)):
            self.write(name, before)
            self.profile("embed", name, str(RES / "cmyk.icc"), "--check", says="725436 bytes, read back")
            self.assertIn(profile[:1000], self.read(name))
            self.profile("extract", name, "out.icc", "--check", says="725436 bytes, as many as the profile tells")
            self.assertEqual(self.read("out.icc"), profile)
            self.profile("strip", name, "--check")
            self.profile("extract", name, "none.icc", status=2, says="ERR_ICC_PROFILE_NOT_FOUND (-812)")
            self.assertFalse((self.folder / "none.icc").exists())
        self.assertEqual(self.read("a.jpg"), before, "byte for byte")

    def test_damage_is_told(self):
        profile = (RES / "srgb.icc").read_bytes()
        half = len(profile) // 2
        first, second = profile[:half], profile[half:]
        for chunks, remark in ((((1, 2, first), (2, 2, second)), None),
                               (((2, 2, second), (1, 2, first)), "its segments are out of order"),
                               (((1, 2, first),), "1 of its 2 segments are there"),
                               (((1, 1, profile[:-5]),), "truncated by 5 bytes"),
                               (((1, 1, profile + b"xy"),), "2 bytes follow the profile")):
            with self.subTest(remark):
                self.write("a.jpg", HEAD + b"".join(segment(*chunk) for chunk in chunks) + SCAN)
                self.profile("extract", "a.jpg", "out.icc", "--check", status=2 if remark else 0, says=remark or "")
                self.profile("extract", "a.jpg", "out.icc")
                self.assertEqual(self.read("out.icc"), b"".join(chunk[2] for chunk in chunks))
        for image, reason in (("nowhere.jpg", "nowhere.jpg"), ("out.icc", "ERR_ICC_FORMAT_NOT_SUPPORTED")):
            self.profile("embed", image, str(RES / "srgb.icc"), status=2, says=reason)
        self.write("broken.icc", profile[:-1])
        self.profile("embed", "a.jpg", "broken.icc", status=2, says="its size field is not its size")


if __name__ == "__main__":
    harness.main()
