#pragma once

#include <memory>
#include <vector>

#include "kalmia/containers/NCDataVector.h"

namespace kalmia {

/// One level of the periodic wavelet transform with a pair of filters of L taps, and its inverse. Sums run in double in
/// the order of the taps, results are rounded to float. Of a block of n = 2 h cells (all from 0 here, indices modulo n
/// or h):
///   low[k]  = sum over i < L of lowPass[i + 1] block[2 k + L - 1 - i]
///   high[k] = sum over i < L of highPass[i + 1] block[2 k + 1 - i]
/// and back, over the taps i whose parity is that of j:
///   block[j] = sum of lowPass[i + 1] low[(j - i) / 2] + highPass[i + 1] high[(j - i) / 2 + L / 2 - 1].
/// Each filter counts with its own L. The object keeps its working memory from call to call, and so belongs to one
/// thread. Cost: n L multiplications a call.
class WaveletStep {
 public:
  WaveletStep(const NCDataVector<float>& lowPass, const NCDataVector<float>& highPass);

  /// n even, at least 2; `block` may hold the results.
  void Forward(const float* block, float* low, float* high, int n);
  /// n even, at least 2, the size of the result; `block` may hold what is read.
  void Backward(const float* low, const float* high, float* block, int n);

 private:
  /// A cell of one of the two periodic sequences that a sum runs over.
  double* Cell(int sequence, int index);
  void Prepare(int half);            ///< room for two sequences of `half` cells with their periodic continuation
  void Continue(int sequence);       ///< the cells around those that were filled in

  std::vector<double> low_, high_;   ///< the taps
  int margin_;                       ///< cells that a sum may reach beyond the ends of a sequence
  int half_ = 0;                     ///< cells of a sequence
  int room_ = -1;                    ///< the largest half_ so far, for which there is memory
  std::unique_ptr<double[]> sequences_;  ///< two of margin_ + half_ + margin_ cells
  std::vector<const double*> from_;  ///< where the cells of each tap begin
  std::vector<double> taps_;
  std::unique_ptr<float[]> results_;
};

}  // namespace kalmia
