#include "reference/models.h"

#include <array>
#include <cmath>
#include <functional>
#include <future>
#include <map>
#include <tuple>

#include "Qvclr15x.h"

namespace qv_test {
namespace {

__extension__ using Quad = __float128;
using Pixel = std::array<uint8_t, 4>;
using Model = std::function<bool(const uint8_t* src, Pixel& dst)>;  // false: refused

uint8_t Clamped(double value) { return static_cast<uint8_t>(std::clamp(value, 0.0, 255.0)); }
uint8_t Clamped(int32_t value) { return static_cast<uint8_t>(std::clamp(value, 0, 255)); }
uint8_t Signed(double value) { return static_cast<uint8_t>(static_cast<int8_t>(std::clamp(value, -128.0, 127.0))); }
// As x86 does it: what does not fit, and what is not a number, is the integer-indefinite value.
int32_t Truncated(double value) {
  return value > INT32_MIN - 1.0 && value < INT32_MAX + 1.0 ? static_cast<int32_t>(value) : INT32_MIN;
}
uint8_t LowByte(double value) { return static_cast<uint8_t>(Truncated(value)); }
uint8_t LowByte(int64_t value) { return static_cast<uint8_t>(value & 0xFF); }

struct Channels {
  int32_t r, g, b, most, least;
  explicit Channels(const uint8_t* rgb)
      : r(rgb[0]), g(rgb[1]), b(rgb[2]), most(std::max({r, g, b})), least(std::min({r, g, b})) {}
};
bool Set(Pixel& dst, int32_t first, int32_t second, int32_t third) {
  dst = {static_cast<uint8_t>(first), static_cast<uint8_t>(second), static_cast<uint8_t>(third)};
  return true;
}

// ---- Hue

// The product divided, to nearest, halves away from zero.
int32_t MulDiv(int32_t a, int32_t b, int32_t divisor) {
  return static_cast<int32_t>(std::lround(static_cast<double>(a * b) / divisor));
}

bool HsvFromRgb(const uint8_t* rgb, Pixel& hsv) {
  const Channels in(rgb);
  const int32_t v = in.most, delta = v - in.least, s = v != 0 ? MulDiv(delta, 255, v) : 0;
  int32_t hue = 0;
  if (s != 0 && in.r == v) {
    hue = MulDiv(in.g - in.b, 60, delta);
  } else if (s != 0) {
    hue = in.g == v ? MulDiv(in.b - in.r, 60, delta) + 120 : MulDiv(in.r - in.g, 60, delta) + 240;
  }
  if (hue < 0) hue += 360;
  return Set(hsv, hue * 255 / 360, s, v);
}

bool HsvToRgb(const uint8_t* hsv, Pixel& rgb) {
  const int32_t s = hsv[1], v = hsv[2], hue = hsv[0] * 360 / 255 % 360, f = hue % 60;
  const int32_t p = v - v * s / 255, q = v - v * s * f / 15300, t = v - v * s * (60 - f) / 15300;
  if (s == 0) return Set(rgb, v, v, v);
  const int32_t sectors[6][3] = {{v, t, p}, {q, v, p}, {p, v, t}, {p, q, v}, {t, p, v}, {v, p, q}};
  const auto& sector = sectors[hue / 60];
  return Set(rgb, sector[0], sector[1], sector[2]);
}

bool HlsFromRgb(const uint8_t* rgb, Pixel& hls) {
  const Channels in(rgb);
  const int32_t sum = in.most + in.least, delta = in.most - in.least, l = (sum * 255 + 255) / 510;
  if (delta == 0) return Set(hls, 0, l, 0);
  const int32_t s = l <= 127 ? (delta * 255 + sum / 2) / sum : (delta * 255 + (510 - sum) / 2) / (510 - sum);
  const auto distance = [&](int32_t channel) { return ((in.most - channel) * 42 + delta / 2) / delta; };
  const int32_t rc = distance(in.r), gc = distance(in.g), bc = distance(in.b);
  int32_t h = in.r == in.most ? bc - gc : in.g == in.most ? rc - bc + 85 : gc - rc + 170;
  if (h < 0) h += 255;
  if (h > 255) h -= 255;
  return Set(hls, h, l, s);
}

bool HlsToRgb(const uint8_t* hls, Pixel& rgb) {  // a grey pixel that has a hue is refused
  const int32_t h = hls[0], l = hls[1], s = hls[2];
  if (s == 0 && h != 0) return false;
  const int32_t m2 = l < 128 ? (l * (255 + s) + 127) / 255 : l + s - (l * s + 127) / 255, m1 = 2 * l - m2;
  const auto value = [&](int32_t hue) {
    if (hue < 0) hue += 255;
    if (hue > 255) hue -= 255;
    if (hue < 42) return m1 + ((m2 - m1) * hue + 21) / 42;
    if (hue < 127) return m2;
    return hue < 170 ? m1 + ((m2 - m1) * (170 - hue) + 21) / 42 : m1;
  };
  const auto component = [&](int32_t hue) { return s == 0 ? l : (value(hue) * 255 + 127) / 255; };
  return Set(rgb, component(h + 85), component(h), component(h - 85));
}

bool HsiFromRgb(const uint8_t* rgb, Pixel& hsi) {
  const Channels in(rgb);
  const int32_t rg = in.r - in.g, rb = in.r - in.b, gb = in.g - in.b, i = (in.r + in.g + in.b) / 3;
  const double quotient = (0.5 * rg + rb) / static_cast<float>(rg * rg + rb * gb);
  const auto theta = static_cast<double>(std::acos(static_cast<long double>(quotient)));
  const uint8_t h = LowByte(theta * 255 / 2);
  return Set(hsi, i, in.b >= in.g ? 255 - h : h, LowByte((1 - static_cast<double>(in.least) / i) * 255));
}

bool HsiToRgb(const uint8_t* hsi, Pixel& rgb) {
  const auto cosine = [](double angle) { return static_cast<double>(std::cos(static_cast<long double>(angle))); };
  static const auto kHues = [&] {  // the sector; cosines of the angle and of its distance from the sector's own
    std::array<std::tuple<int, double, double>, 256> hues{};
    for (size_t i = 0; i < 256; ++i) {
      const double x = static_cast<double>(i) / 255 * 3.1415926535;
      constexpr double kOwn[] = {1.0471975511666667, 3.1415926535, 2.6179938779166667};
      const int sector = x <= 1.0471975511666667 ? 0 : x <= 2.0943951023333334 ? 1 : 2;
      hues[i] = {sector, cosine(x), cosine(kOwn[sector] - x)};
    }
    return hues;
  }();
  const auto [sector, of_hue, divisor] = kHues[hsi[1]];
  const int32_t i = hsi[0];
  const double s = hsi[2] / 255.0;
  // Names as in the first sector; the others are the same, turned by one and by two channels.
  const auto blue = static_cast<int16_t>(i * (1 - s)), red = static_cast<int16_t>(i * (1 + s * of_hue / divisor));
  const auto green = static_cast<int16_t>(3 * i - (blue + red));
  const int32_t r = Clamped(int32_t{red}), g = Clamped(int32_t{green}), b = Clamped(int32_t{blue});
  return sector == 0 ? Set(rgb, r, g, b) : sector == 1 ? Set(rgb, b, r, g) : Set(rgb, g, b, r);
}

// ---- CIE

constexpr double kWhiteX = 95.0166015625, kWhiteZ = 108.76499938964844, kFoot = 0.13793103448275862;

// A root of double precision, mended by one step of Newton's method.
double CubeRoot(double t) {
  const long double near = std::cbrt(t);
  return static_cast<double>(near - (near * near * near - t) / (3 * near * near));
}
bool LabFromRgb(const uint8_t* rgb, Pixel& lab) {
  static const auto kLinear = [] {
    std::array<double, 256> linear{};
    for (size_t i = 0; i < 256; ++i) {
      const long double byte = static_cast<double>(i) / 255;
      linear[i] = static_cast<double>(std::pow(byte, static_cast<long double>(1 / (45 / 100.0))));
    }
    return linear;
  }();
  const auto f = [](double t) { return t > 0.008856 ? CubeRoot(t) : 7.7867 * t + kFoot; };
  const double r = kLinear[rgb[0]], g = kLinear[rgb[1]], b = kLinear[rgb[2]];
  const double fy = f((0.21267099678516388 * r + 0.7151600122451782 * g + 0.0721689984202385 * b) * 100 / 100);
  const double fx = f((0.4124529957771301 * r + 0.3575800061225891 * g + 0.18042300641536713 * b) * 100 / kWhiteX);
  const double fz = f((0.01933399960398674 * r + 0.11919300258159637 * g + 0.9502270221710205 * b) * 100 / kWhiteZ);
  return Set(lab, Truncated(116 * fy - 16) * 255 / 100, LowByte(500 * (fx - fy)), LowByte(200 * (fy - fz)));
}

bool LabToRgb(const uint8_t* lab, Pixel& rgb) {
  // Entry i: the linear value whose 0.45th power times 255 is i + 0.5, above which i + 1 is nearer.
  static const auto kLimits = [] {
    std::array<long double, 255> limits{};
    for (size_t i = 0; i < 255; ++i)
      limits[i] = std::pow((static_cast<long double>(i) + 0.5L) / 255, 1 / static_cast<long double>(0.45));
    return limits;
  }();
  const auto coded = [](double linear) {
    return static_cast<int32_t>(std::ranges::upper_bound(kLimits, static_cast<long double>(linear)) - kLimits.begin());
  };
  const auto inverse = [](double f) { return f * f * f > 0.008856 ? f * f * f : (f - kFoot) / 7.7867; };
  // The middle of the values that are truncated to this one. 255/100 of a whole L* is the byte.
  const auto middle = [](int32_t stored) { return stored + (stored > 0 ? 0.5 : stored < 0 ? -0.5 : 0.0); };
  const int32_t lightness = (lab[0] * 100 + 254) / 255;
  const double fy = ((lightness == 100 ? 100 : middle(lightness)) + 16) / 116;
  const double fx = fy + middle(static_cast<int8_t>(lab[1])) / 500, fz = fy - middle(static_cast<int8_t>(lab[2])) / 200;
  const double x = inverse(fx) * kWhiteX / 100, y = inverse(fy), z = inverse(fz) * kWhiteZ / 100;
  return Set(rgb, coded(3.240478992462158 * x - 1.5371500253677368 * y - 0.49853500723838806 * z),
             coded(-0.9692559838294983 * x + 1.875991940498352 * y + 0.04155600070953369 * z),
             coded(0.05564799904823303 * x - 0.20404300093650818 * y + 1.0573110580444336 * z));
}

// ---- Ink

Model CmykModel(bool to_rgb, int32_t black_param) {
  static const auto kSquares = [] {
    std::array<double, 256> squares{};
    for (size_t i = 0; i < 256; ++i) squares[i] = ExactPower(static_cast<double>(i) / 255, 2);
    return squares;
  }();
  const double base = black_param / 1000.0, fifth_power = ExactPower(base, 5);
  const auto factor = static_cast<int16_t>(static_cast<uint32_t>(Truncated(ExactPower(base, 4) * 256)));
  return [=](const uint8_t* src, Pixel& dst) {
    const Channels in(src);
    const double grey = kSquares[static_cast<size_t>(255 - (in.most - in.least))];
    if (to_rgb) {
      const int32_t weighted = src[3] * Truncated(grey * 256) >> 8;
      const int64_t black = std::min(weighted * factor, 255 - in.most);
      dst = {LowByte(255 - in.r - black), LowByte(255 - in.g - black), LowByte(255 - in.b - black)};
    } else {
      const int32_t smallest = 255 - in.most;
      const int64_t removed = Truncated(smallest / 255.0 * fifth_power * grey * 255);
      dst = {LowByte(255 - in.r - removed), LowByte(255 - in.g - removed), LowByte(255 - in.b - removed),
             LowByte(smallest * base)};
    }
    return true;
  };
}

// The JFIF coding, in 65536ths, of the complements of C, M, Y; then K.
bool YccKFromRgb(const uint8_t* rgb, Pixel& ycck) {
  const Channels in(rgb);
  int64_t paper[3] = {255, 255, 255};  // the complements of C, M, Y
  for (int i = 0; i < 3 && in.most > 0; ++i) paper[i] -= (2 * 255 * (in.most - rgb[i]) + in.most) / (2 * in.most);
  const int64_t r = paper[0], g = paper[1], b = paper[2], half_and_offset = 0x807FFF;
  ycck = {LowByte((19595 * r + 38470 * g + 7471 * b + 32768) >> 16),
          LowByte((-11059 * r - 21709 * g + 32768 * b + half_and_offset) >> 16),
          LowByte((32768 * r + half_and_offset - 27439 * g - 5329 * b) >> 16), static_cast<uint8_t>(255 - in.most)};
  return true;
}

bool YccKToRgb(const uint8_t* ycck, Pixel& rgb) {
  const int32_t y = ycck[0], cb = ycck[1] - 128, cr = ycck[2] - 128, k = ycck[3];
  const auto covered = [k](int32_t paper) {
    const int32_t ink = 255 - Clamped(paper);
    return 255 - (ink - (ink * k + 127) / 255 + k);  // to nearest; 255 is odd: no ties
  };
  return Set(rgb, covered(y + ((91881 * cr + 32768) >> 16)), covered(y + ((-22554 * cb + 32768 - 46802 * cr) >> 16)),
             covered(y + ((116130 * cb + 32768) >> 16)));
}

// ---- Emulation tables

// The mean of two corners. The upper one wraps to the first node, but for a and b of Lab.
Model TableModel(std::string_view kernel, const uint8_t* table) {
  const bool ink = kernel == "EmuCMYKToRGB", from_lab = kernel == "EmuLabToRGB", to_lab = kernel == "EmuRGBToLab";
  const size_t channels = ink ? 4 : 3, step = ink ? 16 : 8, nodes = 256 / step + 1;
  return [=](const uint8_t* src, Pixel& dst) {
    size_t lower = 0, upper = 0;
    for (size_t i = 0; i < channels; ++i) {
      const bool is_signed = from_lab && i > 0;
      const double place = (src[i] ^ (is_signed ? 0x80 : 0)) / static_cast<double>(step);
      auto above = static_cast<size_t>(std::ceil(place));
      if (above + 1 == nodes && !is_signed) above = 0;
      lower = lower * nodes + static_cast<size_t>(place);
      upper = upper * nodes + above;
    }
    for (size_t i = 0; i < 3; ++i) {
      int a = table[3 * lower + i], b = table[3 * upper + i];
      if (to_lab && i > 0) a = static_cast<int8_t>(a), b = static_cast<int8_t>(b);
      dst[i] = static_cast<uint8_t>((a + b) >> 1);
    }
    return true;
  };
}

// ---- Luma and chroma, matrices, and what is only moved or turned round

// How channels besides RGB stand in a byte: all but the first signed, or by their place in a span.
struct Coding {
  bool is_signed = false;
  double below_zero[3] = {}, spans[3] = {};  // no span: as it stands
};
const Coding kPlain, kSigned = {true}, kYiq = {false, {0, 152, 134}, {263, 303, 267}};
const Coding kYuv = {false, {0, 112, 138}, {0, 223, 275}};

struct WeightedSums {
  std::string_view name;
  const Coding& coding;
  double weights[3][3];
};
const WeightedSums kSums[] = {
    {"RGBToBGR", kPlain, {{0, 0, 1}, {0, 1, 0}, {1, 0, 0}}},
    {"BGRToRGB", kPlain, {{0, 0, 1}, {0, 1, 0}, {1, 0, 0}}},
    {"RGBToXYZ", kPlain, {{0.63267, 0.228457, 0.0}, {0.204556, 0.737352, 0.00951424}, {0.126995, 0.0341908, 0.815696}}},
    {"XYZToRGB",
     kPlain,
     {{1.75526, -0.544134, 0.00634681}, {-0.483679, 1.50688, -0.0175762}, {-0.253, 0.0215528, 1.2257}}},
    {"RGBToYCbCr", kSigned, {{0.299, 0.587, 0.114}, {-0.16874, -0.33126, 0.5}, {0.5, -0.41869, -0.08131}}},
    {"YCbCrToRGB", kSigned, {{1, 0, 1.402}, {1, -0.3441363, -0.71413636}, {1, 1.772, 0}}},
    {"RGBToYIQ", kYiq, {{0.299, 0.587, 0.114}, {0.596, -0.274, -0.322}, {0.212, -0.523, 0.311}}},
    {"YIQToRGB", kYiq, {{1, 0.956, 0.621}, {1, -0.272, -0.647}, {1, -1.105, 1.702}}},
    {"RGBToYUV", kYuv, {{0.299, 0.587, 0.114}, {-0.146, -0.288, 0.434}, {0.617, -0.517, -0.1}}}};

bool Convert(const WeightedSums& sums, const uint8_t* src, Pixel& dst) {
  const auto& [is_signed, below_zero, spans] = sums.coding;
  const bool from_rgb = sums.name.starts_with("RGB");
  double in[3];
  for (size_t i = 0; i < 3; ++i) {
    in[i] = is_signed && !from_rgb && i > 0 ? static_cast<int8_t>(src[i]) : src[i];
    if (spans[i] != 0 && !from_rgb) in[i] = Truncated(in[i] / 255 * spans[i] - below_zero[i]);
  }
  for (size_t i = 0; i < 3; ++i) {
    double sum = sums.weights[i][0] * in[0] + sums.weights[i][1] * in[1] + sums.weights[i][2] * in[2];
    if (spans[i] != 0 && from_rgb) sum = (sum + below_zero[i]) / spans[i] * 255 + 0.5;
    dst[i] = is_signed && from_rgb && i > 0 ? Signed(sum) : Clamped(sum);
  }
  return true;
}

bool Complement(const uint8_t* src, Pixel& dst) { return Set(dst, 255 - src[0], 255 - src[1], 255 - src[2]); }

bool YuvToRgb(const uint8_t* yuv, Pixel& rgb) {
  const int32_t y = yuv[0], u = Truncated(yuv[1] / 255.0 * 223) - 112, v = Truncated(yuv[2] / 255.0 * 275) - 138;
  return Set(rgb, Clamped(y + ((37221 * v - 29 * u) >> 15)), Clamped(y + ((-18940 * v - 12943 * u) >> 15)),
             Clamped(y + ((-33 * v + 66883 * u) >> 15)));
}

Model ModelOf(std::string_view kernel, const ModelSettings& settings) {
  static const std::map<std::string_view, Model> kModels = {

      {"RGBToCMY", Complement},       {"CMYToRGB", Complement}, {"RGBToHSV", HsvFromRgb},
      {"HSVToRGB", HsvToRgb},         {"RGBToHLS", HlsFromRgb}, {"HLSToRGB", HlsToRgb},
      {"RGBToHSI", HsiFromRgb},       {"HSIToRGB", HsiToRgb},   {"RGBToLab", LabFromRgb},
      {"LabToRGB", LabToRgb},         {"YUVToRGB", YuvToRgb},   {"RGBToCMYKProfile", YccKFromRgb},
      {"CMYKProfileToRGB", YccKToRgb}};
  for (const WeightedSums& sums : kSums) {
    if (sums.name == kernel) return [&sums](const uint8_t* src, Pixel& dst) { return Convert(sums, src, dst); };
  }
  if (kernel == "RGBToCMYK" || kernel == "CMYKToRGB") return CmykModel(kernel[0] == 'C', settings.black_param);
  if (kernel.starts_with("Emu")) return TableModel(kernel, settings.table);
  return kModels.at(kernel);
}

// ---- Video

Bytes VideoFromRgb(uint32_t space, const Bytes& rgb, size_t width, size_t height) {
  const size_t group = space == CS_YUY2 || space == CS_UYVY ? 2 : 4;
  const bool planar = space == CS_YVU9;
  Bytes video(planar ? width * height / 8 * 9 : width * height * (group == 2 ? 4 : 3) / 2);
  size_t u_sum = 0, v_sum = 0;
  for (size_t i = 0; i < width * height; ++i) {
    const size_t x = i % width, y = i / width;
    const double r = rgb[3 * i], g = rgb[3 * i + 1], b = rgb[3 * i + 2];
    const VideoSamples at = VideoSamplesOf(space, width, height, x, y);
    video[at.y] = LowByte((100 * (b - 0.5) + 516 * (g - 0.5) + 263 * (r - 0.5)) / 1024 + 16);
    if (x % group == 0) u_sum = v_sum = 0;
    u_sum += LowByte((450 * (b - 0.5) - 298 * (g - 0.5) - 152 * (r - 0.5)) / 1024 + 128);
    v_sum += LowByte((-73 * (b - 0.5) - 377 * (g - 0.5) + 450 * (r - 0.5)) / 1024 + 128);
    if (x % group != group - 1) continue;
    const bool blend = planar && y % 4 != 0;
    video[at.u] = static_cast<uint8_t>(blend ? (video[at.u] + u_sum) / 5 : u_sum / group);
    video[at.v] = static_cast<uint8_t>(blend ? (video[at.v] + v_sum) / 5 : v_sum / group);
  }
  return video;
}

Bytes VideoToRgb(uint32_t space, const Bytes& video, size_t width, size_t height) {
  Bytes rgb;
  for (size_t i = 0; i < width * height; ++i) {
    const VideoSamples at = VideoSamplesOf(space, width, height, i % width, i / width);
    const int32_t luma = (video[at.y] - 16) * 1192, u = video[at.u] - 128, v = video[at.v] - 128;
    for (const int32_t value : {luma + 1634 * v, luma - 400 * u - 833 * v, luma + 2066 * u})
      rgb.push_back(Clamped((value + 512) / 1024));
  }
  return rgb;
}

}  // namespace

double ExactPower(double x, uint32_t n) {
  Quad power = 1;
  for (; n > 0; --n) power *= x;
  return static_cast<double>(power);
}

VideoSamples VideoSamplesOf(uint32_t space, size_t width, size_t height, size_t x, size_t y) {
  const size_t pixel = y * width + x, pixels = width * height, pair = pixel / 2 * 4, eight = pixel / 8 * 12;
  if (space == CS_YUY2) return {pair + x % 2 * 2, pair + 1, pair + 3};
  if (space == CS_UYVY) return {pair + 1 + x % 2 * 2, pair, pair + 2};
  if (space == CS_Y41P) {
    constexpr size_t kLuma[] = {1, 3, 5, 7, 8, 9, 10, 11};
    return {eight + kLuma[x % 8], eight + x % 8 / 4 * 4, eight + x % 8 / 4 * 4 + 2};
  }
  const size_t block = y / 4 * (width / 4) + x / 4;  // CS_YVU9
  return {pixel, pixels + pixels / 16 + block, pixels + block};
}

ModelFrame FrameByModel(std::string_view kernel, const Bytes& source, size_t width, size_t height,
                        const ModelSettings& settings) {
  const std::pair<std::string_view, uint32_t> kVideo[] = {
      {"YUY2", CS_YUY2}, {"UYVY", CS_UYVY}, {"Y41P", CS_Y41P}, {"YVU9", CS_YVU9}};
  for (const auto& [name, space] : kVideo) {
    if (kernel.starts_with(name)) return {VideoToRgb(space, source, width, height), {}};
    if (kernel.ends_with(name)) return {VideoFromRgb(space, source, width, height), {}};
  }
  const Model model = ModelOf(kernel, settings);
  const size_t pixels = width * height, src_bytes = source.size() / pixels;
  const size_t dst_bytes = kernel.starts_with("RGBToCMYK") ? 4 : 3;
  ModelFrame made{Bytes(pixels * dst_bytes), {}};
  const auto convert = [&](size_t begin, size_t end) {
    std::vector<size_t> refused;
    for (size_t i = begin; i < end; ++i) {
      Pixel pixel{};
      if (!model(&source[i * src_bytes], pixel)) refused.push_back(i);
      std::copy_n(pixel.begin(), dst_bytes, &made.bytes[i * dst_bytes]);
    }
    return refused;
  };
  auto second_half = std::async(std::launch::async, convert, pixels / 2, pixels);
  made.refused = convert(0, pixels / 2);
  for (const size_t pixel : second_half.get()) made.refused.push_back(pixel);
  return made;
}

}  // namespace qv_test
