#include "names.h"

#include <charconv>

#include "failure.h"

namespace client {
namespace {

constexpr const char* kAnySize = "any";
constexpr const char* kEvenWidth = "even width";

constexpr Space kSpaces[] = {
    {"rgb", CS_RGB, 24, "R G B", kAnySize},
    {"yuv", CS_YUV, 24, "Y U V", kAnySize},
    {"cmyk", CS_CMYK, 32, "C M Y K", kAnySize},
    {"hsv", CS_HSV, 24, "H S V", kAnySize},
    {"hls", CS_HLS, 24, "H L S", kAnySize},
    {"yiq", CS_YIQ, 24, "Y I Q", kAnySize},
    {"cmy", CS_CMY, 24, "C M Y", kAnySize},
    {"lab", CS_LAB, 24, "L a b; a and b are signed bytes, by profiles (methods 2 and 4) they are stored as value + 128",
     kAnySize},
    {"xyz", CS_XYZ, 24, "X Y Z", kAnySize},
    {"yuy2", CS_YUY2, 16, "Y0 U Y1 V", kEvenWidth},
    {"yvu9", CS_YVU9, 9, "planes Y, V, U; a V and a U to 4 x 4 pixels", "multiples of 4"},
    {"cmyk-profile", CS_CMYK_PROFILE, 32, "Y Cb Cr K; YCbCr of the complements of C M Y", kAnySize},
    {"bgr", CS_BGR, 24, "B G R", kAnySize},
    {"y41p", CS_Y41P, 12, "U0 Y0 V0 Y1 U4 Y2 V4 Y3 Y4 Y5 Y6 Y7", "width of 8"},
    {"uyvy", CS_UYVY, 16, "U Y0 V Y1", kEvenWidth},
    {"ycbcr", CS_YCBCR, 24, "Y Cb Cr; Cb and Cr are signed bytes", kAnySize},
    {"hsi", CS_HSI, 24, "I H S", kAnySize},
};

constexpr Method kMethods[] = {
    {"formula", METHOD_FORMULA},           {"icc", METHOD_ICC},
    {"custom", METHOD_CUSTOM_ICC},         {"table", METHOD_TABLE},
    {"custom-table", METHOD_CUSTOM_TABLE}, {"auto", METHOD_AUTOMATIC},
};

struct WhitePoint {
  const char* name;
  uint32_t id;
};

constexpr WhitePoint kWhitePoints[] = {{"d50", 50}, {"d55", 55}, {"d65", 65}, {"d75", 75}, {"9300", 93}};

struct StatusName {
  int32_t status;
  const char* name;
  const char* meaning;
};

constexpr StatusName kStatuses[] = {
    {SUCCESS, "SUCCESS", "done"},
    {FAILURE, "FAILURE", "a step failed"},
    {ERR_FAILURE, "ERR_FAILURE", "failed"},
    {ERR_NO_MEMORY, "ERR_NO_MEMORY", "not enough memory"},
    {ERR_FILE_WRITE, "ERR_FILE_WRITE", "a file could not be written"},
    {ERR_FILE_READ, "ERR_FILE_READ", "a file could not be read"},
    {ERR_PROFILE_NAME, "ERR_PROFILE_NAME", "there is no file of that name, or the name is too long"},
    {ERR_FILE_ACCESS, "ERR_FILE_ACCESS", "an image file could not be opened for reading"},
    {ERR_INV_PARAMETER, "ERR_INV_PARAMETER", "an argument is not valid"},
    {ERR_FILE_OPEN, "ERR_FILE_OPEN", "a file could not be opened or created"},
    {ERR_ICC_TAG_NOT_FOUND, "ERR_ICC_TAG_NOT_FOUND", "there is no such tag, or a grey pixel has a hue"},
    {ERR_BAD_POINTER, "ERR_BAD_POINTER", "a buffer is too small"},
    {ERR_INV_CONVERTER, "ERR_INV_CONVERTER", "not a converter"},
    {ERR_INPLACE_PADDING, "ERR_INPLACE_PADDING", "the paddings forbid a conversion in place"},
    {ERR_UNSUPPORTED_COLORSPACE, "ERR_UNSUPPORTED_COLORSPACE", "the method does not convert these colour spaces"},
    {ERR_UNSUPPORTED_METHOD, "ERR_UNSUPPORTED_METHOD", "the method cannot be used"},
    {ERR_PROFILE_OPEN, "ERR_PROFILE_OPEN", "a profile could not be opened or does not fit its side"},
    {ERR_INV_STRUCT_SIZE, "ERR_INV_STRUCT_SIZE", "a record has the wrong size"},
    {ERR_INV_WIDTH_ALIGNMENT, "ERR_INV_WIDTH_ALIGNMENT", "the width is no multiple of the pixel group (2 or 8)"},
    {ERR_INV_YUV9_SIZE, "ERR_INV_YUV9_SIZE", "the width or the height is no multiple of 4"},
    {ERR_ICC_PROFILE_NOT_FOUND, "ERR_ICC_PROFILE_NOT_FOUND", "the image holds no profile"},
    {ERR_ICC_PROFILE_DATA, "ERR_ICC_PROFILE_DATA", "the embedded profile is damaged"},
    {ERR_ICC_PROFILE_NO_DATA, "ERR_ICC_PROFILE_NO_DATA", "the embedded profile is empty"},
    {ERR_ICC_PRIVATE_TAG, "ERR_ICC_PRIVATE_TAG", "done, but the tag is a private one"},
    {ERR_ICC_UNKNOWN_TAG_TYPE, "ERR_ICC_UNKNOWN_TAG_TYPE", "done, but the type of the tag is not known"},
    {ERR_ICC_PRIVATE_TAG_UNKNOWN_TYPE, "ERR_ICC_PRIVATE_TAG_UNKNOWN_TYPE", "done, but a private tag of unknown type"},
    {ERR_ICC_INVALID_PROFILE, "ERR_ICC_INVALID_PROFILE", "not a valid profile"},
    {ERR_ICC_FORMAT_NOT_SUPPORTED, "ERR_ICC_FORMAT_NOT_SUPPORTED", "the image format carries no profile"},
};

std::string NamesIn(const auto& table) {
  std::string names;
  for (const auto& row : table) names += (names.empty() ? "" : ", ") + std::string(row.name);
  return names;
}

template <typename Number>
bool ParseNumber(const std::string& text, Number& number) {
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && stop == end;
}

const auto& Find(const auto& table, const std::string& name_or_number, const char* what) {
  uint32_t number = 0;
  const bool is_number = ParseNumber(name_or_number, number);
  for (const auto& row : table) {
    if (name_or_number == row.name || (is_number && number == row.id)) return row;
  }
  Fail("unknown ", what, " '", name_or_number, "' (known: ", NamesIn(table), ")");
}

}  // namespace

const Space& SpaceOf(uint32_t id) { return Find(kSpaces, std::to_string(id), "colour space"); }

const Space& ParseSpace(const std::string& name_or_number) { return Find(kSpaces, name_or_number, "colour space"); }

const Method& ParseMethod(const std::string& name_or_number) { return Find(kMethods, name_or_number, "method"); }

WhitePointParams ParseWhitePoint(const std::string& name_or_xy) {
  WhitePointParams white{};
  if (const size_t comma = name_or_xy.find(','); comma != std::string::npos) {
    double x = 0, y = 0;
    if (!ParseNumber(name_or_xy.substr(0, comma), x) || !ParseNumber(name_or_xy.substr(comma + 1), y)) {
      Fail("'", name_or_xy, "' is no chromaticity X,Y");
    }
    white.x = x;
    white.y = y;
  } else {
    white.nWhitePoint = Find(kWhitePoints, name_or_xy, "white point").id;
  }
  return white;
}

std::span<const Space> AllSpaces() { return kSpaces; }

std::string SpaceNames() { return NamesIn(kSpaces); }
std::string MethodNames() { return NamesIn(kMethods); }

std::string StatusText(int32_t status) {
  for (const StatusName& row : kStatuses) {
    if (row.status == status) return std::string(row.name) + " (" + std::to_string(status) + "): " + row.meaning;
  }
  return "status " + std::to_string(status);
}

}  // namespace client
