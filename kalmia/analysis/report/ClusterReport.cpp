#include "kalmia/analysis/report/ClusterReport.h"

#include <algorithm>

#include "kalmia/analysis/report/internal/TableJson.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/table/internal/CsvText.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/internal/TextTable.h"

namespace kalmia::analysis {

namespace {

constexpr int kDigits = 6;
constexpr int kMergesShown = 10;  ///< the last ones

int RowsOf(const ClusterResult& result, int id) {
  return id < result.data.Rows() ? 1 : result.merges[static_cast<std::size_t>(id - result.data.Rows())].rows;
}

/// The merges from the last one back: how many clusters there are before it, and what it merges.
std::string LastMergesText(const ClusterResult& result) {
  TextTable table;
  for (const char* title : {"clusters", "next merge at", "of rows"}) table.AddColumn(title, TextTable::Align::Right);
  const int merges = static_cast<int>(result.merges.size());
  for (int k = merges - 1; k >= 0 && merges - k <= kMergesShown; --k) {
    const ClusterMerge& merge = result.merges[static_cast<std::size_t>(k)];
    table.AddRow({std::to_string(result.data.Rows() - k), Significant(merge.height, kDigits),
                  std::to_string(RowsOf(result, merge.left)) + " + " + std::to_string(RowsOf(result, merge.right))});
  }
  const int more = merges - std::min(merges, kMergesShown);
  return table.Text() + (more == 0 ? "" : "  and " + std::to_string(more) + " more: CSV or JSON gives them all\n");
}

std::string ClustersText(const ClusterResult& result) {
  TextTable table;
  for (const char* title : {"cluster", "rows", "highest merge"}) table.AddColumn(title, TextTable::Align::Right);
  int number = 0;
  for (const ClusterSummary& cluster : SummariesOf(result)) {
    table.AddRow({std::to_string(++number), std::to_string(cluster.rows),
                  cluster.rows == 1 ? "-" : Significant(cluster.highest, kDigits)});
  }
  TextTable rows;
  rows.AddColumn("row", TextTable::Align::Left);
  rows.AddColumn("cluster", TextTable::Align::Right);
  for (std::size_t r = 0; r < result.clusterOf.size(); ++r) {
    rows.AddRow({result.data.rowNames[r], std::to_string(result.clusterOf[r])});
  }
  return "\nCut into " + Counted(static_cast<std::size_t>(result.Clusters()), "cluster") + "\n\n" + table.Text() +
         "\n" + rows.Text();
}

Json MergesJson(const ClusterResult& result) {
  Json merges = Json::array();
  for (const ClusterMerge& merge : result.merges) {
    merges.push_back({{"clusters", {std::min(merge.left, merge.right), std::max(merge.left, merge.right)}},
                      {"height", JsonNumber(ShortestDouble(merge.height))},
                      {"rows", merge.rows}});
  }
  return merges;
}

Json CutJson(const ClusterResult& result) {
  if (!result.IsCut()) return nullptr;
  Json cut = {{"clusters", Json::array()}, {"rows", Json::array()}};
  for (const ClusterSummary& cluster : SummariesOf(result)) {
    cut["clusters"].push_back({{"rows", cluster.rows}, {"highestMerge", JsonNumber(ShortestDouble(cluster.highest))}});
  }
  for (std::size_t r = 0; r < result.clusterOf.size(); ++r) {
    cut["rows"].push_back({{"name", result.data.rowNames[r]}, {"cluster", result.clusterOf[r]}});
  }
  return cut;
}

bool IsPlainInNewick(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '.' || c == '-' || c == '+';
}

/// A name as a label: in quotation marks as soon as anything in it could mean something. (An underscore outside of them
/// is read as a blank.) A row without a name is called after its number.
std::string NewickLabel(const std::string& name, int row) {
  if (name.empty()) return "row" + std::to_string(row);
  if (std::all_of(name.begin(), name.end(), IsPlainInNewick)) return name;
  std::string label = "'";
  for (const char c : OneLine(name)) label += c == '\'' ? "''" : std::string(1, c);
  return label + "'";
}

/// A cluster of which the opening bracket is written.
struct OpenCluster {
  int id;
  bool rightIsNext;
};

/// Writes a tree in the Newick format: https://phylipweb.github.io/phylip/newicktree.html
class NewickWriter {
 public:
  explicit NewickWriter(const ClusterResult& result) : result_(result), rows_(result.data.Rows()) {}

  std::string Write() {
    Enter(2 * rows_ - 2);
    while (!open_.empty()) {
      OpenCluster& top = open_.back();
      const ClusterMerge& merge = MergeOf(top.id);
      if (top.rightIsNext) {
        top.rightIsNext = false;
        text_ += ",";
        Enter(merge.right);
      } else {
        const int id = top.id;
        open_.pop_back();
        text_ += ")";
        AddLength(id);
      }
    }
    return text_ + ";\n";
  }

 private:
  const ClusterMerge& MergeOf(int id) const { return result_.merges[static_cast<std::size_t>(id - rows_)]; }
  float HeightOf(int id) const { return id < rows_ ? 0.0F : MergeOf(id).height; }

  /// Goes down the left side to a row.
  void Enter(int id) {
    for (; id >= rows_; id = MergeOf(id).left) {
      text_ += "(";
      open_.push_back({id, true});
    }
    text_ += NewickLabel(result_.data.rowNames[static_cast<std::size_t>(id)], id + 1);
    AddLength(id);
  }

  /// The branch from the cluster up to the one it is part of, which is the innermost that is open.
  void AddLength(int id) {
    if (open_.empty()) return;
    const double length = static_cast<double>(HeightOf(open_.back().id)) - HeightOf(id);
    text_ += ":" + Shortest(ShortestDouble(static_cast<float>(length)));
  }

  const ClusterResult& result_;
  int rows_;
  std::vector<OpenCluster> open_;
  std::string text_;
};

}  // namespace

std::string ClusterText(const ClusterResult& result) {
  std::string text = result.Title() + ": " + Counted(static_cast<std::size_t>(result.data.Rows()), "row") + ", " +
                     Counted(result.data.columnNames.size(), "column") + " " + ScalingText(result.scaling) +
                     "\nCophenetic correlation " + Fixed(result.copheneticCorrelation, 4) + "\n\n" +
                     LastMergesText(result);
  return result.IsCut() ? text + ClustersText(result) : text;
}

std::string ClusterJson(const Table& table, const ClusterResult& result,
                        const std::vector<std::string>& written) {
  Json json = JsonHeader("kalmia-cluster");
  json["table"] = TableJson(table);
  json["method"] = result.method;
  json["scaling"] = ScalingWord(result.scaling);
  json["x"] = {{"columns", result.data.columnNames}, {"missingCells", result.data.cells.GetNumMisVal()}};
  json["leftOut"] = {{"textColumns", result.data.textColumns},
                     {"constantColumns", result.data.constantColumns},
                     {"emptyColumns", result.data.emptyColumns}};
  json["copheneticCorrelation"] = JsonNumber(result.copheneticCorrelation);
  json["merges"] = MergesJson(result);
  json["cut"] = CutJson(result);
  json["files"] = Json::array();
  for (const std::string& path : written) json["files"].push_back(path);
  json["notes"] = result.notes.Lines();
  return JsonText(json);
}

std::string ClusterCsv(const ClusterResult& result, const CsvMarks& marks) {
  CsvText csv(marks);
  csv.Field("row").Field("cluster").EndLine();
  for (std::size_t r = 0; r < result.clusterOf.size(); ++r) {
    csv.Field(result.data.rowNames[r]).Field(std::to_string(result.clusterOf[r])).EndLine();
  }
  return csv.Text();
}

std::string MergesCsv(const ClusterResult& result, const CsvMarks& marks) {
  CsvText csv(marks);
  for (const char* title : {"cluster 1", "cluster 2", "height", "rows"}) csv.Field(title);
  csv.EndLine();
  for (const ClusterMerge& merge : result.merges) {
    csv.Field(std::to_string(std::min(merge.left, merge.right)));
    csv.Field(std::to_string(std::max(merge.left, merge.right)));
    csv.Number(ShortestDouble(merge.height)).Field(std::to_string(merge.rows)).EndLine();
  }
  return csv.Text();
}

std::string NewickText(const ClusterResult& result) { return NewickWriter(result).Write(); }

}  // namespace kalmia::analysis
