// Feeds bytes to every reader of streams. Each reader gets every input; one with another magic refuses it at once. What
// is demanded is what the tests demand of a damaged stream: a refusal as the class promises it, or an object whose
// invariants hold and which writes and reads back to the same bytes; from a pipe as from a stream of known length;
// within the memory that a reader may take. Then the object is put to use.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <sstream>
#include <string>

#include "Operations.h"
#include "cluster/Trees.h"
#include "kalmia/kalmia.h"
#include "testing/RandomTables.h"
#include "testing/StreamAttacks.h"
#include "testing/StreamedOPLSData.h"

namespace {

template <class Object>
using Invariants = std::function<void(const Object&)>;

void UseObject(NCPLS& model) { Use(&model); }
void UseObject(NCPCA& model) { Use(&model); }
void UseObject(NCYOrthogonalPLS& filter) { Use(&filter); }
void UseObject(NCScale& scale) { Use(&scale); }
void UseObject(NCTransform& transform) { Use(transform); }
void UseObject(StreamedOPLSData& stored) { Use(stored.data); }
void UseObject(HeldTree& held) { Use(held.Root()); }
void UseObject(const VexStreamBase&) {}  // containers: models make use of them

template <class Object>
void UseWhatIsRead(const std::string& bytes) {
  std::istringstream stream(bytes);
  Object object;
  if (stream >> object) UseObject(object);
}

/// A refusal is a false read.
template <class Object>
void Feed(const std::string& bytes, const Invariants<Object>& accepted = [](const Object&) {}) {
  StreamAttacks<Object> attacks;
  attacks.accepted = accepted;
  if (attacks.Read(bytes)) UseWhatIsRead<Object>(bytes);
}

/// A refusal may be a VexStreamError too.
template <class Object>
void FeedWithErrors(const std::string& bytes, const Invariants<Object>& accepted = [](const Object&) {}) {
  StreamAttacks<Object> attacks;
  attacks.accepted = accepted;
  attacks.mayThrow = true;
  if (attacks.Read(bytes)) UseWhatIsRead<Object>(bytes);
}

template <class Container>
void ExpectExactCounts(const Container& container) {
  EXPECT_TRUE(HasExactCounts(container));
}

template <class T>
void FeedContainersOf(const std::string& bytes) {
  Feed<NCDataVector<T>>(bytes, ExpectExactCounts<NCDataVector<T>>);
  FeedWithErrors<NCDataMatrix<T>>(bytes, ExpectExactCounts<NCDataMatrix<T>>);
}

/// Of the scores, the loadings and the table of a model; what has no rows agrees with anything, and components may lack
/// rows.
void ExpectAgreement(const NCDataMatrix<float>& T, const NCDataMatrix<float>& P, const NCDataMatrix<float>& X) {
  const bool hasT = T.SizeRows() > 0, hasP = P.SizeRows() > 0, hasX = X.SizeRows() > 0;
  EXPECT_TRUE(!hasP || !hasX || P.SizeColumns() == X.SizeColumns());
  EXPECT_TRUE(!hasT || !hasX || T.SizeColumns() == X.SizeRows());
}

void ExpectAgreement(const NCPLS& model) {
  for (const NCDataMatrix<float>* matrix : {model.GetCprim(), model.GetPprim(), model.GetWprim(), model.GetUprim(),
                                            model.GetTprim(), model.GetXResiduals(), model.GetYResiduals()})
    ExpectExactCounts(*matrix);
  ExpectAgreement(*model.GetTprim(), *model.GetPprim(), *model.GetXResiduals());
}

void ExpectAgreement(const NCYOrthogonalPLS& model) {
  for (const NCDataMatrix<float>* matrix :
       {model.GetPprim(), model.GetWprim(), model.GetTprim(), model.GetXResiduals()})
    ExpectExactCounts(*matrix);
  EXPECT_EQ(model.GetPprim()->SizeRows(), model.GetComponents());
  EXPECT_EQ(model.GetTprim()->SizeColumns(), model.GetXResiduals()->SizeRows());
  EXPECT_EQ(model.GetWprim()->SizeColumns(), model.GetXResiduals()->SizeColumns());
}

void ExpectAgreement(const NCPCA& model) {
  for (const NCDataMatrix<float>* matrix : {model.GetPprim(), model.GetTprim(), model.GetResiduals()})
    ExpectExactCounts(*matrix);
  ExpectAgreement(*model.GetTprim(), *model.GetPprim(), *model.GetResiduals());
}

void ExpectExactCountsOf(const OPLSCrossvalidationData& data) {
  for (const auto* matrices : {&data.WOPerRound, &data.POPerRound, &data.COPerRound})
    for (const NCDataMatrix<float>& matrix : *matrices) ExpectExactCounts(matrix);
  for (const auto* rounds : {&data.WMatricesPerRound, &data.PMatricesPerRound, &data.CMatricesPerRound})
    for (const auto& matrices : *rounds)
      for (const NCDataMatrix<float>& matrix : matrices) ExpectExactCounts(matrix);
}

}  // namespace

/// A failed expectation becomes an exception, which nobody catches: the fuzzer keeps the input.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
  ::testing::GTEST_FLAG(throw_on_failure) = true;
  ::testing::InitGoogleTest(argc, *argv);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(data, data + size);
  FeedContainersOf<float>(bytes);
  FeedContainersOf<double>(bytes);
  Feed<NCIntegralVector<int, -99>>(bytes);
  Feed<NCIntegralVector<bool, 0>>(bytes);
  Feed<NCIntegralVector<unsigned long, 0>>(bytes);
  Feed<BoolVector>(bytes);
  Feed<NCStringVector>(bytes);
  Feed<NCScale>(bytes);
  FeedWithErrors<TransformStruct>(bytes);
  FeedWithErrors<NCTransform>(bytes);
  FeedWithErrors<NCPLS>(bytes, [](const NCPLS& model) { ExpectAgreement(model); });
  FeedWithErrors<NCPCA>(bytes, [](const NCPCA& model) { ExpectAgreement(model); });
  FeedWithErrors<NCYOrthogonalPLS>(bytes, [](const NCYOrthogonalPLS& model) { ExpectAgreement(model); });
  Feed<HeldTree>(bytes, [](const HeldTree& held) { EXPECT_TRUE(HasSoundLinks(held.Root())); });
  Feed<StreamedOPLSData>(bytes, [](const StreamedOPLSData& stored) { ExpectExactCountsOf(stored.data); });
  return 0;
}
