// The settings dialog without its window.
#include <gtest/gtest.h>

#include <limits>

#include "base/faults.h"
#include "base/memory.h"
#include "qvclr/dialog/trial.h"
#include "support/converters.h"
#include "support/files.h"

namespace {

using namespace qv;

Draft DraftOf(uint32_t src, uint32_t dst, uint32_t method) {
  static const WhitePointParams given_white{};
  static const CmykParams given_cmyk{};
  static const LabParams given_lab{};
  Draft draft{src, dst, qv_test::Params(method), {50, 0, 0}, {sizeof(CmykParams), 175, 0}, {sizeof(LabParams)}, false};
  draft.params.pWhitePoint = &given_white;
  draft.params.pCmykParams = &given_cmyk;
  draft.params.pLabParams = &given_lab;
  return draft;
}

TEST(DialogForm, GivesBackEveryNumberWithAnyDecimalMark) {
  constexpr double kNumbers[] = {0, -0.0, 1.0 / 3, 0.3127, 1e22, -1e-300, std::numeric_limits<double>::max()};
  for (const QWChar mark : {QWChar{'.'}, QWChar{','}, QWChar{'/'}}) {
    for (const double number : kNumbers) {
      Draft draft = DraftOf(CS_RGB, CS_CMYK, METHOD_ICC);
      draft.white_point = {0, number, -number};
      const Form form = FormOf(draft, mark);
      draft.white_point = {};
      EXPECT_EQ(TakeForm(form, &draft).control, 0);
      EXPECT_EQ(double{draft.white_point.x}, number);
      EXPECT_EQ(double{draft.white_point.y}, -number);
    }
  }
}

TEST(DialogForm, ShowsWhatTheConverterMakesOfAnUnusualRecord) {
  Draft draft = DraftOf(CS_RGB, CS_CMYK, 0);
  std::ranges::fill(draft.params.sSourceProfileName, QWChar{'x'});  // no terminator
  draft.white_point.nWhitePoint = 51;
  const Form form = FormOf(draft, '.');
  EXPECT_EQ(form.method, METHOD_FORMULA);
  EXPECT_EQ(form.white_point, 50u);
  EXPECT_EQ(form.Text(QV_EDIT_SOURCE)[0], 0);
  EXPECT_EQ(FormOf(DraftOf(CS_RGB, CS_CMYK, METHOD_TABLE), '.').method, METHOD_FORMULA);
  EXPECT_EQ(FormOf(DraftOf(CS_CMYK, CS_RGB, METHOD_TABLE), '.').method, METHOD_TABLE);
  EXPECT_EQ(FormOf(DraftOf(CS_CMYK, CS_RGB, METHOD_ICC | METHOD_FORMULA), '.').method, METHOD_FORMULA);
}

TEST(DialogForm, ATrialWithoutMemoryLeavesNothing) {
  Draft draft = DraftOf(CS_RGB, CS_CMYK, METHOD_CUSTOM_ICC);
  qv_test::SetName(std::filesystem::path(QV_RES) / "srgb.icc", draft.params.sSourceProfileName);
  const size_t before = Ledger().blocks;
  for (int64_t n = 1;; n += n / 8 + 1) {
    ColorConverter* made = nullptr;
    allocation_faults.FailNth(n);
    const Fault fault = TryDraft(draft, &made);
    const bool is_over = allocation_faults.Armed();
    allocation_faults.FailNth(0);
    EXPECT_EQ(fault.control == 0, made != nullptr);
    if (made) EXPECT_EQ(Q_ClrFree(made), SUCCESS);
    EXPECT_EQ(Ledger().blocks, before) << n;
    if (is_over) break;
  }
}

}  // namespace
