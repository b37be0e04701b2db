"""Tests of qvclr profile: profiles.py QVCLR_COMMAND..."""

import hashlib
import json
import pathlib
import random
import struct
import sys

sys.dont_write_bytecode = True  # the source tree stays clean
import harness  # noqa: E402

RES = pathlib.Path(__file__).parents[2] / "res"
D50 = (0xF6D6, 0x10000, 0xD32D)
MATRIX = "rXYZ gXYZ bXYZ rTRC gTRC bTRC"
TABLES = "A2B0 A2B1 A2B2 B2A0 B2A1 B2A2 gamt"
COMMON = "desc cprt wtpt "
FIRST_TAG = 132 + 12 * 9  # where the data of a matrix profile begins


def with_id(profile):
    """The profile with its ID; flags, intent and the ID itself count as zero."""
    blank = bytearray(profile)
    for begin, end in ((44, 48), (64, 68), (84, 100)):
        blank[begin:end] = bytes(end - begin)
    return profile[:84] + hashlib.md5(blank).digest() + profile[100:]


def make(kind="mntr", space="RGB ", pcs="XYZ ", tags=COMMON + MATRIX, version=0x04200000):
    """A sound profile whose tags have ten bytes and two of padding each."""
    tags = tags.split()
    data = 132 + 12 * len(tags)
    body = struct.pack(">I", len(tags))
    for i, tag in enumerate(tags):
        body += struct.pack(">4sII", tag.encode(), data + 12 * i, 10)
    body += b"data\0\0\0\0ab\0\0" * len(tags)
    head = struct.pack(">I4xI4s4s4s6H4s4s", 128 + len(body), version, kind.encode(), space.encode(), pcs.encode(),
                       2024, 2, 29, 23, 59, 59, b"acsp", b"APPL")
    return (head + bytes(68 - len(head)) + struct.pack(">3I", *D50)).ljust(128, b"\0") + body


def patched(profile, *patches):
    """With (offset, bytes) or (offset, 32-bit number) put in."""
    for at, new in patches:
        new = new if isinstance(new, bytes) else struct.pack(">I", new)
        profile = profile[:at] + new + profile[at + len(new):]
    return profile


def entry(tag, field=0):
    """Where the signature, offset or size (field 0, 1, 2) of the n-th tag stands."""
    return 132 + 12 * tag + 4 * field


class ProfileTest(harness.ClientTest):
    def profile(self, command, content, *arguments):
        (self.folder / "in.icc").write_bytes(content)
        return self.run_client("profile", command, "in.icc", *arguments)

    def defects(self, content):
        run = self.profile("check", content, "--json")
        lines = json.loads(run.stdout)["defects"]
        self.assertEqual((run.returncode, run.stderr), (1 if lines else 0, ""))
        return lines


class Check(ProfileTest):
    def assert_defects(self, content, *expected):
        """As many lines as expected, each with the words expected."""
        lines = self.defects(content)
        self.assertEqual(len(lines), len(expected), lines)
        for line, words in zip(lines, expected):
            self.assertIn(words, line)

    def test_sound_profiles(self):
        for content in (*(path.read_bytes() for path in sorted(RES.glob("*.icc"))), make(), with_id(make()),
                        patched(with_id(make()), (44, 0x00010003), (64, 2)),  # neither is part of the ID
                        patched(make(), (84, b"older"), (8, 0x02400000)),     # reserved then, and not judged
                        patched(make(), (40, 0), (68, D50[0]), (76, D50[2] - 1), (56, 1 << 28)),
                        patched(make(), (entry(4, 1), FIRST_TAG + 36), (entry(3, 1), FIRST_TAG + 48))):
            with self.subTest(content[:20]):
                self.assert_defects(content)
        run = self.profile("check", make())
        self.assertEqual((run.returncode, run.stdout), (0, "no defects\n"))

    def test_header(self):
        size = len(make())
        for expected, *patches in (
                (f"tells {size - 4} bytes, the file has {size}", (0, size - 4)),
                ("unknown version 0x05000000", (8, 5 << 24)), ("unknown version 0x042A0000", (8, 0x042A0000)),
                ("unknown version 0x04200001", (8, 0x04200001)), ("unknown class 'Mntr'", (12, b"Mntr")),
                ("unknown colour space 0x00474220", (16, b"\0GB ")),
                ("connection space 'Luv '", (20, b"Luv ")), ("date", (24, b"\x07\xe7")), ("date", (26, b"\0\x0d")),
                ("date", (28, b"\0\0")), ("date", (30, b"\0\x18")), ("no 'acsp' but 'ACSP'", (36, b"ACSP")),
                ("unknown platform '*nix'", (40, b"*nix")), ("reserved flags are set: 0x00000004", (44, 4)),
                ("attributes are set: 0x0000000000000010", (60, 16)), ("unknown rendering intent 4", (64, 4)),
                ("not D50", (68, D50[0] + 7)), ("not D50", (68, 0x8000F6D6)), ("not D50", (72, 0)),
                ("reserved bytes of the header", (127, b"\1")), ("not the MD5", (99, b"\1"))):
            with self.subTest(expected, patches=patches):
                self.assert_defects(patched(make(), *patches), expected)
        self.assert_defects(patched(with_id(make()), (len(make()) - 3, b"x")), "not the MD5")

    def test_tag_table(self):
        end = len(make())
        for expected, *patches in (
                (["table of 20 tags needs 372"], (128, 20)), (["table of 4294967295 tags"], (128, 0xFFFFFFFF)),
                (["tag 9 'bTRC' ends at 349, outside"], (entry(8, 2), 13)),
                (["tag 9 'bTRC' ends at 8589934587, outside", "14 bytes at 334 belong to no tag"],
                 (entry(8, 1), 0xFFFFFFFC), (entry(8, 2), 0xFFFFFFFF)),
                (["tag 4 'rXYZ' begins at 274", "less than any type", "10 bytes at 278 belong"],
                 (entry(3, 1), 274), (entry(3, 2), 4)),
                (["tag 1 'desc' lies in the header", "12 bytes at 240 belong"], (entry(0, 1), 128)),
                (["tag 2 'cprt' overlaps tag 1 'desc'"], (entry(0, 2), 13)),
                (["4 bytes at 344 belong to no tag"], (entry(8, 2), 8)),
                (["tag 2 'cprt' overlaps tag 3 'wtpt'"], (entry(2, 1), 252), (entry(1, 2), 24)),
                (["tag 9 'bTRC' has 0 bytes", f"14 bytes at {end - 14} belong"], (entry(8, 2), 0)),
                (["tag 2 'desc' is there already as tag 1", "no tag 'cprt'"], (entry(1), b"desc")),
                (["padding at 250 is not zero"], (251, b"x")), (["padding at 346 is not zero"], (346, b"x")),
                (["tag 2 'cprt' has reserved bytes"], (FIRST_TAG + 12 + 7, b"\1"))):
            with self.subTest(expected):
                self.assert_defects(patched(make(), *patches), *expected)
        self.assert_defects(patched(make() + bytes(4), (0, end + 4)), "6 bytes at 346 belong to no tag")
        self.assert_defects(patched(make()[:-1], (0, end - 1)), "is no multiple of 4")
        old = make(version=0x02400000)
        self.assert_defects(patched(old, (251, b"x"), (entry(0, 2), 8)))
        self.assert_defects(patched(old[:-1], (0, end - 1)))
        self.assert_defects(make(tags=""), "no tags")

    def test_required_tags(self):
        for kind, space, pcs, required in (
                ("scnr", "GRAY", "XYZ ", COMMON + "kTRC"), ("scnr", "RGB ", "XYZ ", COMMON + MATRIX),
                ("scnr", "CMYK", "Lab ", COMMON + "A2B0"), ("mntr", "GRAY", "Lab ", COMMON + "kTRC"),
                ("mntr", "RGB ", "XYZ ", COMMON + MATRIX), ("mntr", "RGB ", "Lab ", COMMON + "A2B0 B2A0"),
                ("prtr", "GRAY", "XYZ ", COMMON + "kTRC"), ("prtr", "CMYK", "Lab ", COMMON + TABLES),
                ("prtr", "6CLR", "Lab ", COMMON + TABLES + " clrt"), ("spac", "HSV ", "Lab ", COMMON + "A2B0 B2A0"),
                ("link", "RGB ", "CMYK", "desc cprt A2B0 pseq"), ("abst", "Lab ", "Lab ", COMMON + "A2B0"),
                ("link", "2CLR", "FCLR", "desc cprt A2B0 pseq clrt clot"), ("nmcl", "CMYK", "Lab ", COMMON + "ncl2")):
            with self.subTest(kind, space=space, pcs=pcs):
                self.assert_defects(make(kind, space, pcs, required))
                # The description of a profile without any other tag tells nothing of a model.
                missing = self.defects(make(kind, space, pcs, "desc"))
                self.assertEqual(sorted(line.split("'")[1] for line in missing), sorted(required.split()[1:]))
        self.assert_defects(make("scnr", tags=COMMON + "A2B0"))
        self.assert_defects(make(tags=COMMON + MATRIX.replace("gTRC ", "")), "no tag 'gTRC'")
        self.assert_defects(make(tags=COMMON + "B2A0"), "no tag 'A2B0'")
        self.assert_defects(make("prtr", "6CLR", "Lab ", COMMON + TABLES, version=0x02000000))


class Dump(ProfileTest):
    def test_unusual_fields(self):
        content = with_id(patched(make(), (4, b'a"\\ '), (12, b"ABCD"), (44, 0x80000003), (48, b"\1\2\x1b["),
                                  (56, 0x80000000), (60, 5), (64, 9), (68, 0xFFFF8000),
                                  (entry(0), 1), (entry(1, 1), 0xFFFFFFFE), (entry(2, 2), 3)))
        run = self.profile("dump", content, "--json")
        view = json.loads(run.stdout)
        expected = {"cmm": 'a"\\ ', "version": "4.2.0", "class": {"signature": "ABCD", "name": "unknown"},
                    "date": "2024-02-29 23:59:59", "platform": {"signature": "APPL", "name": "Apple"},
                    "flags": {"bits": "0x80000003",
                              "meaning": ["embedded", "not to be used without the embedding image"]},
                    "manufacturer": "0x01021B5B", "model": None,
                    "attributes": {"bits": "0x8000000000000005",
                                   "meaning": ["transparency", "glossy", "negative", "colour"]},
                    "intent": {"number": 9, "name": "unknown"}, "illuminant": [-0.5, 1, 0.82491],
                    "id": content[84:100].hex().upper()}
        self.assertEqual({key: view["header"][key] for key in expected}, expected)
        first, second, third = view["tags"][:3]
        self.assertEqual([first["signature"], first["name"], second["type"], third["type"]],
                         ["0x00000001", None, None, None])
        self.assertEqual([second["offset"], second["size"], third["size"]], [0xFFFFFFFE, 10, 3])

        text = self.profile("dump", content).stdout
        self.assertTrue(all(32 <= ord(c) < 127 or c == "\n" for c in text))
        for line in (r"illuminant\s+-0.50000, 1.00000, 0.82491", r"class\s+'ABCD' unknown", r"model\s+none",
                     r"'cprt'\s+none\s+4294967294\s+10\s+copyright"):
            self.assertRegex(text, rf"(?m)^{line}$")


class Unreadable(ProfileTest):
    def test_files_that_are_no_profiles(self):
        for command in ("check", "dump"):
            for content in (b"", make()[:131]):
                run = self.profile(command, content)
                self.assertEqual((run.returncode, run.stderr), (2, "qvclr: in.icc: too short for an ICC profile\n"))
            for arguments in (["nowhere.icc"], ["."], []):
                run = self.run_client("profile", command, *arguments)
                self.assertEqual(run.returncode, 2)
                self.assertRegex(run.stderr, r"\Aqvclr: [^\n]+\n\Z")
        for patches in ([(128, 20)], [(0, 131)]):
            self.assertEqual(self.profile("dump", patched(make(), *patches)).returncode, 2)

    def test_absurdly_many_tags(self):
        content = patched(make(), (128, 100001)) + bytes(12 * 100001)
        content = patched(content, (0, len(content)))
        lines = self.defects(content)
        self.assertEqual(len(lines), 1001)
        self.assertRegex(lines[-1], r"^and [1-9]\d{5} more$")
        run = self.profile("dump", content)
        self.assertEqual((run.returncode, run.stderr), (2, "qvclr: in.icc: too many tags to show: 100001\n"))

    def test_damaged_profiles(self):
        chance = random.Random(1)
        sound = (RES / "srgb.icc").read_bytes()
        for number in range(12):
            content = bytearray(sound[:chance.randrange(100, len(sound))] if number % 2 else sound)
            for _ in range(chance.randrange(1, 40)):
                content[chance.randrange(min(len(content), 300))] = chance.choice((0, 1, 0x7F, 0x80, 0xFF))
            for command in ("check", "dump"):
                run = self.profile(command, bytes(content))
                self.assertIn(run.returncode, (0, 1, 2))
                self.assertRegex(run.stderr, r"\Aqvclr: [^\n]+\n\Z" if run.returncode == 2 else r"\A\Z")


if __name__ == "__main__":
    harness.main()
