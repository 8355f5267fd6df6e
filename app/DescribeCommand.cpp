#include <limits>

#include "app/Commands.h"
#include "app/CsvTable.h"
#include "app/DisplayText.h"
#include "app/Failure.h"
#include "app/InputFile.h"
#include "app/Json.h"
#include "app/Numbers.h"
#include "app/Skewness.h"
#include "app/TableColumns.h"
#include "app/TextTable.h"
#include "kalmia/containers/NCDataMatrix.h"

namespace kalmia::app {

namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
constexpr int kDigits = 6;

/// What is told of one column; not a number where there are too few cells for it.
struct ColumnSummary {
  std::string name;
  int n = 0;
  int missing = 0;
  double mean = kNone;
  double standardDeviation = kNone;
  float min = std::numeric_limits<float>::quiet_NaN();
  float max = std::numeric_limits<float>::quiet_NaN();
  double skewness = kNone;

  bool IsConstant() const { return n > 0 && min == max; }
};

struct TableSummary {
  std::vector<ColumnSummary> columns;
  std::vector<std::string> textColumns;

  template <class Condition>
  std::vector<std::string> Names(Condition condition) const {
    std::vector<std::string> names;
    for (const ColumnSummary& column : columns) {
      if (condition(column)) names.push_back(column.name);
    }
    return names;
  }
  std::vector<std::string> Constant() const {
    return Names([](const ColumnSummary& column) { return column.IsConstant(); });
  }
  std::vector<std::string> Empty() const {
    return Names([](const ColumnSummary& column) { return column.n == 0; });
  }
};

/// The library answers -99 for "no estimate"; how many cells there are says so without doubt.
ColumnSummary Summarise(const std::string& name, const std::vector<float>& cells) {
  NCDataMatrix<float> matrix(static_cast<int>(cells.size()), 1);
  for (std::size_t i = 0; i < cells.size(); ++i) matrix(static_cast<int>(i) + 1, 1, cells[i]);
  ColumnSummary summary;
  summary.name = name;
  summary.missing = matrix.GetColumnMisVal(1);
  summary.n = matrix.SizeRows() - summary.missing;
  if (summary.n == 0) return summary;
  summary.mean = static_cast<double>(matrix.GetColumnMean(1));
  matrix.GetColumnMinMax(1, summary.min, summary.max);
  if (summary.n < 2) return summary;
  summary.standardDeviation = static_cast<double>(matrix.GetColumnStdDev(1));
  if (!summary.IsConstant() && summary.n > 2) {
    summary.skewness = TellableSkewness(cells, summary.mean, summary.standardDeviation,
                                        static_cast<double>(matrix.GetColumnSkewness(1)));
  }
  return summary;
}

TableSummary SummariseTable(const CsvTable& table, Notes* notes) {
  TableSummary summary;
  int moved = 0;
  for (int column = 0; column < table.Columns(); ++column) {
    const std::string& name = table.ColumnNames()[static_cast<std::size_t>(column)];
    if (KindOfColumn(table, column) == ColumnKind::Texts) {
      summary.textColumns.push_back(name);
    } else {
      summary.columns.push_back(Summarise(name, ReadNumbers(table, column, &moved)));
    }
  }
  NoteMovedCells(moved, notes);
  if (table.Columns() == 1 && !summary.textColumns.empty()) {
    notes->Add("the table has one column only, of text: columns are separated by commas, ; or tabs");
  }
  if (summary.Empty().size() == static_cast<std::size_t>(table.Columns())) {
    throw Failure(ExitCode::BadData, table.Name() + ": every cell is missing");
  }
  return summary;
}

std::string NamedColumns(const std::string& kind, const std::vector<std::string>& names) {
  return names.empty() ? "" : kind + ": " + Listed(names) + "\n";
}

std::string DescribeText(const CsvTable& table, const TableSummary& summary) {
  TextTable text;
  text.AddColumn("column", TextTable::Align::Left);
  for (const char* title : {"n", "missing", "mean", "sd", "min", "max", "skewness"}) {
    text.AddColumn(title, TextTable::Align::Right);
  }
  for (const ColumnSummary& column : summary.columns) {
    text.AddRow({column.name, std::to_string(column.n), std::to_string(column.missing),
                 Significant(column.mean, kDigits), Significant(column.standardDeviation, kDigits),
                 Shortest(column.min, "-"), Shortest(column.max, "-"), Significant(column.skewness, kDigits)});
  }
  std::string lists = NamedColumns("Text columns", summary.textColumns) +
                      NamedColumns("Constant columns", summary.Constant()) +
                      NamedColumns("Empty columns", summary.Empty());
  if (!lists.empty()) lists.insert(0, "\n");
  return table.Name() + ": " + Counted(static_cast<std::size_t>(table.Rows()), "row") + ", " +
         Counted(static_cast<std::size_t>(table.Columns()), "column") + "\n\n" +
         (summary.columns.empty() ? "" : text.Text()) + lists;
}

std::string DescribeJson(const CsvTable& table, const TableSummary& summary, const Notes& notes) {
  Json json = JsonHeader("kalmia-describe");
  json["table"] = table.Name();
  json["rows"] = table.Rows();
  Json columns = Json::array();
  for (const ColumnSummary& column : summary.columns) {
    columns.push_back({{"name", column.name},
                       {"n", column.n},
                       {"missing", column.missing},
                       {"mean", JsonNumber(column.mean)},
                       {"standardDeviation", JsonNumber(column.standardDeviation)},
                       {"min", JsonNumber(AsWritten(column.min))},
                       {"max", JsonNumber(AsWritten(column.max))},
                       {"skewness", JsonNumber(column.skewness)}});
  }
  json["columns"] = columns;
  json["textColumns"] = summary.textColumns;
  json["constantColumns"] = summary.Constant();
  json["emptyColumns"] = summary.Empty();
  json["notes"] = notes.Lines();
  return JsonText(json);
}

}  // namespace

std::string RunCommand(const DescribeOptions& options, Notes* notes) {
  const CsvTable table(ReadInput(options.table), InputName(options.table));
  const TableSummary summary = SummariseTable(table, notes);
  return options.json ? DescribeJson(table, summary, *notes) : DescribeText(table, summary);
}

}  // namespace kalmia::app
