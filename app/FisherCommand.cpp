#include <algorithm>

#include "app/Commands.h"
#include "app/ConsoleProgress.h"
#include "app/CountTable.h"
#include "app/DisplayText.h"
#include "app/Failure.h"
#include "app/FourfoldTest.h"
#include "app/Json.h"
#include "app/Numbers.h"
#include "app/ReadTable.h"
#include "kalmia/statistics/Sta.h"
#include "kalmia/support/NCError.h"

namespace kalmia::app {

namespace {

constexpr int kDigits = 6;  ///< as many as the test of larger tables promises
constexpr int kNoLimit = 0;  ///< of the memory, but for the library's own cap

Sta::SidedNess SideOf(const std::string& alternative) {
  if (alternative == "less") return Sta::LeftSided;
  return alternative == "greater" ? Sta::RightSided : Sta::TwoSided;
}

std::string MeaningOf(Sta::SidedNess side) {
  switch (side) {
    case Sta::LeftSided: return "this table and those whose first cell is smaller";
    case Sta::RightSided: return "this table and those whose first cell is larger";
    case Sta::TwoSided: break;
  }
  return "all tables that are not more probable than this one";
}

/// The library's message without its own heading, on one line.
std::string ReasonOf(const NCError& error) {
  std::string text = static_cast<const char*>(error.GetMessage());
  text.erase(0, text.find('\n') + 1);
  std::replace(text.begin(), text.end(), '\n', ' ');
  return OneLine(text);
}

bool IsFourfold(const CountTable& table) { return table.rows == 2 && table.columns == 2; }

double ProbabilityOf(const CountTable& table, const FisherOptions& options, const std::string& name) {
  const std::vector<int>& n = table.counts;
  if (IsFourfold(table)) return FourfoldProbability(n[0], n[1], n[2], n[3], SideOf(options.alternative));
  ProgressLine line;
  line.ShowAtOnce("exact test", 0.0);  // which tells nothing of its way
  try {
    return AsWritten(Sta::GetFisherExactProbability(n.data(), table.rows, table.columns, options.hybrid, Sta::TwoSided,
                                                    kNoLimit));
  } catch (const NCError& error) {
    throw BadData(name + ": too large a table for the exact test: " + ReasonOf(error) +
                  " Here: merge rows or columns of small counts.");
  }
}

std::string FisherJson(const FisherOptions& options, const std::string& name, const CountTable& table,
                       double probability, const Notes& notes) {
  Json json = JsonHeader("kalmia-fisher");
  json["table"] = name;
  json["rows"] = table.rows;
  json["columns"] = table.columns;
  json["total"] = table.total;
  json["alternative"] = options.alternative;
  json["hybrid"] = options.hybrid && !IsFourfold(table);
  json["probability"] = JsonNumber(probability);
  json["notes"] = notes.Lines();
  return JsonText(json);
}

}  // namespace

std::string RunCommand(const FisherOptions& options, Notes* notes) {
  const CsvTable csv = ReadTable(options.table, options.reading);
  const CountTable table = ReadCounts(csv, notes);
  const bool isFourfold = IsFourfold(table);
  const Sta::SidedNess side = SideOf(options.alternative);
  if (!isFourfold && side != Sta::TwoSided) {
    throw BadData(csv.Name() + ": --alternative " + options.alternative + " goes with a table of 2 x 2, not of " +
                  std::to_string(table.rows) + " x " + std::to_string(table.columns));
  }
  if (isFourfold && options.hybrid) notes->Add("--hybrid plays no part in a table of 2 x 2");
  const double probability = ProbabilityOf(table, options, csv.Name());
  if (options.json) return FisherJson(options, csv.Name(), table, probability, *notes);
  std::string text = "Fisher's exact test of " + csv.Name() + ", " + std::to_string(table.rows) + " x " +
                     std::to_string(table.columns) + ", " + Counted(static_cast<std::size_t>(table.total), "count") +
                     "\n\n  probability " + Significant(probability, kDigits) +
                     "\n\nCounted, of the tables with these sums of rows and columns: " + MeaningOf(side) + "\n";
  if (options.hybrid && !isFourfold) {
    text += "Hybrid: chi-square for parts whose expected counts are above 1 all, and at least 5 in 80 % of the cells\n";
  }
  return text;
}

}  // namespace kalmia::app
