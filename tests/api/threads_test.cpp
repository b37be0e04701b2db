// Different converters in many threads at once. Ten seconds under the thread sanitizer, one elsewhere.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "support/converters.h"

namespace {

using namespace qv_test;

#ifdef __SANITIZE_THREAD__
constexpr auto kTime = std::chrono::seconds(10);
#else
constexpr auto kTime = std::chrono::seconds(1);
#endif

TEST(Threads, CreateConvertAndFreeTheirOwnConverters) {
  const std::vector<uint8_t> source = RandomBytes(4 * 64 * 16);
  const auto end = std::chrono::steady_clock::now() + kTime;
  std::atomic<int> failures{0}, rounds{0};
  std::vector<std::thread> threads;
  for (uint32_t t = 0; t < 8; ++t) {
    threads.emplace_back([&, t] {
      const uint32_t partner = t % 3 == 0 ? CS_CMYK : t % 3 == 1 ? CS_CMY : CS_BGR;
      const ConversionParams params = Params(t % 2 ? METHOD_ICC : METHOD_FORMULA);
      std::vector<uint8_t> first, target(4 * 64 * 16);
      do {
        const ConverterPtr converter = MakeConverter(CS_RGB, partner, params);
        const bool converted = converter && Q_ClrIsValid(converter.get()) == SUCCESS &&
                               Q_ClrConvert(converter.get(), source.data(), target.data(), 64, 16, 0, 0) == SUCCESS;
        if (first.empty()) first = target;
        if (!converted || target != first) ++failures;
        ++rounds;
      } while (std::chrono::steady_clock::now() < end);
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(failures, 0);
  EXPECT_GE(rounds, 8);
}

}  // namespace
