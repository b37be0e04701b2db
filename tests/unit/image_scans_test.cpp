// PostScript files and QuickDraw pictures, read through windows that move, against models of the whole text.
#include <gtest/gtest.h>

#include <map>
#include <random>
#include <sstream>

#include "IccLoad/profile_bytes.h"
#include "reference/postscript_model.h"
#include "support/files.h"
#include "support/image_files.h"

namespace {

using namespace qv_test;

struct ImageScans : testing::Test {
  ImageScans() { Q_InitICCProfile(&record, sizeof record); }
  ~ImageScans() override { Q_FreeICCProfile(&record); }

  int32_t Load(std::string_view content) {
    Q_FreeICCProfile(&record);
    Q_InitICCProfile(&record, sizeof record);
    const auto path = folder.Write("scanned", Text(content));
    return Q_LoadICCProfile(path.string<QWChar>().c_str(), &record, nullptr);
  }
  // Whether the record holds exactly that.
  bool Holds(const Bytes& profile) const {
    return Bytes(record.profileBytes, record.profileBytes + record.profileByteSize) == profile;
  }
  void ExpectAsModelled(const std::string& content) {
    const PostScriptModel model(content);
    ++told[model.status];
    const int32_t status = Load(content);
    ASSERT_TRUE(status == model.status && Holds(model.bytes))
        << status << " for " << model.status << ", " << size_t{record.profileByteSize} << " bytes:\n"
        << content;
  }

  Folder folder{"qv_image_scans"};
  IccProfileRecord record;
  std::map<int32_t, int> told;
};

const std::string kBegin = "%%BeginICCProfile: 1\r\n", kEnd = "%%EndICCProfile\r\n";

std::string HexLines(size_t bytes, const std::string& line_end, size_t per_line = 40) {
  static constexpr char kDigits[] = "0123456789aBcDeF";
  std::string text;
  for (size_t i = 0; i < bytes; ++i) {
    if (i % per_line == 0) text += i == 0 ? "% " : line_end + "% ";
    const uint8_t byte = static_cast<uint8_t>(i * 37 + i / 256);
    text += {kDigits[byte >> 4], kDigits[byte & 15]};
  }
  return text + line_end;
}

TEST_F(ImageScans, PostScriptOfEveryLengthAndPlace) {
  for (const std::string line_end : {"\r\n", "\r", "\r\n ", "%", "\n", " "}) {
    for (size_t bytes = 78; bytes <= 162; ++bytes)
      ASSERT_NO_FATAL_FAILURE(ExpectAsModelled("%!PS\r\n" + kBegin + HexLines(bytes, line_end) + kEnd));
  }
  for (size_t before = 980; before < 1060; ++before) {  // the begin moves over the border, then its data and its end
    const std::string opening = "%!" + std::string(before - 3, before % 3 == 0 ? '%' : 'x') + "\n";
    ASSERT_NO_FATAL_FAILURE(ExpectAsModelled(opening + kBegin + HexLines(100, "\r\n", 9) + kEnd));
    ASSERT_NO_FATAL_FAILURE(ExpectAsModelled("%!\n" + kBegin + std::string(before - 400, ' ') +
                                             HexLines(170, before % 2 != 0 ? "\r\n" : "\r") + kEnd));
  }
  EXPECT_GT(told[SUCCESS], 400);
  const std::string whole = "%!PS\r\n" + kBegin + HexLines(90, "\r\n", 7) + "%%x\r\n" + kEnd;
  for (size_t length = 2; length <= whole.size(); ++length)
    ASSERT_NO_FATAL_FAILURE(ExpectAsModelled(whole.substr(0, length)));
  for (const int32_t status : {ERR_ICC_PROFILE_NOT_FOUND, ERR_ICC_PROFILE_NO_DATA, ERR_ICC_PROFILE_DATA})
    EXPECT_GT(told[status], 0) << status;
  // A round number, in the words of the rule: what fills no group that another byte follows is dropped.
  for (const auto& [bytes, held] : {std::pair{160, 80u}, {161, 160u}}) {
    EXPECT_EQ(Load("%!PS\r\n" + kBegin + HexLines(static_cast<size_t>(bytes), "\r\n") + kEnd), SUCCESS);
    EXPECT_EQ(size_t{record.profileByteSize}, held);
  }
}

TEST_F(ImageScans, PostScriptOfAnyMixture) {
  std::vector<std::string> pieces = {
      kBegin, kEnd, HexLines(90, "\r\n"), HexLines(33, "\r"), HexLines(400, "\r\n% "), std::string(700, '%')};
  std::istringstream others("%|%%|% |\r\n|\r|\n| |\r\n |\r\n%|\r\n% |0|fA|g|3c|%%EndICCProfil|%%BeginICC|\x80\xFF");
  for (std::string piece; std::getline(others, piece, '|');) pieces.push_back(piece);
  std::mt19937 random(7);
  for (int round = 0; round < 600; ++round) {
    std::string content = "%!";
    if (round % 8 != 0) content += kBegin;
    for (size_t i = random() % 25; i > 0; --i) content += pieces[random() % pieces.size()];
    ASSERT_NO_FATAL_FAILURE(ExpectAsModelled(content)) << round;
  }
  for (const int32_t status : {SUCCESS, ERR_ICC_PROFILE_NOT_FOUND, ERR_ICC_PROFILE_DATA}) EXPECT_GT(told[status], 40);
}

std::string Chunk(char type, std::string_view bytes, int longer = 0) {
  const size_t length = bytes.size() + 4 + static_cast<size_t>(longer);
  return std::string{'\xE0', char(length >> 8), char(length), 0, 0, 0, type}.append(bytes);
}

TEST_F(ImageScans, PicturesGiveTheirChunks) {
  const std::string head = std::string(10, '\1') + std::string("\0\x11\x02\xFF", 4) + "\xE0some";
  const std::string file_head = std::string(512, 0) + head;
  const Bytes random = RandomBytes(60000);
  const std::string big(random.begin(), random.end()), end = Chunk(2, "");
  struct Case {
    std::string content;
    int32_t status;
    std::string profile;
  };
  const Case cases[] = {{Chunk(0, "ab") + "noise\xE0noise" + Chunk(1, "cde") + end, SUCCESS, "abcde"},
                        {Chunk(1, "\xE0\xE0") + Chunk(0, big) + Chunk(1, big) + end, SUCCESS, "\xE0\xE0" + big + big},
                        {Chunk(3, "ab") + Chunk(0, "z") + end + Chunk(1, "late"), SUCCESS, "z"},
                        {end, ERR_ICC_PROFILE_NOT_FOUND, ""},
                        {Chunk(0, "") + end, ERR_ICC_PROFILE_NOT_FOUND, ""},
                        {"", ERR_ICC_PROFILE_DATA, ""},
                        {Chunk(0, "ab"), ERR_ICC_PROFILE_DATA, "ab"},
                        {Chunk(0, "ab") + Chunk(1, big, 1), ERR_ICC_PROFILE_DATA, "ab" + big.substr(0, 32767)},
                        {Chunk(0, "ab") + Chunk(1, "", -1) + end, ERR_ICC_PROFILE_DATA, "ab"},
                        {Chunk(0, "ab") + end.substr(0, 6), ERR_ICC_PROFILE_DATA, "ab"}};
  for (const Case& c : cases) {
    // Everything at every place in the window of 32767 bytes, and with the file's header or without.
    for (const size_t before : {0, 1, 32700, 32741, 32742, 32743, 32744, 32745, 32746, 32747, 32748, 32749, 32750}) {
      for (const std::string& opening : {head, file_head}) {
        ASSERT_EQ(Load(opening + std::string(before, '.') + c.content), c.status) << before << " " << &c - cases;
        ASSERT_TRUE(Holds(Text(c.profile))) << before << " " << &c - cases;
      }
    }
  }
}

}  // namespace
