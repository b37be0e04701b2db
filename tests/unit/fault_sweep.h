// Calls with their n-th allocation or file call failing, for every n.
#pragma once

#include <gtest/gtest.h>

#include <functional>

#include "base/faults.h"
#include "base/memory.h"
#include "base/readable.h"
#include "Qvclr15x.h"
#include "unit/base_system.h"

namespace qv_test {

struct Fault {
  qv::FaultHook& hook;
  int n;
  bool struck = false;

  int32_t During(const std::function<int32_t()>& call) {
    hook.FailNth(n);
    const int32_t status = call();
    struck = !hook.Armed();
    hook.FailNth(0);
    return status;
  }
};

// Attempts with the first fault, the second, and so on, until none strikes; each must leave nothing behind. Gives how
// many struck. With a stride they are a sample, for calls that take their time.
inline int SweepFaults(qv::FaultHook& hook, const std::function<void(Fault& fault)>& attempt, int stride = 1) {
  qv::IsReadable(&hook, 1);  // opens what the process keeps
  const qv::LedgerTotals before = qv::Ledger();
  const size_t handles = OpenHandles();
  for (int n = 1; n < 5000; n += stride) {
    SCOPED_TRACE(testing::Message() << "fault " << n);
    Fault fault{hook, n};
    attempt(fault);
    EXPECT_EQ(qv::Ledger().blocks, before.blocks);
    EXPECT_EQ(qv::Ledger().bytes, before.bytes);
    EXPECT_EQ(OpenHandles(), handles);
    if (!fault.struck) return n - 1;
  }
  return -1;
}

// Of a call whose failed allocations are told by `failure`.
inline int SweepAllocations(const std::function<int32_t()>& call, int32_t failure, int stride = 1) {
  return SweepFaults(
      qv::allocation_faults,
      [&](Fault& fault) {
        const int32_t status = fault.During(call);
        EXPECT_EQ(status, fault.struck ? failure : SUCCESS);
      },
      stride);
}

}  // namespace qv_test
