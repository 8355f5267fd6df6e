#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <string>

#include "kalmia/pcapls/NCPLS.h"
#include "testing/AllocationMeter.h"
#include "testing/RandomTables.h"
#include "testing/StreamAttacks.h"

// What is left of a model where memory runs out: each allocation fails in turn.

namespace {

class NCPLSMemory : public ::testing::Test {
 protected:
  NCPLSMemory() : X_(RandomMatrix<float>(12, 5, 0.1, 1)), Y_(RandomMatrix<float>(12, 3, 0.1, 2)) {}

  /// A model of several Y variables with one component.
  std::unique_ptr<NCPLS> ModelOfSeveralY() const {
    auto model = std::make_unique<NCPLS>(&X_, &Y_, 200);
    model->NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true);
    model->CalculateResiduals();
    return model;
  }

  NCDataMatrix<float> X_;
  NCDataMatrix<float> Y_;
};

TEST_F(NCPLSMemory, LeavesTheModelAsItWas) {
  const auto finished = ModelOfSeveralY();
  finished->NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true);
  bool failed = true;
  for (int which = 1; failed; ++which) {
    SCOPED_TRACE("allocation " + std::to_string(which));
    const auto model = ModelOfSeveralY();
    const std::string before = StreamOf(*model);
    {
      const FailAllocation failure(which);
      try {
        model->NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true);
      } catch (const std::bad_alloc&) {
      }
      failed = failure.HasFailed();
    }
    ASSERT_TRUE(failed || which > 20) << "there is more to allocate than that";
    EXPECT_EQ(StreamOf(*model), failed ? before : StreamOf(*finished));
    EXPECT_EQ(model->GetComponents(), failed ? 1 : 2);
  }
}

TEST_F(NCPLSMemory, LetsTheModelGoOnFromItsStartAsIfItHadNeverRunOut) {
  const NCDataVector<float> start = VectorOf<float>({1, -1, 2, 0, 1});
  const auto finished = ModelOfSeveralY();
  finished->NextComponent(nullptr, &start, /*quiet=*/true, /*strict=*/true);
  bool failed = true;
  for (int which = 1; failed; ++which) {
    SCOPED_TRACE("allocation " + std::to_string(which));
    const auto model = ModelOfSeveralY();
    {
      const FailAllocation failure(which);
      try {
        model->NextComponent(nullptr, &start, /*quiet=*/true, /*strict=*/true);
      } catch (const std::bad_alloc&) {
      }
      failed = failure.HasFailed();
    }
    if (failed) model->NextComponent(nullptr, &start, /*quiet=*/true, /*strict=*/true);
    EXPECT_EQ(StreamOf(*model), StreamOf(*finished));
  }
}

TEST_F(NCPLSMemory, LeavesBothTablesDeflatedOrNeither) {
  const auto modelWithComponent = [this] {  // whose tables still share their cells with the caller's
    auto model = std::make_unique<NCPLS>(&X_, &Y_, 200);
    model->NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true);
    return model;
  };
  const auto before = modelWithComponent();
  const auto deflated = modelWithComponent();
  deflated->CalculateResiduals();
  bool failed = true;
  for (int which = 1; failed; ++which) {
    SCOPED_TRACE("allocation " + std::to_string(which));
    const auto model = modelWithComponent();
    {
      const FailAllocation failure(which);
      try {
        model->CalculateResiduals();
      } catch (const std::bad_alloc&) {
      }
      failed = failure.HasFailed();
    }
    ASSERT_TRUE(failed || which > 20) << "there is more to allocate than that";
    EXPECT_EQ(StreamOf(*model), StreamOf(failed ? *before : *deflated));
  }
}

}  // namespace
