#include "app/PlsFit.h"

#include <cmath>
#include <limits>
#include <utility>

#include "app/ConsoleProgress.h"
#include "app/DisplayText.h"
#include "app/Failure.h"
#include "app/Interrupt.h"
#include "app/Numbers.h"
#include "kalmia/containers/Missing.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/pcapls/PLSCrossValidation.h"
#include "kalmia/support/NCError.h"

namespace kalmia::app {

namespace {

/// What is left of X, as a share of its sum of squares, below which there is nothing but the rounding of float cells:
/// some 2^-24 of each, squared.
constexpr double kExhausted = 1e-14;
constexpr auto kNothingLeft = "nothing is left of X";

/// Sums of squares of a table and of what is left of it.
struct SumOfSquares {
  double table = 0.0;
  double residual = 0.0;

  double Described() const { return table > 0.0 ? 1.0 - residual / table : std::numeric_limits<double>::quiet_NaN(); }
};

/// Of column c (from 1), over the cells present in both: a row that the model cannot describe has no residual.
SumOfSquares ColumnSums(const NCDataMatrix<float>& table, const NCDataMatrix<float>& residual, int c) {
  SumOfSquares sums;
  for (int r = 1; r <= table.SizeRows(); ++r) {
    const double cell = table[r][c];
    const double left = residual[r][c];
    if (cell == kMissing || left == kMissing) continue;
    sums.table += cell * cell;
    sums.residual += left * left;
  }
  return sums;
}

SumOfSquares TableSums(const NCDataMatrix<float>& table, const NCDataMatrix<float>& residual) {
  SumOfSquares sums;
  for (int r = 1; r <= table.SizeRows(); ++r) {
    const NCDataVector<float>& row = table[r];
    const NCDataVector<float>& left = residual[r];
    for (int c = 1; c <= table.SizeColumns(); ++c) {
      if (row[c] == static_cast<float>(kMissing) || left[c] == static_cast<float>(kMissing)) continue;
      sums.table += static_cast<double>(row[c]) * row[c];
      sums.residual += static_cast<double>(left[c]) * left[c];
    }
  }
  return sums;
}

NCDataVector<float> ColumnSumsOfSquares(const NCDataMatrix<float>& table) {
  NCDataVector<float> sums(table.SizeColumns());
  for (int c = 1; c <= table.SizeColumns(); ++c) sums(c, static_cast<float>(table.GetColumnSS(c, 0.0)));
  return sums;
}

class Extraction {
 public:
  explicit Extraction(const FitTask& task)
      : task_(task),
        sink_(new ConsoleProgress(&line_)),
        progress_(std::unique_ptr<NCProgress::Sink>(sink_)),
        ssY_(ColumnSumsOfSquares(task.y)) {
    fit_.model = std::make_unique<NCPLS>(&task.x, &task.y, kMaxIterations);
    crossValidation_ = std::make_unique<PLSCrossValidation>(fit_.model.get(), task.rounds, &task.groups);
  }

  PlsFit Run() {
    while (fit_.kept < task_.mostComponents) {
      StopIfInterrupted();
      const int component = fit_.kept + 1;
      if (!Extract(component)) break;
      CrossValidate(component);
      ComponentRecord record = Judge();
      record.kept = record.significant || !task_.stopAtFirstFailure;
      Deflate(&record);
      fit_.components.push_back(record);
      if (!record.kept) break;
      ++fit_.kept;
      fit_.crossValidatedResiduals = *crossValidation_->GetYPredResiduals();
      if (record.r2xCum >= 1.0 - kExhausted && fit_.kept < task_.mostComponents) {
        fit_.endedEarly = kNothingLeft;
        break;
      }
    }
    return std::move(fit_);
  }

 private:
  /// False if X and Y have nothing more in common, or if nothing is left of X.
  bool Extract(int component) {
    sink_->BeginFit(component);
    try {
      fit_.model->NextComponent(&progress_, /*start=*/nullptr, /*quiet=*/false, /*strict=*/true);
    } catch (const NCError& error) {
      StopIfInterrupted();
      EndWith(OneLine(static_cast<const char*>(error.GetMessage())), "their", component);
      return false;
    }
    const NCDataVector<float>& p = fit_.model->GetPprim()->back();
    if (p.GetNumMisVal() < p.Size()) return true;
    // The scores are so small that nothing can be regressed on them.
    DropNewest(*fit_.model->GetXResiduals(), *fit_.model->GetYResiduals());
    EndWith(kNothingLeft, "its", component);
    return false;
  }

  /// Says why there is no such component; having none at all is a failure where a number of them was asked for.
  void EndWith(const std::string& reason, const std::string& whose, int component) {
    fit_.endedEarly = reason;
    if (component > 1) return;
    if (!task_.unitVariance) fit_.endedEarly += " (or " + whose + " numbers are too small; try --scale uv)";
    if (!task_.stopAtFirstFailure) {
      throw Failure(ExitCode::BadData, "no component can be computed: " + fit_.endedEarly);
    }
  }

  void CrossValidate(int component) {
    sink_->BeginRounds(component, task_.rounds);
    const NCDataVector<float> w = fit_.model->GetWprim()->back();
    crossValidation_->NextComponent(&w, kMaxIterations, ssY_, &progress_, /*quiet=*/false);
    StopIfInterrupted();
  }

  ComponentRecord Judge() const {
    ComponentRecord record;
    record.iterations = fit_.model->GetIterations();
    record.y.q2 = AsWritten(crossValidation_->GetQ2Tot());
    record.y.q2Cum = AsWritten(crossValidation_->GetQ2TotCum());
    record.q2Limit = AsWritten(crossValidation_->GetQ2Lim());
    record.significant = crossValidation_->GetQ2Tot() > crossValidation_->GetQ2Lim();
    for (int j = 1; j <= task_.y.SizeColumns(); ++j) {
      YShare share;
      share.q2 = AsWritten((*crossValidation_->GetQ2YVar())[j]);
      share.q2Cum = AsWritten((*crossValidation_->GetQ2YVarCum())[j]);
      record.perY.push_back(share);
    }
    return record;
  }

  /// Takes the component out of X and Y, to see how much it describes. A component that is not kept then goes: the
  /// model is built anew from what was there before.
  void Deflate(ComponentRecord* record) {
    if (record->kept) {
      fit_.model->CalculateResiduals();
      Describe(record);
      return;
    }
    const NCDataMatrix<float> xBefore = *fit_.model->GetXResiduals();
    const NCDataMatrix<float> yBefore = *fit_.model->GetYResiduals();
    fit_.model->CalculateResiduals();
    Describe(record);
    DropNewest(xBefore, yBefore);
  }

  void Describe(ComponentRecord* record) const {
    const NCDataMatrix<float>& yLeft = *fit_.model->GetYResiduals();
    record->r2xCum = TableSums(task_.x, *fit_.model->GetXResiduals()).Described();
    record->y.r2Cum = TableSums(task_.y, yLeft).Described();
    for (std::size_t j = 0; j < record->perY.size(); ++j) {
      record->perY[j].r2Cum = ColumnSums(task_.y, yLeft, static_cast<int>(j) + 1).Described();
    }
    const ComponentRecord* before = fit_.components.empty() ? nullptr : &fit_.components.back();
    record->r2x = record->r2xCum - (before != nullptr ? before->r2xCum : 0.0);
    record->y.r2 = record->y.r2Cum - (before != nullptr ? before->y.r2Cum : 0.0);
    for (std::size_t j = 0; j < record->perY.size(); ++j) {
      record->perY[j].r2 = record->perY[j].r2Cum - (before != nullptr ? before->perY[j].r2Cum : 0.0);
    }
  }

  void DropNewest(const NCDataMatrix<float>& x, const NCDataMatrix<float>& y) {
    const auto withoutLast = [](const NCDataMatrix<float>* prim) {
      NCDataMatrix<float> rows = *prim;
      rows.RemoveRows(rows.SizeRows(), 1);
      return rows;
    };
    const NCPLS& model = *fit_.model;
    const NCDataMatrix<float> c = withoutLast(model.GetCprim());
    const NCDataMatrix<float> p = withoutLast(model.GetPprim());
    const NCDataMatrix<float> w = withoutLast(model.GetWprim());
    const NCDataMatrix<float> u = withoutLast(model.GetUprim());
    const NCDataMatrix<float> t = withoutLast(model.GetTprim());
    fit_.model = std::make_unique<NCPLS>(&x, &y, &c, &p, &w, &u, &t, kMaxIterations);
  }

  const FitTask& task_;
  ProgressLine line_;
  ConsoleProgress* sink_;  ///< owned by progress_
  NCProgress progress_;
  NCDataVector<float> ssY_;
  PlsFit fit_;
  std::unique_ptr<PLSCrossValidation> crossValidation_;
};

}  // namespace

PlsFit FitPls(const FitTask& task) { return Extraction(task).Run(); }

}  // namespace kalmia::app
