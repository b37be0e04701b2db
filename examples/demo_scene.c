/* The picture of scripts/demo: a lake in the evening above a chart of 24 colours and a grey ramp, as a binary PPM.
 * Usage: demo_scene OUT.ppm */
#include <math.h>
#include <stdint.h>
#include <stdio.h>

enum { kWidth = 1200, kHeight = 800, kSceneHeight = 640 };

typedef struct {
  double r, g, b;
} Colour; /* linear light, 1 = white */

static Colour Mix(Colour a, Colour b, double t) {
  t = t < 0 ? 0 : t > 1 ? 1 : t;
  return (Colour){a.r + (b.r - a.r) * t, a.g + (b.g - a.g) * t, a.b + (b.b - a.b) * t};
}

static Colour Scaled(Colour a, double by) { return (Colour){a.r * by, a.g * by, a.b * by}; }

static Colour Added(Colour a, Colour b) { return (Colour){a.r + b.r, a.g + b.g, a.b + b.b}; }

static double Smooth(double from, double to, double x) {
  const double t = fmin(1, fmax(0, (x - from) / (to - from)));
  return t * t * (3 - 2 * t);
}

/* The same number in 0..1 for the same grid point, on every machine. */
static double Hash(int32_t x, int32_t y) {
  uint32_t h = (uint32_t)x * 0x9E3779B1u ^ (uint32_t)y * 0x85EBCA77u;
  h = (h ^ h >> 15) * 0x2C1B3C6Du;
  h = (h ^ h >> 12) * 0x297A2D39u;
  return (double)(h ^ h >> 15) / 4294967295.0;
}

static double Noise(double x, double y) {
  const int32_t i = (int32_t)floor(x), j = (int32_t)floor(y);
  const double s = Smooth(0, 1, x - i), t = Smooth(0, 1, y - j);
  const double top = Hash(i, j) + (Hash(i + 1, j) - Hash(i, j)) * s;
  const double bottom = Hash(i, j + 1) + (Hash(i + 1, j + 1) - Hash(i, j + 1)) * s;
  return top + (bottom - top) * t;
}

/* Noise with details of every size, 0..1. */
static double Clouds(double x, double y, int octaves) {
  double sum = 0, weight = 0.5, all = 0;
  for (; octaves > 0; --octaves, weight /= 2) {
    sum += weight * Noise(x, y);
    all += weight;
    x = x * 2 + 17.3;
    y = y * 2 + 5.9;
  }
  return sum / all;
}

/* Places: x runs from 0 to 1.875 and y from 0 to 1 down the scene. */
static const double kSunX = 1.28, kSunY = 0.36, kShore = 0.63;

static Colour Sky(double x, double y) {
  const Colour zenith = {0.045, 0.14, 0.42}, blue = {0.20, 0.40, 0.72}, warm = {1.0, 0.62, 0.30},
               sun = {1.0, 0.80, 0.45};
  Colour sky = Mix(Mix(zenith, blue, y / 0.36), warm, Smooth(0.22, 0.60, y) * 0.9);

  const double distance = hypot(x - kSunX, (y - kSunY) * 1.05);
  sky = Added(sky, Scaled(sun, 0.55 * exp(-distance * 4.5) + 1.2 * exp(-distance * 26)));
  sky = Added(sky, Scaled((Colour){1.6, 1.4, 1.0}, 1 - Smooth(0.040, 0.047, distance)));

  const double stretch = 3.2 + 9 * y; /* clouds far away look flatter */
  const double cloud = Clouds(x * 2.1 + 3.1, y * stretch + 1.7, 6);
  const double cover = Smooth(0.50, 0.78, cloud) * Smooth(0.62, 0.40, y);
  const Colour shade = {0.30, 0.27, 0.36}, lit = {1.0, 0.78, 0.60};
  const double light = exp(-distance * 1.6) + 0.45 * Smooth(0.72, 0.52, cloud);
  return Mix(sky, Mix(shade, lit, light), cover * 0.85);
}

/* Three ridges, the farthest first; 1 when the place is on one of them. */
static int Hills(double x, double y, Colour* colour) {
  static const struct {
    double top, height, detail, seed;
    Colour dark, bright;
  } kRidges[] = {
      {0.60, 0.26, 2.2, 7.7, {0.060, 0.075, 0.115}, {0.120, 0.135, 0.170}},
      {0.62, 0.20, 3.1, 2.3, {0.022, 0.048, 0.042}, {0.060, 0.105, 0.070}},
      {0.645, 0.115, 5.0, 9.1, {0.010, 0.026, 0.010}, {0.060, 0.095, 0.022}},
  };
  int hit = 0;
  for (int i = 0; i < 3; ++i) {
    const double trees = i == 0 ? 0 : 0.007 * i * Clouds(x * 75 * i, kRidges[i].seed, 2);
    const double edge =
        kRidges[i].top - kRidges[i].height * (Clouds(x * kRidges[i].detail, kRidges[i].seed, 5) - 0.18) - trees;
    if (y < edge) continue;
    const double wood = Clouds(x * 60 + i * 9, y * 110, 4) + 0.8 * (Clouds(x * 7, y * 16 + i, 3) - 0.5);
    const double haze =
        Smooth(edge, edge + 0.22, y) * (0.62 - 0.2 * i) + 0.30 * exp(-fabs(x - kSunX) * 2.5) * (2 - i) / 2;
    *colour =
        Mix(Mix(kRidges[i].dark, kRidges[i].bright, Smooth(0.25, 0.85, wood)), (Colour){0.72, 0.50, 0.36}, haze * 0.55);
    hit = 1;
  }
  return hit;
}

static Colour Land(double x, double y) {
  Colour colour;
  return Hills(x, y, &colour) ? colour : Sky(x, y);
}

static Colour Lake(double x, double y) {
  const double depth = (y - kShore) / (1 - kShore);
  const double wave = Clouds(x * (26 - 17 * depth), 40 * log(1.03 + 4 * depth), 4) - 0.5;
  Colour mirrored =
      Land(x + wave * 0.05 * (0.3 + depth), fmax(0, 2 * kShore - y * 1.02 + 0.012 + wave * 0.16 * (0.15 + depth)));
  mirrored = Mix(Scaled(mirrored, 0.80), (Colour){0.012, 0.085, 0.110}, 0.20 + 0.45 * depth);
  const double path = exp(-pow((x - kSunX) / (0.035 + 0.12 * depth), 2));
  const double spark = Smooth(0.60, 0.80, Clouds(x * (95 - 60 * depth), 150 * log(1.03 + 4 * depth), 2));
  return Added(mirrored, Scaled((Colour){1.0, 0.62, 0.24}, path * (0.10 + 1.1 * spark)));
}

/* Grass with poppies and dandelions; one flower at most in a cell of the grid. */
static Colour Meadow(double x, double y, double edge) {
  const double blade = Clouds(x * 170 + 6 * Noise(x * 12, y * 9), y * 26, 3);
  const double patch = Clouds(x * 5, y * 9, 3);
  Colour grass =
      Mix((Colour){0.012, 0.045, 0.006}, (Colour){0.17, 0.30, 0.035}, Smooth(0.25, 0.85, blade * 0.75 + patch * 0.3));
  grass = Scaled(grass, 0.35 + 0.65 * Smooth(edge - 0.01, edge + 0.10, y) + 0.3 * patch);

  const double size = 0.013 + 0.020 * Smooth(edge, 1.0, y);
  for (int layer = 0; layer < 2; ++layer) {
    const double cell = layer == 0 ? 0.026 : 0.038;
    const int32_t i = (int32_t)floor(x / cell), j = (int32_t)floor(y / cell);
    const double kind = Hash(i + 311 * layer, j + 77);
    if (kind > 0.34) continue;
    const double dx = x / cell - i - 0.3 - 0.4 * Hash(i, j + 900), dy = y / cell - j - 0.3 - 0.4 * Hash(i + 900, j);
    const double radius = hypot(dx, dy * 1.4) * cell, petals = 1 + 0.25 * sin(5 * atan2(dy, dx) + 9 * kind);
    if (radius > 0.42 * size * petals) continue;
    const Colour petal = kind < 0.17   ? (Colour){0.78, 0.018, 0.012}
                         : kind < 0.28 ? (Colour){0.95, 0.66, 0.02}
                                       : (Colour){0.42, 0.07, 0.50};
    grass = Mix(Scaled(petal, 0.25), petal, Smooth(0, 0.30 * size, radius) * (0.75 + 0.25 * Smooth(0.2, -0.3, dy)));
  }
  return grass;
}

static Colour Scene(int column, int line) {
  const double x = (column + 0.5) / kSceneHeight, y = (line + 0.5) / kSceneHeight;
  const double meadow = 0.99 - 0.20 * exp(-x * 1.3) - 0.05 * Clouds(x * 3, 4.4, 3) - 0.012 * Clouds(x * 90, 1.0, 2);
  const double shore = kShore + 0.006 * (Noise(x * 9, 2.0) - 0.5);
  const Colour colour = y > meadow ? Meadow(x, y, meadow) : y > shore ? Lake(x, y) : Land(x, y);
  return Scaled(colour, 1 - 0.22 * pow(hypot(x - 0.94, y - 0.5) / 1.06, 3)); /* a lens darkens the corners */
}

/* Linear light to a stored sample; the shoulder keeps the sun from becoming a flat disc. */
static uint8_t Stored(double light, double grain) {
  light = light > 0.7 ? 0.7 + 0.3 * (1 - exp((0.7 - light) / 0.3)) : fmax(0, light);
  const double encoded = light <= 0.0031308 ? 12.92 * light : 1.055 * pow(light, 1 / 2.4) - 0.055;
  return (uint8_t)fmin(255, fmax(0, 255 * encoded + grain + 0.5));
}

static void ScenePixel(int column, int line, uint8_t rgb[3]) {
  const Colour colour = Scene(column, line);
  const double grain = 5 * (Hash(column, line) + Hash(column + 5000, line) - 1);
  rgb[0] = Stored(colour.r, grain);
  rgb[1] = Stored(colour.g, grain);
  rgb[2] = Stored(colour.b, grain);
}

/* Two lines of twelve patches (pure hues, then colours of everyday things) above a grey ramp. */
static void ChartPixel(int column, int line, uint8_t rgb[3]) {
  static const uint32_t kPatches[2][12] = {{0xFF0000, 0xFF8000, 0xFFFF00, 0x80FF00, 0x00FF00, 0x00FF80, 0x00FFFF,
                                            0x0080FF, 0x0000FF, 0x8000FF, 0xFF00FF, 0xFF0080},
                                           {0xF2D3BC, 0xD39A78, 0x6E4A36, 0xA23B30, 0xC9822B, 0xE3CF57, 0x6B7F3A,
                                            0x2F5D3A, 0x4E9C9A, 0x6F94C4, 0x3A4A86, 0x7B4A7E}};
  enum { kPatchWidth = kWidth / 12, kPatchHeight = 52, kGap = 4 };
  const int row = line / kPatchHeight;
  const int in_gap =
      line % kPatchHeight < kGap || column % kPatchWidth < kGap / 2 || column % kPatchWidth >= kPatchWidth - kGap / 2;
  uint32_t patch = 0x202020;
  if (row < 2 && !in_gap) patch = kPatches[row][column / kPatchWidth];
  if (row == 2 && line % kPatchHeight >= kGap) patch = 0x010101u * (uint32_t)(column * 255 / (kWidth - 1));
  rgb[0] = (uint8_t)(patch >> 16);
  rgb[1] = (uint8_t)(patch >> 8);
  rgb[2] = (uint8_t)patch;
}

int main(int argc, char** argv) {
  FILE* file = argc == 2 ? fopen(argv[1], "wb") : NULL;
  if (!file) {
    fprintf(stderr, "usage: demo_scene OUT.ppm\n");
    return 1;
  }
  fprintf(file, "P6\n%d %d\n255\n", kWidth, kHeight);
  for (int line = 0; line < kHeight; ++line) {
    for (int column = 0; column < kWidth; ++column) {
      uint8_t rgb[3];
      if (line < kSceneHeight)
        ScenePixel(column, line, rgb);
      else
        ChartPixel(column, line - kSceneHeight, rgb);
      fwrite(rgb, 1, sizeof rgb, file);
    }
  }
  const int failed = ferror(file);
  return fclose(file) != 0 || failed;
}
