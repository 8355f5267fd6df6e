#pragma once

#include "kalmia/containers/NCDataMatrix.h"

namespace kalmia {

/// Scores of X along each row a of `along` in turn, a row each: T[a] is E.SpecialNipalsRegressRowsFix(along[a], null,
/// 0), after which T[a] away[a]' is taken out of E, by E.AddVprimV(T[a], away[a], -1). E is X at first; X stays as it
/// is. Nobody stores E: a row has all its scores before the next ones are looked at, so that the table is read once.
/// The bits are those of the steps taken singly, which is what is done where something has holes or a score is missing.
/// Shape: `away` as `along`; its last row is not read and may be left out.
NCDataMatrix<float> SequentialScores(const NCDataMatrix<float>& X, const NCDataMatrix<float>& along,
                                 const NCDataMatrix<float>& away);

}  // namespace kalmia
