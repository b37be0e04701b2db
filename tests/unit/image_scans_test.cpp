// PostScript files and QuickDraw pictures, read through windows that move: every text with the window's border at many
// places in it.
#include <gtest/gtest.h>

#include "support/files.h"
#include "support/image_files.h"

namespace {

using namespace qv_test;

struct Scanned {
  std::string content;
  int32_t status;
  std::string profile;  // what reaches the record
};

void ExpectBehindAny(const std::vector<std::string>& openings, const std::vector<Scanned>& cases) {
  const Folder folder("qv_image_scans");
  for (const Scanned& c : cases) {
    for (const std::string& opening : openings) {
      IccProfileRecord record;
      Q_InitICCProfile(&record, sizeof record);
      const auto path = folder.Write("scanned", Text(opening + c.content));
      ASSERT_EQ(Q_LoadICCProfile(path.string<QWChar>().c_str(), &record, nullptr), c.status)
          << "case " << &c - cases.data() << " behind " << opening.size() << " bytes";
      ASSERT_EQ(Bytes(record.profileBytes, record.profileBytes + record.profileByteSize), Text(c.profile))
          << "case " << &c - cases.data() << " behind " << opening.size() << " bytes";
      Q_FreeICCProfile(&record);
    }
  }
}

std::string Data(size_t bytes) {
  std::string data;
  for (size_t i = 0; i < bytes; ++i) data += static_cast<char>(i * 37 + 7);
  return data;
}
// The same in hexadecimal digits, in lines.
std::string Hex(size_t bytes, const std::string& line_end = "\r\n", size_t per_line = 7) {
  std::string text;
  for (size_t i = 0; i < bytes; ++i) {
    if (i % per_line == 0) text += i == 0 ? "% " : line_end + "% ";
    const auto byte = static_cast<uint8_t>(i * 37 + 7);
    text += {"0123456789aBcDeF"[byte >> 4], "0123456789aBcDeF"[byte & 15]};
  }
  return text + line_end;
}

TEST(ImageScans, PostScriptGivesWholeGroupsOfBytes) {
  const std::string begin = "%%BeginICCProfile: 1\r\n", end = "%%EndICCProfile\r\n";
  std::vector<std::string> openings = {"%!" + begin};
  for (size_t before = 700; before < 1060; before += 3) {
    openings.push_back("%!" + std::string(before, before % 2 == 0 ? '%' : 'x') + "\n" + begin);
    openings.push_back("%!\n" + begin + std::string(before, ' '));
  }
  // What fills no group of 80 bytes that another byte follows is dropped.
  ExpectBehindAny(openings,
                  {{Hex(161) + end, SUCCESS, Data(160)},
                   {Hex(160) + end, SUCCESS, Data(80)},
                   {Hex(80) + end, ERR_ICC_PROFILE_NOT_FOUND, ""},
                   {end, ERR_ICC_PROFILE_NOT_FOUND, ""},
                   {Hex(170, "\r", 50) + end, SUCCESS, Data(160)},
                   {Hex(170, "\r\n ", 50) + end, SUCCESS, Data(160)},
                   {"% " + Hex(90, "\r\n ", 90).substr(2) + Hex(90).substr(2, 14) + "\r\n" + end, SUCCESS, Data(80)},
                   {Hex(170, "%", 100) + "\r\n" + end, SUCCESS, Data(80)},  // two signs are no line of data
                   {Hex(90, "\n", 90) + end, ERR_ICC_PROFILE_DATA, Data(80)},
                   {Hex(90, " ", 90) + end, ERR_ICC_PROFILE_DATA, Data(80)},
                   {Hex(90, "g", 90) + end, ERR_ICC_PROFILE_DATA, Data(80)},
                   {Hex(90, "f\r\n", 90) + end, SUCCESS, Data(80)},  // half a byte is dropped
                   {Hex(81, "%%x\r\n%x noise") + "%%EndICCProfil" + end, SUCCESS, Data(80)},
                   {Hex(170), ERR_ICC_PROFILE_DATA, Data(160)},
                   {Hex(82, "", 82), ERR_ICC_PROFILE_DATA, Data(80)},
                   {Hex(81, "", 81), ERR_ICC_PROFILE_DATA, ""},
                   {Hex(170) + end.substr(0, 14), ERR_ICC_PROFILE_DATA, Data(160)}});
  ExpectBehindAny({"%!"}, {{begin.substr(0, 17), ERR_ICC_PROFILE_NOT_FOUND, ""},
                           {begin.substr(0, 18), ERR_ICC_PROFILE_NO_DATA, ""},
                           {begin.substr(0, 19), ERR_ICC_PROFILE_DATA, ""},
                           {Hex(170) + end, ERR_ICC_PROFILE_NOT_FOUND, ""}});
}

std::string Chunk(char type, std::string_view bytes, int longer = 0) {
  const size_t length = bytes.size() + 4 + static_cast<size_t>(longer);
  return std::string{'\xE0', char(length >> 8), char(length), 0, 0, 0, type}.append(bytes);
}

TEST(ImageScans, PicturesGiveTheirChunks) {
  const std::string head = std::string(10, '\1') + std::string("\0\x11\x02\xFF", 4) + "\xE0some";
  const Bytes random = RandomBytes(60000);
  const std::string big(random.begin(), random.end()), end = Chunk(2, "");
  std::vector<std::string> openings;  // at every place in the window of 32767 bytes, and with the file's header or not
  for (const size_t before : {0, 1, 32700, 32741, 32742, 32743, 32744, 32745, 32746, 32747, 32748, 32749, 32750})
    for (const size_t header : {0, 512}) openings.push_back(std::string(header, 0) + head + std::string(before, '.'));
  ExpectBehindAny(openings,
                  {{Chunk(0, "ab") + "noise\xE0noise" + Chunk(1, "cde") + end, SUCCESS, "abcde"},
                   {Chunk(1, "\xE0\xE0") + Chunk(0, big) + Chunk(1, big) + end, SUCCESS, "\xE0\xE0" + big + big},
                   {Chunk(3, "ab") + Chunk(0, "z") + end + Chunk(1, "late"), SUCCESS, "z"},
                   {end, ERR_ICC_PROFILE_NOT_FOUND, ""},
                   {Chunk(0, "") + end, ERR_ICC_PROFILE_NOT_FOUND, ""},
                   {"", ERR_ICC_PROFILE_DATA, ""},
                   {Chunk(0, "ab"), ERR_ICC_PROFILE_DATA, "ab"},
                   {Chunk(0, "ab") + Chunk(1, big, 1), ERR_ICC_PROFILE_DATA, "ab" + big.substr(0, 32767)},
                   {Chunk(0, "ab") + Chunk(1, "", -1) + end, ERR_ICC_PROFILE_DATA, "ab"},
                   {Chunk(0, "ab") + end.substr(0, 6), ERR_ICC_PROFILE_DATA, "ab"}});
}

}  // namespace
