"""Tests of tags in qvclr profile, shown and edited: profile_tags.py QVCLR_COMMAND..."""

import json
import struct
import sys

sys.dont_write_bytecode = True  # the source tree stays clean
import harness  # noqa: E402
import profiles  # noqa: E402


def fixed(*numbers):
    return b"".join(struct.pack(">i", round(number * 65536)) for number in numbers)


def u16(*numbers):
    return struct.pack(f">{len(numbers)}H", *numbers)


def u32(*numbers):
    return struct.pack(f">{len(numbers)}I", *numbers)


def tag(kind, *parts):
    return kind.encode().ljust(4) + bytes(4) + b"".join(parts)


def mluc(*texts):
    """Of (language and country, bytes in UTF-16)."""
    table, strings = u32(len(texts), 12), b""
    for code, text in texts:
        table += code + u32(len(text), 16 + 12 * len(texts) + len(strings))
        strings += text
    return tag("mluc", table, strings)


def build(*tags, header=profiles.make()[:128]):
    """A profile of (signature, bytes); several that have the same bytes share them."""
    at = 132 + 12 * len(tags)
    places, table, data = {}, u32(len(tags)), b""
    for signature, content in tags:
        if content not in places:
            places[content] = at + len(data)
            data += content + bytes(-len(content) % 4)
        table += signature.encode().ljust(4) + u32(places[content], len(content))
    return u32(at + len(data)) + header[4:] + table + data


def parsed(profile):
    """Signatures and bytes of the tags."""
    count, = struct.unpack_from(">I", profile, 128)
    entries = (struct.unpack_from(">4sII", profile, profiles.entry(i)) for i in range(count))
    return [(signature.decode(), profile[at:at + size]) for signature, at, size in entries]


GAMMA = tag("curv", u32(1), u16(0x1CD))
SAMPLED = tag("curv", u32(3), u16(0, 0x8000, 0xFFFF))
PARA = tag("para", u16(1, 0), fixed(2, 0.5, -0.25))
GAMMA_VALUE = {"kind": "gamma", "gamma": 1.80078}
SAMPLED_VALUE = {"kind": "sampled", "points": [0, 32768, 65535]}
PARA_VALUE = {"kind": "parametric", "function": 1, "formula": "Y = (aX + b)^g from -b/a, else 0; g, a, b",
              "parameters": [2, 0.5, -0.25]}
DESC = tag("desc", u32(5), b"Older", bytes(78))
LUT_HEAD = bytes([1, 2, 2, 0]) + fixed(1, 0, 0, 0, 1, 0, 0, 0, -1)
LUT_VALUE = {"inputChannels": 1, "outputChannels": 2, "gridPoints": 2, "matrix": [1, 0, 0, 0, 1, 0, 0, 0, -1]}
RAMP = bytes(range(256))
PARTS_AT = (32, 44, 92, 108, 144)
LAB_HEADER = profiles.make(pcs="Lab ")[:128]

# Tag, and what it says.
SAMPLES = (
    (tag("curv", u32(0)), {"kind": "identity"}), (GAMMA, GAMMA_VALUE), (SAMPLED, SAMPLED_VALUE), (PARA, PARA_VALUE),
    (tag("XYZ ", fixed(0.5, 1, -1, 0, 2, 0.25)), {"values": [[0.5, 1, -1], [0, 2, 0.25]]}),
    (tag("sf32", fixed(-1.5, 3)), {"values": [-1.5, 3]}), (tag("uf32", u32(0xC0000000)), {"values": [49152]}),
    (tag("ui08", b"\0\xff"), {"values": [0, 255]}), (tag("ui16", u16(1, 65535)), {"values": [1, 65535]}),
    (tag("ui32", u32(0xFFFFFFFF)), {"values": [0xFFFFFFFF]}),
    (tag("ui64", b"\xff" * 8), {"values": [0xFFFFFFFFFFFFFFFF]}),
    (tag("sig ", b"dcam"), {"signature": "dcam", "name": "digital camera"}),
    (tag("sig ", b"\1abc"), {"signature": "0x01616263", "name": "unknown"}),
    (tag("dtim", u16(2024, 2, 29, 23, 59, 1)), {"date": "2024-02-29 23:59:01"}),
    (tag("text", b"\xa9 \x1b\x9b\n\0more"), {"text": "\u00a9 \x1b\x9b\n"}),
    (tag("text", "\u00a9".encode()), {"text": "\u00a9"}),
    (tag("data", u32(0), b"abc\0"), {"kind": "ASCII", "text": "abc"}),
    (tag("data", u32(1), b"\0\xff"), {"kind": "binary", "bytes": 2, "begin": "00FF"}),
    (mluc((b"enUS", b"\0A\xd8\x3d\xde\0"), (b"de\0\0", b"\xd8\0\0B")),
     {"texts": [{"language": "en-US", "text": "A\U0001f600"}, {"language": "de-0x0000", "text": "\ufffdB"}]}),
    (tag("view", fixed(1, 2, 3, 4, 5, 6), u32(1)),
     {"illuminant": [1, 2, 3], "surround": [4, 5, 6], "illuminantType": {"number": 1, "name": "D50"}}),
    (tag("meas", u32(2), fixed(0, 0.5, 1), u32(1, 0x10000, 9)),
     {"observer": {"number": 2, "name": "CIE 1964, 10 degrees"}, "backing": [0, 0.5, 1],
      "geometry": {"number": 1, "name": "0/45 or 45/0"}, "flare": 1,
      "illuminantType": {"number": 9, "name": "unknown"}}),
    (tag("chrm", u16(2, 4), u32(0x8000, 0x4000, 0x2000, 0xFFFFFFFF)),
     {"colorants": {"number": 4, "name": "P22"}, "xy": [[0.5, 0.25], [0.125, 65535.99998]]}),
    (tag("clro", u32(3), b"\2\0\1"), {"order": [2, 0, 1]}),
    (tag("clrt", u32(1), b"Cyan".ljust(32, b"\0"), u16(0xFFFF, 0x8080, 0)),
     {"colorants": [{"name": "Cyan", "Lab": [100, 0, -128]}]}),
    (tag("ncl2", u32(0x80000001, 1, 2), b"p".ljust(32, b"\0"), b"s" * 32, b"Red".ljust(32, b"\0"),
         u16(0xFF00, 0x8000, 0x8100, 1, 65535)),
     {"vendorFlags": "0x80000001", "prefix": "p", "suffix": "s" * 32, "deviceChannels": 2,
      "colours": [{"name": "Red", "Lab": [100, 0, 1], "device": [1, 65535]}]}),
    (tag("pseq", u32(1), b"APPLm\0\0\0", u32(0, 1), b"CRT ", mluc((b"enUS", b"\0M")), DESC),
     {"profiles": [{"manufacturer": "APPL", "model": "0x6D000000",
                    "attributes": {"bits": "0x0000000000000001",
                                   "meaning": ["transparency", "glossy", "positive", "colour"]},
                    "technology": {"signature": "CRT ", "name": "cathode ray tube"},
                    "manufacturerText": {"texts": [{"language": "en-US", "text": "M"}]},
                    "modelText": {"text": "Older"}}]}),
    (tag("rcs2", u16(1, 1), u32(16), b"StaT", u32(2), fixed(0.5, 1, 2), u16(0, 0), fixed(0), u16(65535, 0),
         fixed(-2)),
     {"channels": 1, "units": [{"unit": {"signature": "StaT", "name": "Status T"},
                                "channels": [{"maximum": [0.5, 1, 2], "responses": [{"code": 0, "value": 0},
                                                                                   {"code": 65535, "value": -2}]}]}]}),
    (tag("mft2", LUT_HEAD, u16(2, 3), u16(0, 65535, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10)),
     LUT_VALUE | {"inputEntries": 2, "outputEntries": 3, "inputTables": [0, 65535], "clut": [1, 2, 3, 4],
                  "outputTables": [5, 6, 7, 8, 9, 10]}),
    (tag("mft1", LUT_HEAD, RAMP, b"\1\2\3\4", RAMP, RAMP[::-1]),
     LUT_VALUE | {"inputEntries": 256, "outputEntries": 256, "inputTables": [*RAMP], "clut": [1, 2, 3, 4],
                  "outputTables": [*RAMP, *RAMP[::-1]]}),
    (tag("mft1", LUT_HEAD, b"\2\0\1\0", b"\0\xff", b"\1\2\3\4", b"\5\6"),  # as the library writes it
     LUT_VALUE | {"inputEntries": 2, "outputEntries": 1, "inputTables": [0, 255], "clut": [1, 2, 3, 4],
                  "outputTables": [5, 6]}),
    (tag("mAB ", bytes([2, 1, 0, 0]), u32(*PARTS_AT), tag("curv", u32(0)), fixed(*range(12)), GAMMA, bytes(2),
         bytes([2, 3]) + bytes(14) + b"\2\0\0\0", u16(1, 2, 3, 4, 5, 6), bytes(4), SAMPLED, bytes(2), PARA),
     {"inputChannels": 2, "outputChannels": 1, "aCurves": [SAMPLED_VALUE, PARA_VALUE],
      "clut": {"gridPoints": [2, 3], "precision": 2, "elements": [1, 2, 3, 4, 5, 6]}, "mCurves": [GAMMA_VALUE],
      "matrix": [*range(12)], "bCurves": [{"kind": "identity"}]}),
    (tag("mBA ", bytes([2, 1, 0, 0]), u32(32, 0, 0, 0, 0), GAMMA, bytes(2), SAMPLED, bytes(2)),
     {"inputChannels": 2, "outputChannels": 1, "aCurves": None, "clut": None, "mCurves": None, "matrix": None,
      "bCurves": [GAMMA_VALUE, SAMPLED_VALUE]}),
    (DESC, {"text": "Older"}), (tag("desc", u32(200), b"short"), {"bytes": 9, "begin": "000000C873686F7274"}),
    (tag("Own ", bytes(range(20))), {"bytes": 20, "begin": "000102030405060708090A0B0C0D0E0F"}),
    (tag("para", u16(5, 0)),
     {"status": "ERR_ICC_TAG_NOT_FOUND (-37): there is no such tag, or a grey pixel has a hue"}),
    (tag("curv", u32(0x10000000)), {"status": "ERR_ICC_INVALID_PROFILE (-1153): not a valid profile"}),
)


class Values(profiles.ProfileTest):
    def values(self, content, *options):
        run = self.profile("dump", content, "--json", *options)
        self.assertEqual((run.returncode, run.stderr), (0, ""))
        return [row["value"] for row in json.loads(run.stdout)["tags"]]

    def test_every_type(self):
        # They all have the same signature: each is read by its place.
        content = build(*(("same", sample) for sample, _ in SAMPLES), header=LAB_HEADER)
        for (sample, expected), value in zip(SAMPLES, self.values(content), strict=True):
            with self.subTest(sample[:4]):
                self.assertEqual(value, expected)
        text = self.profile("dump", content).stdout
        self.assertNotIn("\x1b", text)
        for line in (r"  text  . \\u001b\\u009b\\u000a", r"  texts", r"    1  en-US A\U0001f600",
                     r"  clut +gridPoints 2, 3; precision 2; elements 1, 2, 3, 4, 5, 6",
                     r"  inputTables +count 256; first 0, 1, 2, 3; last 252, 253, 254, 255"):
            self.assertRegex(text, rf"(?m)^{line}$")

    def test_colours_of_other_encodings_and_long_lists(self):
        colorant = tag("clrt", u32(1), bytes(32), u16(0x8000, 0x10000 - 1, 0))
        old = profiles.make(pcs="Lab ", version=0x02400000)[:128]
        for header, expected in ((profiles.make()[:128], {"XYZ": [1, 1.99997, 0]}),
                                 (old, {"Lab": [50.19608, 127.99609, -128]})):
            colour = self.values(build(("clrt", colorant), header=header))[0]["colorants"][0]
            self.assertEqual(colour, {"name": ""} | expected)
        content = build(("kTRC", tag("curv", u32(1025), u16(*range(1025)))))
        self.assertEqual(self.values(content)[0]["points"], {"count": 1025, "first": [0, 1, 2, 3],
                                                             "last": [1021, 1022, 1023, 1024]})
        self.assertEqual(self.values(content, "--all")[0]["points"], [*range(1025)])


class Edit(profiles.ProfileTest):
    def edit(self, content, command, *arguments):
        """The tags of the profile that becomes of the content."""
        run = self.profile(command, content, *arguments)
        self.assertEqual((run.returncode, run.stdout, run.stderr), (0, "", ""))
        return parsed((self.folder / "in.icc").read_bytes())

    def test_values_from_words(self):
        text = "\u00c4\U0001f600".encode("utf-16-be")
        for kind, words, expected in (
                ("XYZ", "1.5 -0.5 0.1", u32(0x18000, 0xFFFF8000, 0x199A)), ("uf32", "65535.5", u32(0xFFFF8000)),
                ("sf32", "-32768 32767.99998", u32(0x80000000, 0x7FFFFFFF)), ("ui08", "0 255", b"\0\xff"),
                ("ui16", "258", u16(258)), ("ui32", "4294967295", b"\xff" * 4),
                ("ui64", "18446744073709551615", b"\xff" * 8), ("curv", "identity", u32(0)),
                ("curv", "1.8", u32(1) + u16(461)), ("curv", "0 7 65535", u32(3) + u16(0, 7, 65535)),
                ("para", "1 2 0.5 -0.25", PARA[8:]), ("sig", "ab", b"ab  "), ("text", "Hello", b"Hello\0"),
                ("text", "[a,b]", b"[a,b]\0"), ("text", [""], b"\0"), ("data", "abc", u32(0) + b"abc\0"),
                ("dtim", ["2024-02-29 23:59:01"], u16(2024, 2, 29, 23, 59, 1)),
                ("mluc", "X", mluc((b"enUS", b"\0X"))[8:]),
                ("mluc", "de-AT=\u00c4\U0001f600 fr-FR=",
                 u32(2, 12) + b"deAT" + u32(6, 40) + b"frFR" + u32(0, 48) + text + bytes(2))):
            with self.subTest(kind, words=words):
                words = words.split() if isinstance(words, str) else words
                tags = self.edit(build(("priv", GAMMA)), "set", "priv", "--type", kind, *words)
                self.assertEqual(tags, [("priv", tag(kind, expected))])

    def test_values_from_files(self):
        (self.folder / "content").write_bytes(b"\0\1\2")
        for kind, expected in (("data", u32(1)), ("Own", b"")):
            tags = self.edit(profiles.make(), "set", "0x01020304", "--type", kind, "--from", "content")
            self.assertEqual(tags[-1], ("\1\2\3\4", tag(kind, expected, b"\0\1\2")))

    def test_a_profile_made_from_nothing(self):
        words = ("--class mntr --space RGB --pcs XYZ --intent relative --platform APPL --creator me --flags 1 "
                 "--attributes 8").split()
        self.succeeds("profile", "new", "in.icc", "--date", "2024-02-29 23:59:59", *words)
        profile = (self.folder / "in.icc").read_bytes()
        view = json.loads(self.profile("dump", profile, "--json").stdout)["header"]
        self.assertEqual([view["size"], view["date"], view["intent"]["number"], view["creator"],
                          view["platform"]["name"], view["flags"]["bits"], view["attributes"]["bits"][-2:]],
                         [132, "2024-02-29 23:59:59", 1, "me  ", "Apple", "0x00000001", "08"])
        curve = "para 3 2.4 0.947867 0.052133 0.077399 0.04045"
        for line in ("desc mluc Made", "cprt mluc None", "wtpt XYZ 0.9642 1 0.8249",
                     "rXYZ XYZ 0.43604 0.22249 0.01392", "gXYZ XYZ 0.38512 0.7169 0.09706",
                     "bXYZ XYZ 0.14305 0.06061 0.71393", f"rTRC {curve}", f"gTRC {curve}", f"bTRC {curve}"):
            signature, kind, *words = line.split()
            self.edit((self.folder / "in.icc").read_bytes(), "set", signature, "--type", kind, *words)
        self.assertEqual(self.defects((self.folder / "in.icc").read_bytes()), [])

    def test_others_stay_as_they_are(self):
        odd = tag("text", b"odd\0\0")  # 13 bytes and three of padding
        sound = [(name, tag("data", u32(1), name.encode())) for name in (profiles.COMMON + profiles.MATRIX).split()]
        shared = build(*sound[:-3], ("rTRC", GAMMA), ("odd", odd), ("gTRC", GAMMA), ("bTRC", GAMMA), ("last", SAMPLED))
        whole = profiles.with_id(shared)
        for gone, command, *arguments in (
                ("rTRC", "delete"), ("odd ", "delete"), ("bTRC", "delete"), ("last", "delete"),
                ("gTRC", "set", "--type", "curv", "2.2"), ("odd ", "set", "--type", "text", "x"),
                ("new ", "set", "--type", "text", "x")):
            with self.subTest(gone, command=command):
                tags = self.edit(whole, command, gone.strip(), *arguments)
                rest = [entry for entry in parsed(whole) if entry[0] != gone]
                self.assertEqual(tags[:len(rest)], rest)
                self.assertEqual(len(tags) - len(rest), command == "set")
                edited = (self.folder / "in.icc").read_bytes()
                self.assertEqual(edited[84:100], bytes(16))
                self.assertEqual([line for line in self.defects(edited) if "needs" not in line], [])
        self.assertLess(len((self.folder / "in.icc").read_bytes()), len(whole) + 40)  # shared bytes are still shared
        packed = profiles.patched(build(("odd", odd), ("desc", GAMMA)), (profiles.entry(1, 1), 156 + len(odd)))
        self.assertEqual(self.edit(packed, "delete", "odd"), parsed(packed)[1:])

    def test_the_only_tag_and_several_of_a_name(self):
        self.assertEqual(self.edit(build(("desc", GAMMA)), "delete", "desc"), [])
        empty = (self.folder / "in.icc").read_bytes()
        self.assertEqual(len(empty), 132)
        self.assertEqual(self.edit(empty, "set", "desc", "--type", "curv", "identity"), [("desc", tag("curv", u32(0)))])
        twice = build(("desc", GAMMA), ("cprt", PARA), ("desc", SAMPLED))
        self.assertEqual(self.edit(twice, "set", "desc", "--type", "sig", "abcd"),
                         [("cprt", PARA), ("desc", tag("sig ", b"abcd"))])
        ragged = build(("desc", tag("sig ", b"abcd")))[:-3]  # what is added begins at a multiple of four again
        ragged = profiles.patched(ragged, (0, len(ragged)), (profiles.entry(0, 2), 9))
        self.edit(ragged, "set", "cprt", "--type", "curv", "identity")
        self.assertEqual(profiles.entry(2) + 12, int.from_bytes((self.folder / "in.icc").read_bytes()[148:152], "big"))

    def test_copies(self):
        old = profiles.make(version=0x02000000)[:128]
        for sample, _ in SAMPLES:
            (self.folder / "from.icc").write_bytes(build(("desc", PARA), ("same", sample + b"\t"), header=old))
            (self.folder / "to.icc").write_bytes(build(("same", GAMMA), ("rTRC", GAMMA)))
            self.succeeds("profile", "copy-tag", "from.icc", "to.icc", "same")
            self.assertEqual(parsed((self.folder / "to.icc").read_bytes()), [("rTRC", GAMMA), ("same", sample + b"\t")])
        run = self.run_client("profile", "copy-tag", "to.icc", "to.icc", "rTRC")
        self.assertEqual([name for name, _ in parsed((self.folder / "to.icc").read_bytes())], ["same", "rTRC"])

    def test_failures_leave_the_profile(self):
        sound = build(("desc", GAMMA), ("wild", SAMPLED))
        outside = profiles.patched(sound, (profiles.entry(1, 1), 10000))
        (self.folder / "other.icc").write_bytes(outside)
        for reason, content, line in (
                ("older than version 4", (profiles.RES / "srgb.icc").read_bytes(), "delete desc"),
                ("the size field tells", sound + bytes(4), "delete desc"),
                ("ERR_ICC_INVALID", outside, "delete wild"), ("no tag 'cprt'", sound, "delete cprt"),
                ("no signature", sound, "delete desc5"), ("no signature", sound, "set 0x1 --type abcde x"),
                ("cannot be made", sound, "set desc --type mft2 1"),
                ("other values", sound, "set desc --type XYZ 1 1"), ("other values", sound, "set desc --type text"),
                ("groups of 3", sound, "set desc --type XYZ 1 2 3 4"),
                ("out of range", sound, "set desc --type sf32 32768"),
                ("out of range", sound, "set desc --type uf32 -1"),
                ("no number", sound, "set desc --type XYZ 1 nan 1"),
                ("no whole number", sound, "set desc --type ui08 256"),
                ("no function 5", sound, "set desc --type para 5"),
                ("1 parameters, not 2", sound, "set desc --type para 0 1 1"),
                ("its language", sound, "set desc --type mluc en-US=A B"),
                ("not ASCII", sound, "set desc --type text \u00c4"), ("no date", sound, "set desc --type dtim 2024"),
                ("not decoded", sound, "set desc --type curv --from in.icc"),
                ("cannot be read", sound, "set desc --type data --from nowhere"),
                ("exclude", sound, "set desc --type data x --from in.icc"),
                ("--pcs is required", sound, "new --class mntr --space RGB"),
                ("ERR_INV", sound, "new --class mntr --space RGB --pcs CMYK"),
                ("from 0 to 3", sound, "new --class mntr --space RGB --pcs XYZ --intent 4")):
            with self.subTest(line):
                command, *arguments = line.split()
                run = self.profile(command, content, *arguments)
                self.assertEqual((run.returncode, (self.folder / "in.icc").read_bytes()), (2, content), run)
                self.assertRegex(run.stderr, r"\Aqvclr: [^\n]+\n\Z")
                self.assertIn(reason, run.stderr)
        run = self.run_client("profile", "copy-tag", "other.icc", "in.icc", "wild")
        self.assertIn("is damaged", run.stderr)
        self.assertEqual({path.name for path in self.folder.iterdir()}, {"in.icc", "other.icc"})


if __name__ == "__main__":
    harness.main()
