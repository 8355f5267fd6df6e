#include "kalmia/signal/internal/Correlation.h"

#include <algorithm>
#include <complex>
#include <vector>

#include "kalmia/signal/internal/FourierTransform.h"

namespace kalmia {

namespace {

using Complex = std::complex<double>;

/// Four times the spectrum A conj(B), cells 0 to size / 2, of real a and b, from the transform C of a + i b. By their
/// symmetry 2 A(j) = C(j) + conj(C(size - j)) and 2 i B(j) = C(j) - conj(C(size - j)).
std::vector<Complex> ProductOfSpectra(const double* re, const double* im, int size) {
  std::vector<Complex> product(static_cast<std::size_t>(size / 2) + 1);
  for (int j = 0; j <= size / 2; ++j) {
    const int mirror = j == 0 ? 0 : size - j;
    const double aRe = re[j] + re[mirror], aIm = im[j] - im[mirror];
    const double bRe = im[j] + im[mirror], bIm = re[mirror] - re[j];
    product[static_cast<std::size_t>(j)] = {aRe * bRe + aIm * bIm, aIm * bRe - aRe * bIm};
  }
  return product;
}

/// The cells of even and of odd number that `spectrum` is the transform of, times size, as real and imaginary part of
/// the buffers' first half: the even ones' transform is E = (S(k) + S(k + half)) / 2, the odd ones' is O with
/// w^k O = (S(k) - S(k + half)) / 2, and S(k + half) = conj(S(half - k)).
void TransformBackToReal(const std::vector<Complex>& spectrum, int size, FourierTransform* transform) {
  const int half = size / 2;
  for (int k = 0; k < half; ++k) {
    const Complex s = spectrum[static_cast<std::size_t>(k)];
    const Complex mirrored = std::conj(spectrum[static_cast<std::size_t>(half - k)]);
    const Complex even = s + mirrored, gap = s - mirrored;
    const double rootRe = transform->RootRe(k, size), rootIm = -transform->RootIm(k, size);
    const Complex odd = {gap.real() * rootRe - gap.imag() * rootIm, gap.real() * rootIm + gap.imag() * rootRe};
    transform->Re()[k] = even.real() - odd.imag();
    transform->Im()[k] = even.imag() + odd.real();
  }
  transform->Backward(half);
}

}  // namespace

void Correlate(const float* a, const float* b, int size, float* result) {
  if (size < 2) {
    std::fill(result + 1, result + 1 + size, 0.0F);
    return;
  }
  FourierTransform transform(size);
  std::copy(a + 1, a + 1 + size, transform.Re());
  std::copy(b + 1, b + 1 + size, transform.Im());
  transform.Forward(size);
  const std::vector<Complex> spectrum = ProductOfSpectra(transform.Re(), transform.Im(), size);
  TransformBackToReal(spectrum, size, &transform);
  const double scale = 0.25 / size;
  for (int i = 0; i < size / 2; ++i) {
    result[2 * i + 1] = static_cast<float>(transform.Re()[i] * scale);
    result[2 * i + 2] = static_cast<float>(transform.Im()[i] * scale);
  }
}

}  // namespace kalmia
