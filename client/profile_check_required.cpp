// Which tags a profile needs: ICC.1:2010, 8.2 to 8.9.
#include <algorithm>
#include <string_view>

#include "profile_check.h"
#include "profile_names.h"
#include "profile_value.h"

namespace client {
namespace {

enum class Suits { kAny, kGrey, kMatrix };

// One of the ways in which a class of profiles describes its colours. The tags are separated by single spaces.
struct Model {
  uint32_t device_class;
  Suits suits;
  const char *tags, *name;
};

constexpr const char* kMatrixTags = "rXYZ gXYZ bXYZ rTRC gTRC bTRC";

// Of a class, the ones that suit the fewest spaces come first.
constexpr Model kModels[] = {
    {Number("scnr"), Suits::kGrey, "kTRC", "a monochrome input device"},
    {Number("scnr"), Suits::kMatrix, kMatrixTags, "an input device by a matrix"},
    {Number("scnr"), Suits::kAny, "A2B0", "an input device by a table"},
    {Number("mntr"), Suits::kGrey, "kTRC", "a monochrome display device"},
    {Number("mntr"), Suits::kMatrix, kMatrixTags, "a display device by a matrix"},
    {Number("mntr"), Suits::kAny, "A2B0 B2A0", "a display device by tables"},
    {Number("prtr"), Suits::kGrey, "kTRC", "a monochrome output device"},
    {Number("prtr"), Suits::kAny, "A2B0 A2B1 A2B2 B2A0 B2A1 B2A2 gamt", "an output device by tables"},
    {Number("link"), Suits::kAny, "A2B0 pseq", "a device link"},
    {Number("spac"), Suits::kAny, "A2B0 B2A0", "a colour space"},
    {Number("abst"), Suits::kAny, "A2B0", "an abstract profile"},
    {Number("nmcl"), Suits::kAny, "ncl2", "a list of named colours"},
};

std::vector<uint32_t> Signatures(std::string_view text) {
  std::vector<uint32_t> signatures;
  for (size_t at = 0; at < text.size(); at += 5) {
    signatures.push_back(Number({text[at], text[at + 1], text[at + 2], text[at + 3], '\0'}));
  }
  return signatures;
}

// A space that is not known, a defect of its own, rules nothing out.
bool SuitsHeader(const Model& model, const IccHeader& header) {
  if (model.device_class != header.deviceClass) return false;
  const int channels = ChannelsOf(header.colorSpace);
  switch (model.suits) {
    case Suits::kGrey: return channels == 0 || header.colorSpace == Number("GRAY");
    case Suits::kMatrix: return (channels == 0 || channels == 3) && header.connectionSpace != Number("Lab ");
    case Suits::kAny: break;
  }
  return true;
}

class Needs {
 public:
  Needs(const std::vector<Tag>& tags, Defects* defects) : tags_(tags), defects_(defects) {}

  bool Has(uint32_t signature) const { return std::ranges::find(tags_, signature, &Tag::signature) != tags_.end(); }
  void Tags(std::string_view signatures, const char* what) const {
    for (const uint32_t signature : Signatures(signatures)) {
      defects_->AddUnless(Has(signature), "no tag ", Quoted(signature), ", which ", what, " needs");
    }
  }
  bool Complete(const Model& model) const {
    return std::ranges::all_of(Signatures(model.tags), [this](uint32_t signature) { return Has(signature); });
  }
  auto Present(const Model& model) const {
    return std::ranges::count_if(Signatures(model.tags), [this](uint32_t signature) { return Has(signature); });
  }

 private:
  const std::vector<Tag>& tags_;
  Defects* defects_;
};

// Any complete model will do. Without one, the profile means the model of which most tags are there.
void CheckModel(const IccHeader& header, const Needs& needs) {
  const Model* meant = nullptr;
  for (const Model& model : kModels) {
    if (!SuitsHeader(model, header)) continue;
    if (needs.Complete(model)) return;
    if (!meant || needs.Present(model) > needs.Present(*meant)) meant = &model;
  }
  if (meant) needs.Tags(meant->tags, meant->name);
}

}  // namespace

void CheckRequiredTags(const IccHeader& header, const std::vector<Tag>& tags, Defects* defects) {
  const Needs needs(tags, defects);
  const bool link = header.deviceClass == Number("link"), output = header.deviceClass == Number("prtr");
  needs.Tags(link ? "desc cprt" : "desc cprt wtpt", "every profile of its class");
  CheckModel(header, needs);
  if (header.version < kFormatFour) return;
  if ((link || output) && IsNamedByItsChannelsOnly(header.colorSpace)) needs.Tags("clrt", "such a colour space");
  if (link && IsNamedByItsChannelsOnly(header.connectionSpace)) needs.Tags("clot", "such an output space");
}

}  // namespace client
