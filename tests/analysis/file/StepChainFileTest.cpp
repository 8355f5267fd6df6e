// Saved steps: what comes back, and what is refused.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <sstream>

#include "FailureOf.h"
#include "FramedFile.h"
#include "StepTables.h"
#include "kalmia/analysis/file/StepChainFile.h"
#include "kalmia/analysis/file/internal/ModelEntries.h"
#include "kalmia/analysis/text/Failure.h"
#include "testing/AllocationMeter.h"

namespace {

using kalmia::analysis::ApplyChain;
using kalmia::analysis::Failure;
using kalmia::analysis::IsConsistent;
using kalmia::analysis::LearnChain;
using kalmia::analysis::CellRows;
using kalmia::analysis::Notes;
using kalmia::analysis::OutputNames;
using kalmia::analysis::ParseSteps;
using kalmia::analysis::ReadStepChainFile;
using kalmia::analysis::Signals;
using kalmia::analysis::StepChain;
using kalmia::analysis::StepChainFileBytes;
using ::testing::HasSubstr;
using namespace framed;

/// Three rows of five channels.
Signals SmallSignals() {
  Signals signals{"t", {"a", "b", "c"}, {"10", "12", "14", "16", "18"}, {}, CellRows(3, 5)};
  for (int r = 1; r <= 3; ++r)
    for (int c = 1; c <= 5; ++c) signals.cells.Row(r - 1)[c - 1] = std::sin(1.0 + r * c) + c;
  return signals;
}

StepChain SmallChain() {
  Signals signals = SmallSignals();
  Notes notes;
  return LearnChain(ParseSteps("linear:2:1,derivative:1:3,wavelet-compress:3:daubechies:4,wavelet-restore", "steps"),
                    &signals, &notes);
}

/// The message with which the bytes are refused; "" if they are read.
std::string Refusal(const std::string& bytes) {
  try {
    ReadStepChainFile(bytes, "s");
  } catch (const Failure& failure) {
    EXPECT_TRUE(Is<kalmia::analysis::BadFile>(failure));
    EXPECT_EQ(std::string(failure.what()).find('\n'), std::string::npos);
    return failure.what();
  }
  return "";
}

TEST(StepChainFile, ComesBackToTheSameBytesAndTheSameWork) {
  const StepChain chain = SmallChain();
  const std::string bytes = StepChainFileBytes(chain);
  const StepChain read = ReadStepChainFile(bytes, "s");
  EXPECT_EQ(StepChainFileBytes(read), bytes);
  EXPECT_EQ(read.steps[1].spacing, 2.0F);
  EXPECT_EQ(read.steps[2].positions, chain.steps[2].positions);
  Signals before = SmallSignals(), after = SmallSignals();
  ApplyChain(chain, &before);
  ApplyChain(read, &after);
  ExpectSame(MatrixOfCells(before.cells), MatrixOfCells(after.cells));
  EXPECT_EQ(after.names, OutputNames(read));
}

TEST(StepChainFile, IsRefusedWhenCutAtAnyByte) {
  const std::string bytes = StepChainFileBytes(SmallChain());
  EXPECT_EQ(Refusal(""), "s is empty, no chain of preprocessing steps");
  for (std::size_t length = 1; length < bytes.size(); ++length) {
    EXPECT_THAT(Refusal(bytes.substr(0, length)), HasSubstr("s is cut")) << length;
  }
}

TEST(StepChainFile, IsRefusedWithAnyBitFlipped) {
  const std::string bytes = StepChainFileBytes(SmallChain());
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    for (unsigned bit = 0; bit < 8; ++bit) {
      EXPECT_NE(Refusal(WithBitFlipped(bytes, i, bit)), "") << "byte " << i << " bit " << bit;
    }
  }
}

TEST(StepChainFile, EndsInAFailureOrAChainThatWorksWhenForged) {
  const std::string original = StepChainFileBytes(SmallChain());
  int read = 0;
  for (std::size_t i = kContentAt; i < original.size(); ++i) {
    for (unsigned bit = 0; bit < 8; ++bit) {
      try {
        const StepChain chain = ReadStepChainFile(Forged(WithBitFlipped(original, i, bit)), "s");
        EXPECT_TRUE(IsConsistent(chain));
        ++read;
        Signals signals = SmallSignals();
        signals.names = chain.inputNames;
        ApplyChain(chain, &signals);
        EXPECT_EQ(static_cast<std::size_t>(signals.cells.Columns()), OutputNames(chain).size());
      } catch (const Failure& failure) {
        if (Is<kalmia::analysis::BadData>(failure)) {  // a constant that takes the cells beyond the floats
          EXPECT_THAT(failure.what(), HasSubstr("becomes no finite number"));
        } else {
          EXPECT_STREQ(failure.what(), "s is damaged: its parts do not fit together");
        }
      }
    }
  }
  EXPECT_GT(read, 0);  // a flip within a name or a constant is nobody's to notice
}

TEST(StepChainFile, EndsInAFailureWhenItsContentIsCutByAForger) {
  const std::string original = StepChainFileBytes(SmallChain());
  for (std::size_t length = kContentAt; length < original.size(); ++length) {
    EXPECT_THAT(Refusal(Forged(original.substr(0, length))), HasSubstr("its parts do not fit together")) << length;
  }
}

/// A chain that no learning has made, and why.
struct Lie {
  const char* what;
  void (*tell)(StepChain*);
};

TEST(StepChainFile, IsRefusedWhereTheChainCouldNotHaveBeenLearnt) {
  const Lie lies[] = {
      {"no columns", [](StepChain* chain) { chain->inputNames.clear(); }},
      {"two columns of one name", [](StepChain* chain) { chain->inputNames[3] = "10"; }},
      {"a column without a name", [](StepChain* chain) { chain->inputNames[3].clear(); }},
      {"a parameter that is no float", [](StepChain* chain) { chain->steps[0].step.parameters[0] = 1e-300; }},
      {"no steps", [](StepChain* chain) { chain->steps.clear(); }},
      {"fewer columns than the window", [](StepChain* chain) { chain->inputNames.resize(2); }},
      {"no spacing", [](StepChain* chain) { chain->steps[1].spacing = 0.0F; }},
      {"a spacing that is no number", [](StepChain* chain) { chain->steps[1].spacing = std::nanf(""); }},
      {"a spacing where there is none", [](StepChain* chain) { chain->steps[0].spacing = 2.0F; }},
      {"positions where there are none", [](StepChain* chain) { chain->steps[0].positions = {1}; }},
      {"a position below 1",
       [](StepChain* chain) {
         chain->steps[2].positions = {0, 1, 2};
       }},
      {"a position beyond the coefficients",
       [](StepChain* chain) {
         chain->steps[2].positions = {1, 2, 9};
       }},
      {"a position that comes twice",
       [](StepChain* chain) {
         chain->steps[2].positions = {1, 2, 2};
       }},
      {"falling positions",
       [](StepChain* chain) {
         chain->steps[2].positions = {3, 2, 1};
       }},
      {"fewer positions than kept",
       [](StepChain* chain) {
         chain->steps[2].positions = {1, 2};
       }},
      {"nothing to restore from", [](StepChain* chain) { chain->steps.erase(chain->steps.begin() + 2); }},
      {"a step that does not exist",
       [](StepChain* chain) { chain->steps[0].step.kind = kalmia::analysis::StepKind{99}; }},
      {"too many parameters", [](StepChain* chain) { chain->steps[0].step.parameters.push_back(1.0); }}};
  for (const Lie& lie : lies) {
    SCOPED_TRACE(lie.what);
    StepChain chain = SmallChain();
    lie.tell(&chain);
    EXPECT_EQ(Refusal(StepChainFileBytes(chain)), "s is damaged: its parts do not fit together");
  }
  StepChain whole = SmallChain();
  whole.steps[2].positions = {1, 2, 8};
  EXPECT_EQ(Refusal(StepChainFileBytes(whole)), "");
}

TEST(StepChainFile, IsRefusedWithBytesBehindItsLastStep) {
  EXPECT_EQ(Refusal(Forged(StepChainFileBytes(SmallChain()) + '\0')), "s is damaged: its parts do not fit together");
}

/// The content with another integer where one stands.
std::string WithInteger(std::string bytes, std::size_t at, int value) {
  for (std::size_t i = 0; i < 4; ++i) {
    bytes[kContentAt + at + i] = static_cast<char>(static_cast<unsigned>(value) >> (8 * i) & 0xFFU);
  }
  return Forged(bytes);
}

TEST(StepChainFile, IsRefusedWithACountThatLiesBeforeItTakesMemoryForIt) {
  const StepChain chain = SmallChain();
  std::ostringstream names;
  kalmia::analysis::WriteNames(chain.inputNames, names);
  const std::size_t steps = names.str().size();
  const std::size_t parameters = steps + 8;              // behind the count of steps and the kind of the first one
  const std::size_t positions = parameters + 4 + 16 + 4;  // behind two parameters and the spacing
  const std::string bytes = StepChainFileBytes(chain);
  ASSERT_EQ(WithInteger(WithInteger(WithInteger(bytes, steps, 4), parameters, 2), positions, 0), bytes);
  for (const std::size_t at : {std::size_t{0}, steps, parameters, positions}) {
    for (const int lie : {0x7FFFFFFF, 0x10000000, 1000, -1, INT_MIN}) {
      SCOPED_TRACE(std::to_string(at) + ' ' + std::to_string(lie));
      const std::string forged = WithInteger(bytes, at, lie);
      const PeakBytesDuring peak;
      EXPECT_EQ(Refusal(forged), "s is damaged: its parts do not fit together");
      EXPECT_LT(peak.GetBytes(), 1 << 16);
    }
  }
}

TEST(StepChainFile, IsReadInATimeThatGrowsWithItsLength) {
  constexpr int kPairs = 20000;
  StepChain chain;
  for (int i = 0; i < kPairs; ++i) chain.inputNames.push_back("a column with a long name, number " + std::to_string(i));
  const auto steps = ParseSteps("wavelet-compress:1:daubechies:4,wavelet-restore", "steps");
  for (int i = 0; i < kPairs; ++i) {
    chain.steps.push_back({steps[0], 1.0F, {1}});
    chain.steps.push_back({steps[1], 1.0F, {}});
  }
  const std::string bytes = StepChainFileBytes(chain);
  const std::clock_t begin = std::clock();
  EXPECT_EQ(Refusal(bytes), "");
  EXPECT_LT(std::clock() - begin, 4 * CLOCKS_PER_SEC);  // well below a second; ten and more if it grew with the square
}

TEST(StepChainFile, OfANewerVersionIsRefusedByIt) {
  EXPECT_EQ(Refusal(WithVersion(StepChainFileBytes(SmallChain()), 2)),
            "s is a steps file of version 2; this kalmia reads versions up to 1");
  EXPECT_EQ(Refusal("log, snv"), "s is no chain of preprocessing steps");
}

}  // namespace
