#include "kalmia/kernels/simd/Lanes.h"

#include <cstdlib>
#include <cstring>

#include "kalmia/kernels/simd/Targets.h"  // before any header of Highway

#include "hwy/highway.h"

namespace kalmia::simd {
namespace {

bool EnvironmentAsksForTwins() {
  const char* value = std::getenv("KALMIA_SIMD");
  return value && std::strcmp(value, "scalar") == 0;
}

bool& TwinSwitch() {
  static bool on = EnvironmentAsksForTwins();
  return on;
}

}  // namespace

bool HasVectorInstructions() {
  static const bool has = (hwy::SupportedTargets() & HWY_TARGETS & ~(HWY_EMU128 | HWY_SCALAR)) != 0;
  return has;
}

void UseScalarTwins(bool on) { TwinSwitch() = on; }
bool UsesScalarTwins() { return TwinSwitch(); }

}  // namespace kalmia::simd
