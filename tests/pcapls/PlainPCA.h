#pragma once

#include "PlainPLS.h"

namespace plain {

struct PrincipalComponent {
  Vector p, t;
};

/// How an iteration begins and ends.
struct Nipals {
  int rounds;
  const Vector* start = nullptr;    ///< scores; null: the usual column
  bool endsWhenConverged = false;   ///< once t moves by at most 1e-5 of its length; otherwise exactly `rounds`
  std::vector<bool> leftOut = {};   ///< variables that take no part; empty: none
};

/// The first principal component by NIPALS, all in double. A single row is its own component.
PrincipalComponent FitPCA(const Table& X, const Nipals& how);

/// A table without holes as the sum of value * left right', values descending, vectors of unit length.
struct SingularVectors {
  Vector values;
  Table left;   ///< a vector over the rows for each value
  Table right;  ///< a vector over the columns for each value
};

/// By one-sided rotations of the columns, or rows where there are fewer of them, which gives small values as exactly as
/// large ones. Source: Demmel & Veselic (1992), SIAM J. Matrix Anal. Appl. 13, 1204-1245.
SingularVectors Decompose(const Table& X);

}  // namespace plain
