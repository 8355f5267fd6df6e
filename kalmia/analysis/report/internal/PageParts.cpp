#include "kalmia/analysis/report/internal/PageParts.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "kalmia/analysis/model/RowDiagnosis.h"
#include "kalmia/analysis/table/TableColumns.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"

namespace kalmia::analysis {

namespace {

constexpr std::size_t kMostYColumns = 6;
constexpr std::size_t kMostOtherColumns = 20;
constexpr int kDigits = 4;

/// One component of a figure along an axis, x or y: its label, the items, and how far the limit reaches.
FigureComponent ComponentOfPoints(const FigurePanel& panel, const FigureMark& points, bool isX) {
  FigureComponent component;
  component.label = isX ? panel.x.label : panel.y.label;
  component.values = isX ? points.x : points.y;
  for (const FigureMark& mark : panel.marks) {
    if (mark.type != FigureMark::Type::Line || mark.look != FigureLook::Limit || mark.x.empty()) continue;
    const auto [low, high] = std::minmax_element((isX ? mark.x : mark.y).begin(), (isX ? mark.x : mark.y).end());
    component.low = *low;
    component.high = *high;
  }
  return component;
}

/// The two components that a figure shows, across first; nothing where it shows none.
std::vector<FigureComponent> ShownComponents(const Figure& figure) {
  const FigurePanel& panel = figure.panels.front();
  std::vector<FigureComponent> lines;
  for (const FigureMark& mark : panel.marks) {
    if (!mark.names) continue;
    if (mark.type == FigureMark::Type::Points) {
      if (panel.x.whole) return {};  // across are the rows themselves
      return {ComponentOfPoints(panel, mark, true), ComponentOfPoints(panel, mark, false)};
    }
    lines.push_back({mark.name, mark.y});
  }
  return lines.size() == 2 ? lines : std::vector<FigureComponent>();
}

/// Whether the figure shows what components say of rows or of columns, and so other ones if they are asked for.
bool ShowsComponents(const Figure& figure) { return figure.name == "scores" || figure.name == "loadings"; }

std::string Joined(const std::vector<std::string>& texts) {
  std::string joined;
  for (const std::string& text : texts) joined += (joined.empty() ? "" : ", ") + text;
  return joined;
}

}  // namespace

std::vector<FigureComponents> ComponentsOfFigures(int components, std::pair<int, int> shown, const FiguresAt& figuresAt) {
  if (components < 2) return {};
  std::vector<FigureComponents> all;
  for (int a = 1; a <= components; a += 2) {
    // The last one of an odd number stands beside the first, which is known then.
    const std::pair<int, int> axes = {a, a < components ? a + 1 : 1};
    const std::vector<Figure> figures = figuresAt(axes);
    for (const Figure& figure : figures) {
      if (!ShowsComponents(figure)) continue;
      const std::vector<FigureComponent> two = ShownComponents(figure);
      if (two.size() != 2) continue;
      if (a == 1) all.push_back({figure.name, 0, 1, {}});
      for (FigureComponents& known : all) {
        if (known.figure != figure.name) continue;
        known.list.push_back(two[0]);
        if (axes.second > 1) known.list.push_back(two[1]);
      }
    }
  }
  for (FigureComponents& known : all) {
    known.x = static_cast<std::size_t>(shown.first) - 1;
    known.y = static_cast<std::size_t>(shown.second) - 1;
  }
  return all;
}

void AddNumbers(const std::string& name, std::vector<double> numbers, ReportPage* page) {
  if (numbers.size() != page->rowNames.size()) return;
  const auto isThere = [](double number) { return !std::isnan(number); };
  if (std::none_of(numbers.begin(), numbers.end(), isThere)) return;
  page->columns.push_back({name, {}, std::move(numbers)});
}

void AddTexts(const std::string& name, std::vector<std::string> texts, ReportPage* page) {
  if (texts.size() == page->rowNames.size()) page->columns.push_back({name, std::move(texts), {}});
}

void AddDiagnosis(const ModelInfo& model, ReportPage* page) {
  const RowDiagnosis rows = DiagnoseTrainingRows(model);
  AddNumbers("T2", rows.t2, page);
  AddNumbers("distance", rows.distances, page);
  std::vector<std::string> beyond;
  for (const std::vector<std::string>& flags : rows.flags) beyond.push_back(Joined(flags));
  if (std::any_of(beyond.begin(), beyond.end(), [](const std::string& text) { return !text.empty(); })) {
    AddTexts("beyond", beyond, page);
  }
}

void AddFits(const YModelInfo& model, const std::vector<std::vector<double>>& measured, ReportPage* page) {
  if (!model.rowStatistics) return;
  const auto column = [](const RealMatrix& matrix, std::size_t j) {
    std::vector<double> numbers;
    for (std::size_t i = 0; i < matrix.rows; ++i) numbers.push_back(matrix(i, j));
    return numbers;
  };
  for (std::size_t j = 0; j < std::min(model.yNames.size(), kMostYColumns); ++j) {
    const std::string name = model.classes ? "class " + model.yNames[j] : model.yNames[j];
    if (!model.classes && j < measured.size()) AddNumbers(name, measured[j], page);
    AddNumbers(name + ", fitted", column(model.rowStatistics->fitted, j), page);
    AddNumbers(name + ", cross-validated", column(model.rowStatistics->leftOut, j), page);
  }
}

void AddOtherColumns(const Table& table, const ModelData& data, const ModelInfo& model, ReportPage* page) {
  std::set<std::string> taken(data.xNames.begin(), data.xNames.end());
  taken.insert(data.yNames.begin(), data.yNames.end());
  for (const std::vector<std::string>* names : {&data.constantColumns, &data.emptyColumns}) {
    taken.insert(names->begin(), names->end());
  }
  taken.insert({model.idColumn, data.classColumn});
  taken.insert(data.chain.inputNames.begin(), data.chain.inputNames.end());
  std::size_t count = 0;
  for (int column = 0; column < table.Columns() && count < kMostOtherColumns; ++column) {
    const std::string& name = table.ColumnNames()[static_cast<std::size_t>(column)];
    if (taken.count(name) > 0) continue;
    ++count;
    if (KindOfColumn(table, column) == ColumnKind::Texts) {
      const std::vector<std::string> cells = table.ColumnTexts(column);
      std::vector<std::string> texts;
      for (const int row : data.rows) texts.push_back(cells[static_cast<std::size_t>(row)]);
      AddTexts(name, texts, page);
    } else {
      const std::vector<double> cells = NumbersBesideStrays(table, column);
      std::vector<double> numbers;
      for (const int row : data.rows) numbers.push_back(cells[static_cast<std::size_t>(row)]);
      AddNumbers(name, numbers, page);
    }
  }
}

void AddClasses(const std::string& name, const Classes& classes, ReportPage* page) {
  std::vector<std::string> texts;
  for (const int k : classes.classOfRow) texts.push_back(k < 0 ? "" : classes.names[static_cast<std::size_t>(k)]);
  AddTexts(name, texts, page);
}

void AddQ2(const ModelInfo& model, ReportPage* page) {
  if (!model.validation) return;
  const std::size_t place = model.validation->Model();
  if (place < model.validation->components.size()) AddShare("Q2", model.validation->components[place].q2, page);
}

void AddNumber(const std::string& name, double number, ReportPage* page) {
  if (std::isfinite(number)) page->facts.emplace_back(name, Significant(number, kDigits));
}

void AddShare(const std::string& name, double share, ReportPage* page) {
  if (std::isfinite(share)) page->facts.emplace_back(name, Fixed(share, kDigits));
}

void AddErrors(const YModelInfo& model, ReportPage* page) {
  if (model.classes) return;
  for (std::size_t j = 0; j < std::min<std::size_t>(model.quality.size(), 3); ++j) {
    const std::string of = model.quality.size() > 1 ? " of " + OneLine(model.yNames[j]) : "";
    AddNumber("RMSEE" + of, model.quality[j].rmsee, page);
    AddNumber("RMSECV" + of, model.quality[j].rmsecv, page);
  }
}

void AddNotes(const ModelData& data, const Notes& notes, ReportPage* page) {
  page->notes = notes.Lines();
  if (!data.leftOutRows.empty()) page->notes.push_back("rows left out: " + Listed(data.leftOutRows, 10));
}

}  // namespace kalmia::analysis
