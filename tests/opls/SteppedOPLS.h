#pragma once

#include <set>
#include <utility>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"

/// An OPLS model as a plain row of steps, each an operation of the tables of its own that stores what it makes: the
/// witness of a model that joins them. Public fields bear the names of NCOPLS.
class SteppedOPLS {
 public:
  SteppedOPLS(const NCDataMatrix<float>& X, const NCDataMatrix<float>& Y, int predictive, int maxIterations);

  void NextComponent();
  /// Goes on from the blocks and orthogonal components of another one, on tables of its own.
  void CatchUp(const SteppedOPLS& stored);

  NCDataMatrix<float> XResiduals() const;
  NCDataMatrix<float> YResiduals() const;

  std::vector<NCDataMatrix<float>> W, P, C;
  NCDataMatrix<float> T, U, TO, PO, CO, WO, UO;

 private:
  using Cells = std::set<std::pair<int, int>>;

  void AddOrthogonal();
  void AddBlock();
  NCDataMatrix<float> WeightsOf(const NCDataMatrix<float>& sum, const NCDataMatrix<float>& former);
  NCDataMatrix<float> AutomaticWeightsOf(const NCDataMatrix<float>& sum) const;

  NCDataMatrix<float> x_, y_, tFilter_;
  Cells missingX_, missingY_;
  int maxIterations_, predictive_, passes_ = 0;
};
