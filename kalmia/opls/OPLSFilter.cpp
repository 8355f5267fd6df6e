#include "kalmia/opls/OPLSFilter.h"

namespace kalmia {

NCDataMatrix<float> ScoresAlong(const NCDataMatrix<float>& table, const NCDataMatrix<float>& along,
                                const NCDataMatrix<float>& away) {
  NCDataMatrix<float> left = table, scores;
  for (int a = 1; a <= along.SizeRows(); ++a) {
    scores.InsertRow(a, left.SpecialNipalsRegressRowsFix(along[a], nullptr, 0));
    if (a < along.SizeRows()) left.AddVprimV(scores[a], away[a], -1.0F);
  }
  return scores;
}

NCDataMatrix<float> WithoutScoresAlong(const NCDataMatrix<float>& table, const NCDataMatrix<float>& along) {
  NCDataMatrix<float> left = table;
  for (int a = 1; a <= along.SizeRows(); ++a)
    left.AddVprimV(left.SpecialNipalsRegressRowsFix(along[a], nullptr, 0), along[a], -1.0F);
  return left;
}

}  // namespace kalmia
