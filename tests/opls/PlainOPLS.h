#pragma once

#include <vector>

#include "pcapls/PlainPLS.h"

namespace plain {

/// OPLS once more, as plainly as it can be written and all in double: the witness of the tests.
struct OPLS {
  /// A model of the tables with this many predictive and orthogonal components. Each principal component of a
  /// cross-product takes exactly `rounds` rounds; at most `passes` passes let the holes settle.
  OPLS(const Table& X, const Table& Y, int predictive, int orthogonal, int rounds, int passes);

  Table Predict(Table X) const;  ///< Y of new observations

  std::vector<Table> W, P, C;  ///< block after block, components in rows
  Table T, TO, WO, PO, CO;     ///< components in rows
  Table xLeft, yLeft;          ///< without the orthogonal components

 private:
  void AddBlock();
  void AddOrthogonalComponent();
  Table Principal(Table crossProduct, int components) const;

  Table x_, y_;     ///< as they came
  int predictive_, rounds_, passes_;
  Table tFilter_;
};

}  // namespace plain
