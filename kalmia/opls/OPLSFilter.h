#pragma once

#include "kalmia/containers/NCDataMatrix.h"

namespace kalmia {

/// One score row per row a of `along`: t = E.SpecialNipalsRegressRowsFix(along[a]), after which t away[a]' is taken out
/// of E. `table` stays as it is.
NCDataMatrix<float> ScoresAlong(const NCDataMatrix<float>& table, const NCDataMatrix<float>& along,
                                const NCDataMatrix<float>& away);

/// `table` less t away[a]' for the scores of ScoresAlong.
NCDataMatrix<float> WithoutScoresAlong(const NCDataMatrix<float>& table, const NCDataMatrix<float>& along);

}  // namespace kalmia
