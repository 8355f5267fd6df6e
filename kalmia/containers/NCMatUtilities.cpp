#include "kalmia/containers/NCMatUtilities.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

#include "kalmia/containers/internal/SizeLimit.h"

float NCMatUtilities::NCGetQuietNaN() { return std::numeric_limits<float>::quiet_NaN(); }

NCIntegralVector<int, -99>* NCMatUtilities::ComplementVector(const NCIntegralVector<int, -99>* v, int last,
                                                             int first) {
  kalmia::RequireVectorSize(std::max(std::int64_t{last} - first + 1, std::int64_t{0}));
  std::vector<int> complement;
  const int* listed = v->begin();
  for (long long number = first; number <= last; ++number) {
    while (listed != v->end() && *listed < number) ++listed;
    if (listed == v->end() || *listed != number) complement.push_back(static_cast<int>(number));
  }
  return new NCIntegralVector<int, -99>(complement.data(), static_cast<int>(complement.size()));
}
