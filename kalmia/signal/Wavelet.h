#pragma once

#include "kalmia/containers/BoolVector.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/containers/NCStringVector.h"
#include "kalmia/support/Export.h"

namespace kalmia {
class WaveletStep;
}

/// Periodic discrete wavelet transforms of signals and their inverses, plain or in the best basis of wavelet packets,
/// and the bookkeeping of compressed coefficients. All indices count from 1. All operations are static. They write only
/// their `out` arguments and share no input, so they may run on several threads, also on the same input.
///
/// In general: for a signal of length n, J is the smallest integer with 2^J >= n, and P = 2^J. A refused input gives
/// null and writes nothing; only std::bad_alloc is thrown. With a null `out` the result is a new object that the caller
/// owns; otherwise it is `out`, which may be the input. Filters are only read; they may be any pair of one even length.
///
/// Missing: holes of a signal are filled first, along straight lines, flat at both ends; a signal without present cells
/// is refused. A coefficient of exactly -99 counts as a hole; BackwardTransform reads it as 0. NaN and infinity are
/// ordinary cells: they spread as far as the taps reach, and through a trend to every coefficient.
///
/// Numbers: filters are floats; a level sums in double in the order of the taps and rounds each coefficient to float.
/// An orthogonal family keeps the sum of squares, and transform and inverse give the signal back, to that rounding.
/// Cost: n L multiplications for each level and 2 n L for all, L being the length of the filters.
/// Source: Mallat (1989), IEEE Trans. Pattern Anal. Mach. Intell. 11, 674-693; filters: WaveletTables.cpp.
class KALMIA_EXPORT Wavelet {
 public:
  /// The trend removed from a signal before its transform, by NCDataVector::DetrendMean or DetrendLinear.
  enum DetrendMode : int { DetrendNone = 0, DetrendMean = 1, DetrendLinear = 2 };

  /// Families of filters. The first four are orthogonal. The others are biorthogonal: decomposition and reconstruction
  /// differ.
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

  /// A pair of filters. Copies share the filters, and the destructor does not free them: the owner calls CleanUp.
  struct WaveletFilters {
    NCDataVector<float>* highPass = nullptr;  ///< of the detail coefficients
    NCDataVector<float>* lowPass = nullptr;   ///< of the approximation coefficients

    void CleanUp();  ///< deletes both and nulls them
  };

  // Names. Those of modes and families are language strings. The caller must neither write nor free returned texts.
  static const char* DetrendStr(DetrendMode mode);  ///< null for no mode
  /// The mode of exactly this name, or `otherwise`.
  static DetrendMode Detrend(const char* text, DetrendMode otherwise);
  static const char* WaveletFunctionStr(WaveletFunctionType type);  ///< null for no family
  static WaveletFunctionType WaveletFunction(const char* text, WaveletFunctionType otherwise);

  // Filters. The orders of a family count from 1 and have names such as "4"; the only Beylkin filter is "N/A".
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

  // Transforms. A signal of P cells is transformed level by level, each on the low-pass cells of the level before; the
  // result has the approximation first, then details from coarse to fine. With `pad`, a signal of another length is
  // first extended to P cells (a ramp from its end to its start; a single new cell is half of end minus start). Without
  // `pad` there are J - 1 levels, and the last of an odd number of cells is set aside unchanged; GetNumInDetails and
  // GetMovedIndexses tell its place.
  //
  // Boundaries are periodic, windows begin (low pass) or end (high pass) at their pair of cells. PyWavelets' mode
  // "periodization" has the same boundaries and scale but centred windows: with c = L / 2 - 1, one level here is
  // dwt(roll(x, -c))[0] and, negated for orthogonal families, dwt(roll(x, c))[1] there.
  //
  // `mean` and `slope` receive the removed trend. They stay unwritten if the mode has none, and for a line through
  // fewer than two cells. A line is subtracted as intercept + i slope but added back as mean + (i - 1) slope, so a
  // round trip with DetrendLinear is one slope too low. If the mean or the sum is exactly -99, DetrendMean removes
  // nothing, yet `mean` is -99 (a hole among the means of a table). Pass 0 to the inverse then: it adds what it is
  // given.

  /// Refused: a null input or filter, a signal without a present cell, padding beyond 2^30 cells.
  static NCDataVector<float>* ForwardTransform(const NCDataVector<float>* in, const WaveletFilters& filters,
                                               DetrendMode mode, long double& mean, long double& slope,
                                               NCDataVector<float>* out, bool pad);
  /// Transforms each row of `in` as a signal. `out` is resized. `means` gets a cell per signal in all modes but 0,
  /// `slopes` in mode 2; a null one is replaced by a new vector, another must have the right length.
  /// std::bad_alloc may leave the results of some signals in given `means` and `slopes`, and in an `out` that already
  /// had the size; nothing else is written.
  static NCDataMatrix<float>* ForwardTransformObswise(const NCDataMatrix<float>* in, const WaveletFilters& filters,
                                                      DetrendMode mode, NCDataVector<float>*& means,
                                                      NCDataVector<float>*& slopes, NCDataMatrix<float>* out, bool pad);
  /// The same with columns as signals. Takes the memory of the table once or twice more; std::bad_alloc leaves `out`
  /// unchanged.
  static NCDataMatrix<float>* ForwardTransformVarwise(const NCDataMatrix<float>* in, const WaveletFilters& filters,
                                                      DetrendMode mode, NCDataVector<float>*& means,
                                                      NCDataVector<float>*& slopes, NCDataMatrix<float>* out, bool pad);
  /// The first `originalLength` cells of the inverse, with the trend added back. Missing: holes count as 0. `in` has a
  /// power of two of cells, or `originalLength` cells (transformed without padding). Refused: null, another length, an
  /// `out` of other than `originalLength` cells, an `originalLength` above that of `in` or below 0.
  static NCDataVector<float>* BackwardTransform(const NCDataVector<float>* in, const WaveletFilters& filters,
                                                DetrendMode mode, int originalLength, double mean, double slope,
                                                NCDataVector<float>* out);

  /// Time-scale picture of the coefficients of a signal of P cells: 2 J + 1 rows by P columns, with `limit` at most
  /// 256. Level l from the coarsest (1) to the finest (J) lies in row 2 J - 2 (l - 1), the rows between are 0. Unit:
  /// percent of the sum of squares, after the scale of each level, sqrt(2) for each level below the finest and one
  /// more, was divided out; without the first coefficient. A column stands for P / columns points in time and shows the
  /// largest value among them. Refused: null, a length that is no power of two.
  /// Missing: not handled; a hole is the number -99. A coefficient that is exactly -99 after division by its scale
  /// (-198 for a scale of 2) is left out of the sum of squares and not divided by it: it shows as 980100.
  /// Not finite (except the first coefficient): a NaN makes the rows of all levels NaN. Infinities without a NaN show
  /// as NaN, and all other values as 0.
  static NCDataMatrix<float>* PowerSpectrum(const NCDataVector<float>* in, bool limit, NCDataMatrix<float>* out);

  /// Share of each level in the sum of squares of the coefficients of all rows, finest level first; zeros if all are 0.
  /// For a power of two of columns there are J levels of details; the approximation, column 1, does not count. For
  /// other numbers there are J - 1 levels, and approximations set aside count with the details of their level. In the
  /// coarsest level that includes column 1, so signals with a mean have nearly all energy there. The last of an odd
  /// number of columns does not count.
  /// Missing: holes are left out, but a column of holes alone enters as its GetSS(), -99.
  /// Throws NCError: no level (null, or fewer than two columns); a sum that is NaN, infinite or denormal as float.
  static NCDataVector<float> CalcWCEnergy(const NCDataMatrix<float>* coefficients);

  // Best basis. Wavelet packets split details as well as approximations: level l has 2^(l - 1) nodes, blocks of equal
  // size ordered by frequency. Decisions tell which nodes of levels 1 to J, at Node(level, index), are split; there are
  // P - 1 of them. Signals of other lengths are padded to P, as above.

  /// Position of a node in the full binary tree: 2^(level - 1) + index - 1. Levels 1 to 31; neither number is checked.
  static int Node(int level, int index);

  /// The basis in which the energy of the signal has the smallest entropy; a tie keeps a node whole. `decisions` or, if
  /// null, a new vector. Refused: a null input or filter, no present cell, decisions of another size than P - 1.
  /// Biorthogonal filters do not keep the energy: their shares need not add up to 1, and a share above 1 lowers the
  /// entropy. A cell that is not finite makes every entropy 0 and splits no node.
  /// Cost: n L multiplications and n logarithms, which take most of the time, for each of J levels.
  /// Source: Coifman & Wickerhauser (1992), IEEE Trans. Inf. Theory 38, 713-718.
  static BoolVector* FindBestBasis(const NCDataVector<float>* in, const WaveletFilters& filters, DetrendMode mode,
                                   BoolVector* decisions);
  /// That of one row, or of the column means for row 0. Refused also: a row that is not there.
  static BoolVector* FindBestBasisObswise(const NCDataMatrix<float>* in, int row, WaveletFilters filters,
                                          DetrendMode mode, BoolVector* decisions);
  /// The P coefficients in the basis of the decisions. Refused: as ForwardTransform; null decisions, or other than P -
  /// 1 of them; an `out` of other than P cells. std::bad_alloc may leave `mean` and `slope` written.
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

  /// out(k) = in[indices(k)]. Refused: null; a list shorter than the vector (NCDataVector::Reduce takes any list); an
  /// `out` of another size than the list; a position outside the vector.
  static NCDataVector<float>* CompressVector(const NCDataVector<float>* in, const NCIntegralVector<int, -99>* indices,
                                             NCDataVector<float>* out);
  /// 0 but for out(indices(k)) = in[k]. `out` has `originalLength` cells, with `padded` the next power of two. Refused:
  /// null; more positions than cells, positions beyond them; not one cell of `in` for each; an `out` of another length;
  /// a negative length, padding beyond 2^30 cells.
  static NCDataVector<float>* UncompressVector(const NCDataVector<float>* in, const NCIntegralVector<int, -99>* indices,
                                               int originalLength, NCDataVector<float>* out, bool padded);
  /// Sizes of the detail blocks of a transform without padding, from the finest on. A cell set aside counts with the
  /// details of its level, except the last cell of an odd `length`, and except in a block of one. `length` >= 0, not
  /// checked; no sizes without levels.
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
