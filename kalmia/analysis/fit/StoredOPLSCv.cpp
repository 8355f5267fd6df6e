#include "kalmia/analysis/fit/StoredOPLSCv.h"

#include <algorithm>
#include <sstream>

#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/Version.h"
#include "kalmia/analysis/text/internal/Bytes.h"

namespace kalmia::analysis {

namespace {

/// Of the cells and names that are modelled, before scaling: X as the steps of preprocessing have made it.
std::string DigestOf(const ModelData& data) {
  std::ostringstream stream;
  WriteNames(data.xNames, stream);
  WriteNames(data.yNames, stream);
  stream << data.x << data.y;
  WriteDoubles(data.xShifts, stream);
  WriteDoubles(data.yShifts, stream);
  return Checksum(stream.str());
}

bool AreSame(const NCIntegralVector<int, -99>& a, const NCIntegralVector<int, -99>& b) {
  return a.Size() == b.Size() && std::equal(a.begin(), a.end(), b.begin());
}

/// The first name that is not among the others, in quotes; empty if there is none.
std::string FirstMissing(const std::vector<std::string>& names, const std::vector<std::string>& others) {
  for (const std::string& name : names)
    if (std::find(others.begin(), others.end(), name) == others.end()) return Quoted(name);
  return "";
}

/// In what two lists of names differ: by the first name that one of them lacks, or by their order.
std::string DifferenceOf(const std::vector<std::string>& stored, const std::vector<std::string>& present) {
  const std::string gone = FirstMissing(stored, present), added = FirstMissing(present, stored);
  if (!gone.empty()) return gone + " was among them";
  return added.empty() ? "their order is another" : added + " was not among them";
}

[[noreturn]] void RefuseBecause(const StoredOPLSCv& stored, const std::string& reason) {
  throw BadData((stored.name.empty() ? "the cross-validation" : stored.name) + " " + reason);
}

}  // namespace

void DescribeTable(const ModelData& data, NCScale::Scaling scaling, StoredOPLSCv* stored) {
  stored->writtenBy = kVersion;
  stored->digest = DigestOf(data);
  stored->scaling = scaling;
  stored->xNames = data.xNames;
  stored->yNames = data.yNames;
  stored->groups = data.groups;
  stored->rounds = data.rounds;
}

void RequireSameTable(const StoredOPLSCv& stored, const ModelData& data, NCScale::Scaling scaling) {
  if (stored.xNames != data.xNames) {
    RefuseBecause(stored, "was made of another table or with other steps: its X columns are others, " +
                              DifferenceOf(stored.xNames, data.xNames));
  }
  if (stored.yNames != data.yNames) {
    RefuseBecause(stored, "was made of another table: its Y is " + Listed(stored.yNames) + ", not " +
                              Listed(data.yNames));
  }
  if (stored.digest != DigestOf(data)) {
    RefuseBecause(stored, "was made of another table or with other steps: its cells are others");
  }
  if (stored.rounds != data.rounds) {
    RefuseBecause(stored, "was made with " + std::to_string(stored.rounds) + " cross-validation groups, not " +
                              std::to_string(data.rounds));
  }
  if (!AreSame(stored.groups, data.groups)) {
    RefuseBecause(stored, "was made with other cross-validation groups: its rows are divided in another way");
  }
  if (stored.scaling != scaling) {
    RefuseBecause(stored,
                  "was made with scaling " + ScalingWord(stored.scaling) + ", not " + ScalingWord(scaling));
  }
}

}  // namespace kalmia::analysis
