#include "profile_names.h"

#include <algorithm>

namespace client {
namespace {

struct Named {
  uint32_t signature;
  const char* name;
};

constexpr Named kClasses[] = {
    {Number("scnr"), "input device"},  {Number("mntr"), "display device"}, {Number("prtr"), "output device"},
    {Number("link"), "device link"},   {Number("spac"), "colour space"},   {Number("abst"), "abstract"},
    {Number("nmcl"), "named colours"},
};

struct NamedSpace : Named {
  int channels;
};

constexpr NamedSpace kSpaces[] = {
    {{Number("XYZ "), "CIE XYZ"}, 3},     {{Number("Lab "), "CIE L*a*b*"}, 3},  {{Number("Luv "), "CIE L*u*v*"}, 3},
    {{Number("YCbr"), "YCbCr"}, 3},       {{Number("Yxy "), "CIE Yxy"}, 3},     {{Number("RGB "), "RGB"}, 3},
    {{Number("GRAY"), "grey"}, 1},        {{Number("HSV "), "HSV"}, 3},         {{Number("HLS "), "HLS"}, 3},
    {{Number("CMYK"), "CMYK"}, 4},        {{Number("CMY "), "CMY"}, 3},         {{Number("2CLR"), "2 colours"}, 2},
    {{Number("3CLR"), "3 colours"}, 3},   {{Number("4CLR"), "4 colours"}, 4},   {{Number("5CLR"), "5 colours"}, 5},
    {{Number("6CLR"), "6 colours"}, 6},   {{Number("7CLR"), "7 colours"}, 7},   {{Number("8CLR"), "8 colours"}, 8},
    {{Number("9CLR"), "9 colours"}, 9},   {{Number("ACLR"), "10 colours"}, 10}, {{Number("BCLR"), "11 colours"}, 11},
    {{Number("CCLR"), "12 colours"}, 12}, {{Number("DCLR"), "13 colours"}, 13}, {{Number("ECLR"), "14 colours"}, 14},
    {{Number("FCLR"), "15 colours"}, 15},
};

constexpr Named kPlatforms[] = {
    {Number("APPL"), "Apple"}, {Number("MSFT"), "Microsoft"}, {Number("SGI "), "Silicon Graphics"},
    {Number("SUNW"), "Sun"},   {Number("TGNT"), "Taligent"},  // up to version 3
};

constexpr Named kIntents[] = {
    {0, "perceptual"}, {1, "media-relative colorimetric"}, {2, "saturation"}, {3, "ICC-absolute colorimetric"}};

constexpr Named kTags[] = {
    {Number("A2B0"), "device to connection space, perceptual"},
    {Number("A2B1"), "device to connection space, colorimetric"},
    {Number("A2B2"), "device to connection space, saturation"},
    {Number("B2A0"), "connection space to device, perceptual"},
    {Number("B2A1"), "connection space to device, colorimetric"},
    {Number("B2A2"), "connection space to device, saturation"},
    {Number("D2B0"), "device to connection space in floats, perceptual"},
    {Number("D2B1"), "device to connection space in floats, relative colorimetric"},
    {Number("D2B2"), "device to connection space in floats, saturation"},
    {Number("D2B3"), "device to connection space in floats, absolute colorimetric"},
    {Number("B2D0"), "connection space to device in floats, perceptual"},
    {Number("B2D1"), "connection space to device in floats, relative colorimetric"},
    {Number("B2D2"), "connection space to device in floats, saturation"},
    {Number("B2D3"), "connection space to device in floats, absolute colorimetric"},
    {Number("rXYZ"), "red matrix column"},
    {Number("gXYZ"), "green matrix column"},
    {Number("bXYZ"), "blue matrix column"},
    {Number("rTRC"), "red tone curve"},
    {Number("gTRC"), "green tone curve"},
    {Number("bTRC"), "blue tone curve"},
    {Number("kTRC"), "grey tone curve"},
    {Number("bkpt"), "media black point"},
    {Number("calt"), "time of calibration"},
    {Number("chad"), "chromatic adaptation"},
    {Number("chrm"), "chromaticity"},
    {Number("cicp"), "coding-independent code points"},
    {Number("ciis"), "colorimetric intent image state"},
    {Number("clot"), "colorants of the output"},
    {Number("clro"), "colorant order"},
    {Number("clrt"), "colorants"},
    {Number("cprt"), "copyright"},
    {Number("crdi"), "names of colour rendering dictionaries"},
    {Number("desc"), "description of the profile"},
    {Number("devs"), "device settings"},
    {Number("dmdd"), "description of the device model"},
    {Number("dmnd"), "description of the device manufacturer"},
    {Number("gamt"), "gamut"},
    {Number("lumi"), "luminance"},
    {Number("meas"), "measurement"},
    {Number("meta"), "metadata"},
    {Number("ncl2"), "named colours"},
    {Number("ncol"), "named colours, older form"},
    {Number("pre0"), "preview, perceptual"},
    {Number("pre1"), "preview, colorimetric"},
    {Number("pre2"), "preview, saturation"},
    {Number("ps2i"), "PostScript level 2 rendering intent"},
    {Number("ps2s"), "PostScript level 2 colour space array"},
    {Number("psd0"), "PostScript level 2 rendering dictionary, perceptual"},
    {Number("psd1"), "PostScript level 2 rendering dictionary, colorimetric"},
    {Number("psd2"), "PostScript level 2 rendering dictionary, saturation"},
    {Number("psd3"), "PostScript level 2 rendering dictionary, absolute"},
    {Number("pseq"), "sequence of profiles"},
    {Number("psid"), "identifiers of the sequence of profiles"},
    {Number("resp"), "output response"},
    {Number("rig0"), "perceptual rendering intent gamut"},
    {Number("rig2"), "saturation rendering intent gamut"},
    {Number("scrd"), "description of the screening"},
    {Number("scrn"), "screening"},
    {Number("targ"), "characterization target"},
    {Number("tech"), "technology"},
    {Number("bfd "), "under-colour removal and black generation"},
    {Number("view"), "viewing conditions"},
    {Number("vued"), "description of the viewing conditions"},
    {Number("wtpt"), "media white point"},
};

constexpr Named kObservers[] = {{0, "unknown"}, {1, "CIE 1931, 2 degrees"}, {2, "CIE 1964, 10 degrees"}};
constexpr Named kGeometries[] = {{0, "unknown"}, {1, "0/45 or 45/0"}, {2, "0/d or d/0"}};
constexpr Named kIlluminants[] = {{0, "unknown"}, {1, "D50"}, {2, "D65"}, {3, "D93"}, {4, "F2"},
                                  {5, "D55"},     {6, "A"},   {7, "E"},   {8, "F8"}};
constexpr Named kPhosphors[] = {
    {0, "unknown"}, {1, "ITU-R BT.709"}, {2, "SMPTE RP145"}, {3, "EBU Tech.3213-E"}, {4, "P22"}};
constexpr Named kMeasurementUnits[] = {
    {Number("StaA"), "Status A"},
    {Number("StaE"), "Status E"},
    {Number("StaI"), "Status I"},
    {Number("StaT"), "Status T"},
    {Number("StaM"), "Status M"},
    {Number("DN  "), "DIN E, no polarizing filter"},
    {Number("DN P"), "DIN E, polarizing filter"},
    {Number("DNN "), "DIN I, no polarizing filter"},
    {Number("DNNP"), "DIN I, polarizing filter"},
};
constexpr Named kValues[] = {
    {Number("fscn"), "film scanner"},
    {Number("dcam"), "digital camera"},
    {Number("rscn"), "reflective scanner"},
    {Number("ijet"), "ink jet printer"},
    {Number("twax"), "thermal wax printer"},
    {Number("epho"), "electrophotographic printer"},
    {Number("esta"), "electrostatic printer"},
    {Number("dsub"), "dye sublimation printer"},
    {Number("rpho"), "photographic paper printer"},
    {Number("fprn"), "film writer"},
    {Number("vidm"), "video monitor"},
    {Number("vidc"), "video camera"},
    {Number("pjtv"), "projection television"},
    {Number("CRT "), "cathode ray tube"},
    {Number("PMD "), "passive matrix display"},
    {Number("AMD "), "active matrix display"},
    {Number("KPCD"), "Photo CD"},
    {Number("imgs"), "photographic image setter"},
    {Number("grav"), "gravure"},
    {Number("offs"), "offset lithography"},
    {Number("silk"), "silkscreen"},
    {Number("flex"), "flexography"},
    {Number("mpfs"), "motion picture film scanner"},
    {Number("mpfr"), "motion picture film recorder"},
    {Number("dmpc"), "digital motion picture camera"},
    {Number("dcpj"), "digital cinema projector"},
    {Number("scoe"), "scene colorimetry estimates"},
    {Number("sape"), "scene appearance estimates"},
    {Number("fpce"), "focal plane colorimetry estimates"},
    {Number("rhoc"), "reflection hardcopy original colorimetry"},
    {Number("rpoc"), "reflection print output colorimetry"},
    {Number("prmg"), "perceptual reference medium gamut"},
};
constexpr Named kFunctions[] = {
    {0, "Y = X^g; g"},
    {1, "Y = (aX + b)^g from -b/a, else 0; g, a, b"},
    {2, "Y = (aX + b)^g + c from -b/a, else c; g, a, b, c"},
    {3, "Y = (aX + b)^g from d, else cX; g, a, b, c, d"},
    {4, "Y = (aX + b)^g + e from d, else cX + f; g, a, b, c, d, e, f"},
};

constexpr Flag kHeaderFlags[] = {
    {1, "not embedded", "embedded"},
    {2, "usable alone", "not to be used without the embedding image"},
};
constexpr Flag kDeviceAttributes[] = {
    {1, "reflective", "transparency"},
    {2, "glossy", "matte"},
    {4, "positive", "negative"},
    {8, "colour", "black and white"},
};

template <typename Entry>
const Entry* Find(std::span<const Entry> entries, uint32_t signature) {
  const auto found = std::ranges::find(entries, signature, &Entry::signature);
  return found == entries.end() ? nullptr : &*found;
}

const char* NameIn(std::span<const Named> entries, uint32_t signature) {
  const Named* found = Find(entries, signature);
  return found ? found->name : nullptr;
}

const NamedSpace* FindSpace(uint32_t signature) { return Find(std::span<const NamedSpace>(kSpaces), signature); }

}  // namespace

const char* ClassName(uint32_t signature) { return NameIn(kClasses, signature); }
const char* PlatformName(uint32_t signature) { return NameIn(kPlatforms, signature); }
const char* IntentName(uint32_t number) { return NameIn(kIntents, number); }
const char* TagName(uint32_t signature) { return NameIn(kTags, signature); }
const char* ObserverName(uint32_t number) { return NameIn(kObservers, number); }
const char* GeometryName(uint32_t number) { return NameIn(kGeometries, number); }
const char* IlluminantName(uint32_t number) { return NameIn(kIlluminants, number); }
const char* PhosphorName(uint32_t number) { return NameIn(kPhosphors, number); }
const char* MeasurementUnitName(uint32_t signature) { return NameIn(kMeasurementUnits, signature); }
const char* ValueName(uint32_t signature) { return NameIn(kValues, signature); }
const char* FunctionFormula(uint32_t number) { return NameIn(kFunctions, number); }

const char* SpaceName(uint32_t signature) {
  const NamedSpace* space = FindSpace(signature);
  return space ? space->name : nullptr;
}

int ChannelsOf(uint32_t signature) {
  const NamedSpace* space = FindSpace(signature);
  return space ? space->channels : 0;
}

bool IsNamedByItsChannelsOnly(uint32_t space) {
  return SpaceName(space) && (space & 0xFFFFFF) == (Number("2CLR") & 0xFFFFFF);
}

std::span<const Flag> HeaderFlags() { return kHeaderFlags; }
std::span<const Flag> DeviceAttributes() { return kDeviceAttributes; }

}  // namespace client
