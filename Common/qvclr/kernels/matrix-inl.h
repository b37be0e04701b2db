// Matrices of a block's channels, compiled once per instruction set: their rows as affine forms in whole numbers, and
// in reals where those are in doubt. A kernel file includes this after <hwy/foreach_target.h>.
#include <bit>

#include "qvclr/kernels/forms.h"
#include "qvclr/kernels/pairs-inl.h"

#if defined(QV_MATRIX_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QV_MATRIX_INL_H
#undef QV_MATRIX_INL_H
#else
#define QV_MATRIX_INL_H
#endif

HWY_BEFORE_NAMESPACE();
namespace qv::HWY_NAMESPACE {

#if QV_HAS_VECTORS
// A constant of a row's loop, hidden from the compiler, which would otherwise make it anew in every block, by way of a
// general register.
HWY_INLINE IntVector Kept(int64_t constant) {
  if (constant == 0) return hn::Zero(I32());
  const volatile int32_t hidden = static_cast<int32_t>(constant);
  return hn::Set(I32(), hidden);
}

HWY_INLINE IntVector AddProducts(IntVector sum, I16Vector pairs, IntVector weights) {
  const I16Vector factors = hn::BitCast(I16(), weights);
#if QV_HAS_BYTE_PERMUTES
  return IntVector{_mm512_dpwssd_epi32(sum.raw, pairs.raw, factors.raw)};
#else
  IntVector none = hn::Zero(I32());
  return hn::ReorderWidenMulAccumulate(I32(), pairs, factors, sum, none);
#endif
}

// The weights of a pair, none where they are zero; what is beyond 16 bits of them in a second product.
template <int64_t kFirst, int64_t kSecond>
class PairProducts {
  static constexpr int64_t Word(int64_t weight) { return std::clamp<int64_t>(weight, INT16_MIN, INT16_MAX); }
  static constexpr int64_t kFirstRest = kFirst - Word(kFirst), kSecondRest = kSecond - Word(kSecond);

 public:
  static_assert(kFirstRest == Word(kFirstRest) && kSecondRest == Word(kSecondRest));
  HWY_INLINE PairProducts()
      : words_(Kept(forms::PairOfWeights(Word(kFirst), Word(kSecond)))),
        rests_(Kept(forms::PairOfWeights(kFirstRest, kSecondRest))) {}
  HWY_INLINE IntVector AddTo(IntVector sum, I16Vector pair) const {
    if constexpr (kFirst != 0 || kSecond != 0) sum = AddProducts(sum, pair, words_);
    if constexpr (kFirstRest != 0 || kSecondRest != 0) sum = AddProducts(sum, pair, rests_);
    return sum;
  }

 private:
  IntVector words_, rests_;
};

// Weights of both pairs.
template <typename Weights>
class Products {
 public:
  HWY_INLINE Products() {}
  HWY_INLINE IntVector AddTo(IntVector sum, const Pairs& pairs) const {
    return second_.AddTo(first_.AddTo(sum, pairs.first), pairs.second);
  }

 private:
  PairProducts<Weights::Of(0), Weights::Of(1)> first_;
  PairProducts<Weights::Of(2), Weights::Of(3)> second_;
};

#if QV_HAS_BYTE_PERMUTES
// Weights of the bytes.
template <typename Weights>
class ByteProducts {
 public:
  HWY_INLINE ByteProducts() : weights_(Kept(forms::ThreeWeights(Weights::Of(0), Weights::Of(1), Weights::Of(2)))) {}
  HWY_INLINE IntVector AddTo(IntVector sum, const BytePairs& pairs) const {
    return IntVector{_mm512_dpbusd_epi32(sum.raw, pairs.bytes.raw, weights_.raw)};
  }

 private:
  IntVector weights_;
};
#endif

// Made before the loop of a row.
template <const forms::Form& kForm>
class FormVectors {
  static constexpr bool kWide = forms::IsWide(kForm);
  static constexpr int kDigitBits = forms::DigitBits(kForm), kShift = forms::ShiftOfSum(kForm);
  static_assert(forms::LeavesRoom(kForm));
  struct LowDigits {
    static constexpr int64_t Of(size_t i) { return forms::LowDigit(kForm.of[i], kDigitBits); }
  };
  struct HighDigits {
    static constexpr int64_t Of(size_t i) { return kWide ? forms::HighDigit(kForm.of[i], kDigitBits) : kForm.of[i]; }
  };

 public:
  static constexpr bool kInHighWords = kShift == 16;
  HWY_INLINE FormVectors() : bias_(Kept(kForm.bias)) {}
  // Before the shift.
  template <typename OfQuarter>
  HWY_INLINE IntVector Sum(const OfQuarter& pairs) const {
    IntVector sum = bias_;
    if constexpr (kWide) sum = hn::ShiftRight<kDigitBits>(low_.AddTo(sum, pairs));
    return high_.AddTo(sum, pairs);
  }
  // After it; where kInHighWords, the upper words of this.
  HWY_INLINE IntVector Whole(IntVector sum) const {
    if constexpr (kForm.toward_zero) {
      const auto below_zero = hn::BitCast(U32(), hn::ShiftRight<31>(sum));
      sum = hn::Add(sum, hn::BitCast(I32(), hn::ShiftRight<32 - kShift>(below_zero)));
    }
    return kInHighWords ? sum : hn::ShiftRight<kShift>(sum);
  }

 private:
#if QV_HAS_BYTE_PERMUTES
  std::conditional_t<kDigitBits == forms::kByteDigitBits, ByteProducts<LowDigits>, Products<LowDigits>> low_;
#else
  Products<LowDigits> low_;
#endif
  Products<HighDigits> high_;
  IntVector bias_;
};

// Real numbers with the operators of the formulas, each rounded by itself.
struct Reals {
  DoubleVector of;
  friend HWY_INLINE Reals operator+(Reals a, Reals b) { return {hn::Add(a.of, b.of)}; }
  friend HWY_INLINE Reals operator-(Reals a, Reals b) { return {hn::Sub(a.of, b.of)}; }
  friend HWY_INLINE Reals operator+(Reals a, double b) { return {hn::Add(a.of, hn::Set(F64(), b))}; }
  friend HWY_INLINE Reals operator*(double a, Reals b) { return {hn::Mul(hn::Set(F64(), a), b.of)}; }
  friend HWY_INLINE Reals operator*(Reals a, double b) { return {hn::Mul(a.of, hn::Set(F64(), b))}; }
  friend HWY_INLINE Reals operator/(Reals a, double b) { return {hn::Div(a.of, hn::Set(F64(), b))}; }
};

// Both words of the first pairs and the first ones of the second pairs.
HWY_INLINE Three NumbersOf(const Pairs& pairs) {
  const IntVector first = hn::BitCast(I32(), pairs.first), second = hn::BitCast(I32(), pairs.second);
  return {hn::ShiftRight<16>(hn::ShiftLeft<16>(first)), hn::ShiftRight<16>(first),
          hn::ShiftRight<16>(hn::ShiftLeft<16>(second))};
}

// A formula of three whole numbers in reals, truncated.
template <typename Formula>
HWY_INLINE IntVector InReals(const Three& of, Formula&& formula) {
  const auto lower = [](IntVector v) HWY_ATTR { return Reals{hn::PromoteTo(F64(), hn::LowerHalf(v))}; };
  const auto upper = [](IntVector v)
                         HWY_ATTR { return Reals{hn::PromoteTo(F64(), hn::UpperHalf(hn::Half<I32>(), v))}; };
  const hn::Half<I32> half;
  return hn::Combine(I32(), hn::DemoteTo(half, formula(upper(of.first), upper(of.middle), upper(of.last)).of),
                     hn::DemoteTo(half, formula(lower(of.first), lower(of.middle), lower(of.last)).of));
}

// The same two words in all pairs.
HWY_INLINE I16Vector EveryPair(int64_t first, int64_t second) {
  return hn::BitCast(I16(), Kept(forms::PairOfWeights(first, second)));
}

// The three rows of a matrix, kFirst, kMiddle and kLast, of what the pairs hold. Where a row is in doubt, by the
// formulas First, Middle and Last. Made before the loop of a row.
template <typename Matrix>
class MatrixVectors {
  static constexpr bool IsDoubtful(const forms::Form& row) { return row.doubtful != 0; }
  // One mask tells the doubt in all rows.
  static constexpr bool SharesDoubt(const forms::Form& row) {
    return !IsDoubtful(row) || row.doubtful == Matrix::kFirst.doubtful;
  }
  static_assert(SharesDoubt(Matrix::kMiddle) && SharesDoubt(Matrix::kLast));

 public:
  static constexpr bool kInHighWords = FormVectors<Matrix::kFirst>::kInHighWords &&
                                       FormVectors<Matrix::kMiddle>::kInHighWords &&
                                       FormVectors<Matrix::kLast>::kInHighWords;
  static_assert(kInHighWords ||
                (!FormVectors<Matrix::kFirst>::kInHighWords && !FormVectors<Matrix::kMiddle>::kInHighWords &&
                 !FormVectors<Matrix::kLast>::kInHighWords && !IsDoubtful(Matrix::kFirst)));
  HWY_INLINE MatrixVectors() : doubt_(Kept(forms::DoubtBits(Matrix::kFirst))) {}
  template <typename OfQuarter>
  HWY_INLINE Three operator()(const OfQuarter& pairs) const {
    return Rows<false>(pairs, [&]() HWY_ATTR { return NumbersOf(pairs); });
  }
  // numbers() gives what the formulas take. The rows may leave out the last of these, where it is to be added to them.
  template <bool kWithoutLast, typename OfQuarter, typename Numbers>
  HWY_INLINE Three Rows(const OfQuarter& pairs, Numbers&& numbers) const {
    const IntVector first = first_.Sum(pairs), middle = middle_.Sum(pairs), last = last_.Sum(pairs);
    Three whole = {first_.Whole(first), middle_.Whole(middle), last_.Whole(last)};
    if constexpr (IsDoubtful(Matrix::kFirst)) {
      IntVector least = first;  // of the fractions
      if constexpr (IsDoubtful(Matrix::kMiddle)) least = LesserWords(least, middle);
      if constexpr (IsDoubtful(Matrix::kLast)) least = LesserWords(least, last);
      const Mask in_doubt = IsWhole(least);
      if (HWY_UNLIKELY(!hn::AllFalse(I32(), in_doubt)) && !IsExact(pairs, in_doubt)) {
        const Three of = numbers();
        const auto settle = [&](IntVector& row, auto formula) HWY_ATTR {
          row = InReals(of, formula);
          if constexpr (kWithoutLast) row = hn::Sub(row, of.last);
          row = hn::ShiftLeft<forms::kFractionBits>(row);
        };
        if (IsInDoubt<Matrix::kFirst>(first)) {
          settle(whole.first, [](Reals x, Reals y, Reals z) HWY_ATTR { return Matrix::First(x, y, z); });
        }
        if constexpr (IsDoubtful(Matrix::kMiddle)) {
          if (IsInDoubt<Matrix::kMiddle>(middle)) {
            settle(whole.middle, [](Reals x, Reals y, Reals z) HWY_ATTR { return Matrix::Middle(x, y, z); });
          }
        }
        if constexpr (IsDoubtful(Matrix::kLast)) {
          if (IsInDoubt<Matrix::kLast>(last)) {
            settle(whole.last, [](Reals x, Reals y, Reals z) HWY_ATTR { return Matrix::Last(x, y, z); });
          }
        }
      }
    }
    return whole;
  }
  template <typename PairsOfBlock>
  HWY_INLINE WordPlanes OfBlock(const PairsOfBlock& block) const {
    return ByQuarters<kInHighWords>([&](auto quarter) HWY_ATTR { return (*this)(block.At(quarter)); });
  }

 private:
  static HWY_INLINE IntVector LesserWords(IntVector a, IntVector b) {
    return hn::BitCast(I32(), hn::Min(hn::BitCast(U16(), a), hn::BitCast(U16(), b)));
  }
  using Mask = hn::Mask<I32>;
  static HWY_INLINE Mask IsZero(IntVector values) { return hn::Eq(values, hn::Zero(I32())); }
  HWY_INLINE Mask IsWhole(IntVector sum) const {
#if HWY_TARGET <= HWY_AVX3
    return Mask{_mm512_testn_epi32_mask(sum.raw, doubt_.raw)};
#else
    return IsZero(hn::And(sum, doubt_));
#endif
  }
  static HWY_INLINE bool IsExact([[maybe_unused]] const Pairs& pairs, [[maybe_unused]] Mask in_doubt) {
    if constexpr (requires { Matrix::kExactWhereFirstPairIsZero; }) {
      return hn::AllFalse(I32(), hn::AndNot(IsZero(hn::BitCast(I32(), pairs.first)), in_doubt));
    }
    return false;
  }
  // Toward zero, sums just above zero and just below it both give zero: no doubt.
  template <const forms::Form& kForm>
  HWY_INLINE bool IsInDoubt(IntVector sum) const {
    constexpr int kBits = std::countr_zero(static_cast<unsigned>(kForm.doubtful));
    Mask in_doubt = IsWhole(sum);
    if constexpr (kForm.toward_zero) in_doubt = hn::AndNot(IsZero(hn::ShiftRight<kBits>(sum)), in_doubt);
    return !hn::AllFalse(I32(), in_doubt);
  }
  FormVectors<Matrix::kFirst> first_;
  FormVectors<Matrix::kMiddle> middle_;
  FormVectors<Matrix::kLast> last_;
  IntVector doubt_;
};

// A row of pixels of three bytes on both sides, one of them RGB: the clamped rows of a matrix.
template <auto kPixel, typename Matrix, bool kFromRgb>
HWY_INLINE Status MatrixRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  return InRgbOrder(args, [&](auto swapped) HWY_ATTR {
    constexpr bool kSwapsInput = kFromRgb && decltype(swapped)::value;
    constexpr bool kSwapsOutput = !kFromRgb && decltype(swapped)::value;
    const MatrixVectors<Matrix> matrix;
    return BlockRow<kPixel, 3, 3>(src, dst, width, args, [&](const uint8_t* from, uint8_t* to) HWY_ATTR {
      StoreWordsInOrder<kSwapsOutput>(matrix.OfBlock(PixelPairs<kSwapsInput>(from)), to);
    });
  });
}

// A row of pixels of luma and two chromas to RGB: the clamped rows of a matrix of the second and first chroma, to which
// luma is added. `Samples`, made of the settings, makes these of their bytes, the chromas with kScaleBits zeros below.
template <auto kPixel, typename Matrix, typename Samples, typename... Settings>
HWY_INLINE Status LumaChromaRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args,
                                const Settings&... settings) {
  return InRgbOrder(args, [&](auto swapped) HWY_ATTR {
    constexpr bool kSwapped = decltype(swapped)::value;
    const MatrixVectors<Matrix> matrix;
    const Samples samples(settings...);
    return BlockRow<kPixel, 3, 3>(src, dst, width, args, [&](const uint8_t* from, uint8_t* to) HWY_ATTR {
      const PixelPairs<true> block(from);
      WordPlanes rgb = ByQuarters<MatrixVectors<Matrix>::kInHighWords>([&](auto quarter) HWY_ATTR {
        const Pairs chromas{samples.Chromas(block.First(quarter)), hn::Zero(I16())};
        return matrix.template Rows<true>(chromas, [&]() HWY_ATTR {
          return NumbersOf({hn::ShiftRight<Samples::kScaleBits>(chromas.first), samples.Luma(block.Second(quarter))});
        });
      });
      const WordPlane words = block.Last(), luma = {samples.Luma(words.lower), samples.Luma(words.upper)};
      for (WordPlane* plane : {&rgb.first, &rgb.middle, &rgb.last}) {
        plane->lower = hn::Add(plane->lower, luma.lower);
        plane->upper = hn::Add(plane->upper, luma.upper);
      }
      StoreWordsInOrder<kSwapped>(rgb, to);
    });
  });
}
#else
template <auto kPixel, typename Matrix, bool kFromRgb>
Status MatrixRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  return ScalarRow<kPixel, 3, 3>(src, dst, width, args);
}
#endif

}  // namespace qv::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif  // per target
