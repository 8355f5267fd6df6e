// The Newick format: https://phylipweb.github.io/phylip/newicktree.html
#include "kalmia/analysis/report/Newick.h"

#include <algorithm>

#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"

namespace kalmia::analysis {

namespace {

bool IsPlain(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '.' || c == '-' || c == '+';
}

/// A name as a label: in quotation marks as soon as anything in it could mean something. (An underscore outside of them
/// is read as a blank.) A row without a name is called after its number.
std::string Label(const std::string& name, int row) {
  if (name.empty()) return "row" + std::to_string(row);
  if (std::all_of(name.begin(), name.end(), IsPlain)) return name;
  std::string label = "'";
  for (const char c : OneLine(name)) label += c == '\'' ? "''" : std::string(1, c);
  return label + "'";
}

/// A cluster of which the opening bracket is written.
struct Open {
  int id;
  bool rightIsNext;
};

class Writer {
 public:
  explicit Writer(const ClusterResult& result) : result_(result), rows_(result.data.Rows()) {}

  std::string Write() {
    Enter(2 * rows_ - 2);
    while (!open_.empty()) {
      Open& top = open_.back();
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
    text_ += Label(result_.data.rowNames[static_cast<std::size_t>(id)], id + 1);
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
  std::vector<Open> open_;
  std::string text_;
};

}  // namespace

std::string NewickText(const ClusterResult& result) { return Writer(result).Write(); }

}  // namespace kalmia::analysis
