#pragma once

#include "kalmia/containers/BoolVector.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/containers/NCStringVector.h"
#include "kalmia/support/Export.h"

namespace kalmia {
class WaveletStep;
}

/// Periodic discrete wavelet transforms of signals, whole or in the basis of wavelet packets that suits a signal best,
/// their inverses, and the bookkeeping of compressed coefficients. All indices run from 1. Only static operations. They
/// change nothing but their `out` arguments and take no share of an input, so they may run on several threads, also on
/// the same input.
///
/// In general: J is the smallest integer with 2^J >= n, n being the length of a signal; P = 2^J. A refused input gives
/// null, nothing was written then, and nothing is thrown but std::bad_alloc. A null `out` asks for a new object, which
/// is the caller's; otherwise `out` itself is the result; it may be the input. Filters are read, never taken over; they
/// may be any pair of the caller's own, of one even length.
///
/// Missing: holes of a signal are filled along straight lines first, flat at both ends; a signal without a present cell
/// is refused. A coefficient that is exactly -99 counts as a hole of its vector, as in all vectors: BackwardTransform
/// takes it for 0. NaN and infinity are cells like others: they spread to all that the taps reach, and through a trend
/// to every coefficient.
///
/// Numbers: filters are floats; a level sums in double in the order of the taps and rounds each coefficient to float.
/// An orthogonal family keeps the sum of squares, and transform and inverse give the signal back, to that rounding.
/// Cost: n L multiplications for each level and 2 n L for all, L being the length of the filters.
/// Source: Mallat (1989), IEEE Trans. Pattern Anal. Mach. Intell. 11, 674-693; filters: WaveletTables.cpp.
class KALMIA_EXPORT Wavelet {
 public:
  /// What is taken off a signal before its transform: each as NCDataVector::DetrendMean and DetrendLinear do it.
  enum DetrendMode : int { DetrendNone = 0, DetrendMean = 1, DetrendLinear = 2 };

  /// Families of filters. The first four are orthogonal, the others biorthogonal: their decomposition and their
  /// reconstruction differ.
  enum WaveletFunctionType : int {
    FunctionBeylkin = 0,
    FunctionCoiflet = 1,
    FunctionDaubechies = 2,
    FunctionSymmlet = 3,
    FunctionBiorthogonal1 = 4,  ///< splines, 1 to 3 by the first order of the pair
    FunctionBiorthogonal2 = 5,
    FunctionBiorthogonal3 = 6,
    FunctionBiorthogonal4 = 7,  ///< the pair 4.4, known as 9/7
    FunctionBiorthogonal5 = 8,  ///< the pair 5.5
    FunctionBiorthogonal6 = 9   ///< the pair 6.8
  };

  /// A pair of filters. Copies share them, and the destructor leaves them alone: whoever holds the pair calls CleanUp.
  struct WaveletFilters {
    NCDataVector<float>* highPass = nullptr;  ///< of the detail coefficients
    NCDataVector<float>* lowPass = nullptr;   ///< of the approximation coefficients

    void CleanUp();  ///< deletes both and nulls them
  };

  // Names. Those of modes and families are language strings. Returned texts are neither to be written nor freed.
  static const char* DetrendStr(DetrendMode mode);  ///< null for no mode
  /// The mode of that very name, or `otherwise`.
  static DetrendMode Detrend(const char* text, DetrendMode otherwise);
  static const char* WaveletFunctionStr(WaveletFunctionType type);  ///< null for no family
  static WaveletFunctionType WaveletFunction(const char* text, WaveletFunctionType otherwise);

  // Filters. The orders of a family count from 1 and bear names such as "4", that of the only Beylkin filter is "N/A".
  static int GetNumFunctionOrder(WaveletFunctionType type);  ///< 0 for no family
  static char* GetFunctionOrderName(WaveletFunctionType type, int order);  ///< null out of range
  static int GetFunctionOrderIndex(WaveletFunctionType type, const char* name);  ///< 0 if no order has the name
  /// New filters for the forward and the backward transforms; both null out of range. With h of an orthogonal family,
  /// in time order and of unit length, L taps, the decomposition has lowPass[i] = h[L + 1 - i] and highPass[i] = h[i],
  /// negated at even i; the reconstruction lowPass = h and highPass[i] = h[L + 1 - i], negated at odd i. With D and R
  /// of a biorthogonal one, each of sum sqrt(2): lowPass[i] = D[L + 1 - i], highPass[i] = R[i] negated at odd i, and
  /// lowPass = R, highPass[i] = D[L + 1 - i] negated at even i.
  static WaveletFilters GetDecompositionFilter(WaveletFunctionType type, int order);
  static WaveletFilters GetReconstructionFilter(WaveletFunctionType type, int order);

  // Transforms. Of a signal of P cells, level by level on the cells that the low pass left: approximation first, then
  // details from coarse to fine. Of any other length, with `pad` the signal is continued to P cells first (a ramp from
  // its end to its start; one cell alone is half of end minus start). Without it there are J - 1 levels, and where the
  // number of cells is odd the last one stays behind as it is: GetNumInDetails and GetMovedIndexses tell where.
  //
  // Boundaries are periodic, windows begin (low pass) or end (high pass) at their pair of cells. PyWavelets' mode
  // "periodization" has the same boundaries and scale but centred windows: with c = L / 2 - 1, one level here is
  // dwt(roll(x, -c))[0] and, negated for orthogonal families, dwt(roll(x, c))[1] there.
  //
  // `mean` and `slope` receive what the mode takes off. What it does not ask for stays unwritten, and so does a line of
  // less than two cells. A line is subtracted as intercept + i slope and given back as mean + (i - 1) slope: after
  // DetrendLinear a round trip comes back lower by one slope. A mean, or a sum, of exactly -99 counts as none:
  // DetrendMean takes nothing off then, yet `mean` is -99, a hole among the means of a table. The way back adds what it
  // is given, and the signal comes back lower by 99: give it 0 then.

  /// Refused: a null input or filter, a signal without a present cell, padding beyond 2^30 cells.
  static NCDataVector<float>* ForwardTransform(const NCDataVector<float>* in, const WaveletFilters& filters,
                                               DetrendMode mode, long double& mean, long double& slope,
                                               NCDataVector<float>* out, bool pad);
  /// Each row of `in` as a signal on its own. `out` is resized. `means` gets a cell per signal in all modes but 0,
  /// `slopes` in mode 2: null ones are replaced by new vectors then, others must have the right length.
  /// If memory runs out in between, some signals' results are in an `out` that had the size already, and in given
  /// `means` and `slopes`; nothing else was written.
  static NCDataMatrix<float>* ForwardTransformObswise(const NCDataMatrix<float>* in, const WaveletFilters& filters,
                                                      DetrendMode mode, NCDataVector<float>*& means,
                                                      NCDataVector<float>*& slopes, NCDataMatrix<float>* out, bool pad);
  /// The same with columns as signals. Needs the memory of the table once more, or twice; if that runs out, `out` is
  /// as it was.
  static NCDataMatrix<float>* ForwardTransformVarwise(const NCDataMatrix<float>* in, const WaveletFilters& filters,
                                                      DetrendMode mode, NCDataVector<float>*& means,
                                                      NCDataVector<float>*& slopes, NCDataMatrix<float>* out, bool pad);
  /// The first `originalLength` cells of the inverse, with the trend put back. Missing: holes count as 0. `in` has a
  /// power of two of cells, or `originalLength` (then as transformed without padding). Refused: null, another length,
  /// an `out` that has not `originalLength` cells, an `originalLength` above that of `in` or below 0.
  static NCDataVector<float>* BackwardTransform(const NCDataVector<float>* in, const WaveletFilters& filters,
                                                DetrendMode mode, int originalLength, double mean, double slope,
                                                NCDataVector<float>* out);

  /// Time-scale picture of the coefficients of a signal of P cells: 2 J + 1 rows by P columns, with `limit` at most
  /// 256. Level l from the coarsest (1) to the finest (J) lies in row 2 J - 2 (l - 1), the rows between are 0. Unit:
  /// percent of the sum of squares, after the scale of each level, sqrt(2) for each level below the finest and one
  /// more, was divided out; the first coefficient is left out. A column stands for P / columns points in time and shows
  /// the largest value among them. Refused: null, a length that is no power of two.
  /// Missing: not provided for. A hole is the number -99; but a coefficient that becomes exactly -99 without its scale
  /// (-198 where that is 2) is no part of the sum of squares, and is not divided by it: it shows as 980100.
  /// Not finite, the first coefficient aside: with a NaN the rows of all levels are NaN. Infinities without a NaN show
  /// as NaN, and everything beside them as 0.
  static NCDataMatrix<float>* PowerSpectrum(const NCDataVector<float>* in, bool limit, NCDataMatrix<float>* out);

  /// Share of each level in the sum of squares of the coefficients of all rows, finest level first. Nothing is divided
  /// where all are 0. With a power of two of columns there are J levels, of details alone: the approximation, column 1,
  /// does not count. With any other number there are J - 1, and a cell of a level's approximations that was set aside
  /// counts with its details. In the coarsest that is column 1, so that of signals with a mean nearly all energy is
  /// there. The last of an odd number of columns does not count.
  /// Missing: holes are left out, but a column that has nothing else enters with GetSS(), -99.
  /// Throws NCError: no level (less than two columns, or null); a sum that is no number, infinite or denormal as float.
  static NCDataVector<float> CalcWCEnergy(const NCDataMatrix<float>* coefficients);

  // Best basis. Wavelet packets split details like approximations: level l has 2^(l - 1) nodes, blocks of equal size in
  // the order of their frequency. Decisions say for the nodes of levels 1 to J, at Node(level, index), whether they are
  // split; P - 1 in all. Signals of other lengths are padded to P, as above.

  /// Position of a node in the full binary tree: 2^(level - 1) + index - 1. Levels 1 to 31; neither number is checked.
  static int Node(int level, int index);

  /// The basis in which the energy of the signal has the smallest entropy; a tie keeps a node whole. `decisions` or, if
  /// null, a new vector. Refused: a null input or filter, no present cell, decisions of another size than P - 1.
  /// Biorthogonal filters do not keep the energy: their shares of it need not add up to 1, and one above 1 counts
  /// against the entropy, so that the sum found smallest is not that of a distribution. A cell that is not finite
  /// leaves no entropy but 0, and no node split.
  /// Cost: n L multiplications and n logarithms, which take most of the time, for each of J levels.
  /// Source: Coifman & Wickerhauser (1992), IEEE Trans. Inf. Theory 38, 713-718.
  static BoolVector* FindBestBasis(const NCDataVector<float>* in, const WaveletFilters& filters, DetrendMode mode,
                                   BoolVector* decisions);
  /// That of one row, or of the column means for row 0. Refused also: a row that is not there.
  static BoolVector* FindBestBasisObswise(const NCDataMatrix<float>* in, int row, WaveletFilters filters,
                                          DetrendMode mode, BoolVector* decisions);
  /// The P coefficients in the basis of the decisions. Refused: as ForwardTransform; null decisions or not P - 1 of
  /// them; an `out` that has not P cells. Where memory runs out, `mean` and `slope` may be written already.
  static NCDataVector<float>* ForwardTransformBestBasis(const NCDataVector<float>* in, const BoolVector* decisions,
                                                        WaveletFilters filters, DetrendMode mode, long double& mean,
                                                        long double& slope, NCDataVector<float>* out);
  /// Every row or every column in one and the same basis; `means`, `slopes` and `out` as in ForwardTransformObswise.
  static NCDataMatrix<float>* ForwardTransformBestBasisObswise(const NCDataMatrix<float>* in,
                                                               const BoolVector* decisions, WaveletFilters filters,
                                                               DetrendMode mode, NCDataVector<float>*& means,
                                                               NCDataVector<float>*& slopes, NCDataMatrix<float>* out);
  static NCDataMatrix<float>* ForwardTransformBestBasisVarwise(const NCDataMatrix<float>* in,
                                                               const BoolVector* decisions, WaveletFilters filters,
                                                               DetrendMode mode, NCDataVector<float>*& means,
                                                               NCDataVector<float>*& slopes, NCDataMatrix<float>* out);
  /// The inverse. Refused: null, a length that is no power of two, holes (and so a coefficient of exactly -99, which
  /// BackwardTransform takes for 0), decisions of another size, an `out` that has not `originalLength` cells, an
  /// `originalLength` above the length or below 0.
  static NCDataVector<float>* BackwardTransformBestBasis(const NCDataVector<float>* in, const BoolVector* decisions,
                                                         WaveletFilters filters, DetrendMode mode, int originalLength,
                                                         double mean, double slope, NCDataVector<float>* out);

  // Compressed vectors of coefficients: some cells of a vector, and the list of their positions.

  /// out(k) = in[indices(k)]. Refused: null; a vector longer than the list (so that a list of fewer cells than the
  /// vector has is refused: NCDataVector::Reduce takes any list); an `out` that has not the size of the list; a
  /// position that is not in the vector.
  static NCDataVector<float>* CompressVector(const NCDataVector<float>* in, const NCIntegralVector<int, -99>* indices,
                                             NCDataVector<float>* out);
  /// 0 but for out(indices(k)) = in[k]. `out` has `originalLength` cells, with `padded` the next power of two. Refused:
  /// null; more positions than cells, positions beyond them; not one cell of `in` for each; an `out` of another length;
  /// a negative length, padding beyond 2^30 cells.
  static NCDataVector<float>* UncompressVector(const NCDataVector<float>* in, const NCIntegralVector<int, -99>* indices,
                                               int originalLength, NCDataVector<float>* out, bool padded);
  /// Sizes of the detail blocks of a transform without padding, from the finest on. A cell that is set aside counts
  /// with the details of the level that left it over, but for that of an odd `length` itself, and but for a block of
  /// one. `length` >= 0, not checked; none without levels.
  static NCIntegralVector<int, -99> GetNumInDetails(int length, int levels);
  /// Positions of the cells that a transform without padding sets aside, from the end on. `length` >= 0, not checked.
  static NCIntegralVector<int, -99> GetMovedIndexses(int length, int levels);

  /// "prefix_1" to "prefix_count"; none for a count below 1.
  static NCStringVector* MakeVarNames(const char* prefix, int count);
  /// "prefix_i" for each index i; null without indices.
  static NCStringVector* MakeVarNames(const char* prefix, const NCIntegralVector<int, -99>* indices);
  /// "prefix_d_i" with the depth d of the block in which index i lies. Refused: null, no decisions or not P - 1 of
  /// them, an index outside of 1 to P.
  static NCStringVector* MakeVarNames(const char* prefix, const NCIntegralVector<int, -99>* indices,
                                      const BoolVector* decisions);

 protected:
  // The published filters as new vectors of floats; null out of range and for the other kind of family.
  static NCDataVector<float>* GetWaveletFunction(WaveletFunctionType type, int order);   ///< of an orthogonal family
  static NCDataVector<float>* GetWaveletFunctionD(WaveletFunctionType type, int order);  ///< decomposition
  static NCDataVector<float>* GetWaveletFunctionR(WaveletFunctionType type, int order);  ///< reconstruction

  static void DetrendVector(NCDataVector<float>* v, DetrendMode mode, long double& mean, long double& slope);
  /// Adds the mean in mode 1, mean + (i - 1) slope in mode 2, to every cell.
  static void RetrendVector(NCDataVector<float>* v, DetrendMode mode, double mean, double slope);
  /// Appends cells to a vector that is not empty, up to `length`: half the difference of end and start where one is
  /// wanted, else a ramp from its end to its start.
  static void PadVector(NCDataVector<float>* v, int length);

  // One level on the n cells from the smaller of lowStart and highStart on, where n is even (unchecked): halves of the
  // coefficients begin at lowStart and highStart. `in` and `out` may be one vector.
  static void SubForwardTransform(const NCDataVector<float>* in, NCDataVector<float>* out, int n, int lowStart,
                                  int highStart, const WaveletFilters& filters);
  static void SubBackwardTransform(const NCDataVector<float>* in, NCDataVector<float>* out, int n, int lowStart,
                                   int highStart, const WaveletFilters& filters);

  /// Shannon entropy -sum x ln x of the shares x = (cell / norm)^2 of `count` cells from `start`, unchecked, in double.
  static double CalcEntropy(const NCDataVector<float>* v, int start, int count, double norm);
  /// The entropies of all blocks of packets of v, which has a power of two of cells, by Node: 2 P - 1 cells.
  static NCDataVector<float>* MakeEntropyTree(const NCDataVector<float>* v, WaveletFilters filters);
  /// From the leaves up: splits what two blocks describe with less entropy than one. The tree then holds the entropies
  /// of the best bases.
  static void GetBestBasisTree(NCDataVector<float>* tree, BoolVector* decisions);
  /// The node and what the decisions split below it, from the node's block of `work` to that of `out`, in the order of
  /// frequency with `sequency`, else with the low pass always first. `work`, which is only read, and `out` have the
  /// same size.
  static void SubForwardTransFormBestBasis(NCDataVector<float>* work, NCDataVector<float>* out,
                                           const BoolVector* decisions, const WaveletFilters& filters, int level,
                                           int index, bool sequency);
  static void SubBackwardTransFormBestBasis(NCDataVector<float>* work, NCDataVector<float>* out,
                                            const BoolVector* decisions, const WaveletFilters& filters, int level,
                                            int index, bool sequency);

 private:
  /// The signal with its holes filled, its trend taken off, and padded to `length`.
  static void PrepareSignal(const NCDataVector<float>& in, DetrendMode mode, long double& mean, long double& slope,
                            int length, NCDataVector<float>& work);
  /// All levels of the prepared signal.
  static void TransformSignal(const NCDataVector<float>& in, kalmia::WaveletStep& step, DetrendMode mode,
                              long double& mean, long double& slope, int length, NCDataVector<float>& out);
  /// The first `length` of the inverse's cells with the trend put back, in `out` or a new vector.
  static NCDataVector<float>* Restored(const float* cells, int length, DetrendMode mode, double mean, double slope,
                                       NCDataVector<float>* out);
  static void TransformSignalBestBasis(const NCDataVector<float>& in, const BoolVector& decisions,
                                       const WaveletFilters& filters, DetrendMode mode, long double& mean,
                                       long double& slope, NCDataVector<float>& out);
};
