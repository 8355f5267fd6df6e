#pragma once

#include <memory>

namespace kalmia {

/// Complex Fourier transforms of lengths that are powers of two, in double, with tables of roots of unity and buffers
/// that are made once for all of them. One object serves one thread.
///   Forward   y(k) = sum over j of x(j) e^(+2 pi i j k / size),   0 <= j, k < size
///   Backward  the same with the sign of the exponent turned
/// Neither scales, so one after the other gives size times what was there.
/// Cost: size log2(size), in passes that each combine four (at odd powers once two) transforms of a part into one of
/// the whole. Every pass writes in the order that the next one reads, so no bit reversal is needed (Stockham's form:
/// Cochran et al. 1967, IEEE Trans. Audio Electroacoust. 15, 45-55).
class FourierTransform {
 public:
  explicit FourierTransform(int largest);  ///< the largest length to come: a power of two, not checked
  FourierTransform(const FourierTransform&) = delete;
  FourierTransform& operator=(const FourierTransform&) = delete;

  /// The `largest` cells of the real and the imaginary part, from index 0: what is put there is transformed in place.
  /// Each transform may move them, so ask again after it.
  double* Re() { return re_; }
  double* Im() { return im_; }
  void Forward(int size);   ///< a power of two, at most `largest`: not checked
  void Backward(int size);

  /// e^(2 pi i k / size) for 0 <= k < size / 2, of any size from 2 to `largest` that is a power of two.
  double RootRe(int k, int size) const { return rootRe_[size / 2 + k]; }
  double RootIm(int k, int size) const { return rootIm_[size / 2 + k]; }

 private:
  void SwapBuffers();

  /// All of the buffers and roots, in one block that is never small: smaller ones would go back to the system after
  /// every use, and fetching them anew takes longer than a transform. What is not used of it is not touched.
  std::unique_ptr<double[]> cells_;
  double *re_, *im_, *nextRe_, *nextIm_;
  double *rootRe_, *rootIm_;  ///< of size s at s / 2 + k: 1 + 2 + 4 + ... cells, the first one unused
};

}  // namespace kalmia
