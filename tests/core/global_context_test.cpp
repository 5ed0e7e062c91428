#include "kybase/core/global_context.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <utility>

#include "kybase/containers/symbol.h"

namespace {

void* P(std::uintptr_t value) { return reinterpret_cast<void*>(value); }

TEST(GlobalContext, ValueRegistryErrorNumbers) {
  KyGlobalContext& context = KyGlobalContext::GetInstance();
  void* owner = P(0x1000);
  void* value = P(1);
  void* found = nullptr;

  // Each step, in order, with the error number it leaves: 0 done, 1 taken, 2 unknown
  // owner, 3 unknown key, 4 other value.
  auto step = [](bool done) { return std::make_pair(done, KyGlobalContext::GetError()); };
  const std::pair<bool, int> steps[] = {
      step(context.addValue(P(10), P(1), owner)),         step(context.addValue(P(11), P(1), owner)),
      step(context.addValue(P(12), P(1), P(0x2000))),     step(context.getValue(value, P(1), P(0x3000))),
      step(context.getValue(value, P(2), owner)),         step(context.replaceValue(P(13), P(2), owner)),
      step(context.replaceValue(P(13), P(2), P(0x3000))), step(context.replaceValue(P(13), P(1), owner)),
      step(context.removeValue(P(10), P(1), owner)),
      step(context.getValue(found, P(1), owner)),
      step(context.removeValue(P(13), P(1), P(0x3000))),
      step(context.removeValue(P(13), P(1), owner)),
  };
  const std::pair<bool, int> expected[] = {{true, 0},  {false, 1}, {true, 0},  {false, 2}, {false, 3},
                                           {false, 3}, {false, 2}, {true, 0},  {false, 4},
                                           {true, 0},  {false, 2}, {true, 0}};
  for (int i = 0; i < 12; ++i) EXPECT_EQ(steps[i], expected[i]) << i;
  EXPECT_EQ(value, nullptr);  // a failed look-up clears the result
  EXPECT_EQ(found, P(13));

  // A null owner is one more key, and a stored null is a success.
  EXPECT_TRUE(context.addValue(nullptr, P(5), nullptr));
  value = P(1);
  EXPECT_TRUE(context.getValue(value, P(5), nullptr));
  EXPECT_EQ(value, nullptr);
  EXPECT_TRUE(KyGlobalContext::IsCPULsb());
}

class FlagContext : public KyGlobalContext {
 public:
  using KyGlobalContext::getCompatibilityFlag;
  using KyGlobalContext::invertCompatibilityFlag;
  using KyGlobalContext::setCompatibilityFlag;
  using KyGlobalContext::unSetCompatibilityFlag;
};

TEST(GlobalContext, CompatibilityFlagsUseTheLowFiveBits) {
  FlagContext context;
  context.setCompatibilityFlag(33);
  EXPECT_TRUE(context.getCompatibilityFlag(1));
  context.unSetCompatibilityFlag(1);
  EXPECT_FALSE(context.getCompatibilityFlag(33));
  context.invertCompatibilityFlag(31);
  EXPECT_TRUE(context.getCompatibilityFlag(63));
  context.setCompatibilityFlag(31, false);
  EXPECT_FALSE(context.getCompatibilityFlag(31));
}

TEST(Symbol, InternedByTextWithItsOwnCopy) {
  char buffer[] = "kybase-symbol";
  KySymbol* symbol = KySymbol::Get(buffer, true);
  std::strcpy(buffer, "changed");
  EXPECT_STREQ(symbol->name(), "kybase-symbol");
  EXPECT_EQ(KySymbol::Get("kybase-symbol", true), symbol);
  EXPECT_EQ(KySymbol::Get("kybase-symbol", false), symbol);
  EXPECT_EQ(KyGlobalContext::GetInstance().findSymbol("kybase-symbol"), symbol);
  EXPECT_EQ(KySymbol::Get("kybase-unknown", false), nullptr);
  KySymbol* empty = KySymbol::Get("", true);
  ASSERT_NE(empty, nullptr);
  EXPECT_STREQ(static_cast<const char*>(*empty), "");
  EXPECT_EQ(KySymbol::Get(nullptr, true), nullptr);
}

}  // namespace
