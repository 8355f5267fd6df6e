#include "kalmia/analysis/figure/ClusterSvg.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

#include "kalmia/analysis/figure/internal/Plot.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/cluster/DendroGramDrawer.h"

namespace kalmia::analysis {

namespace {

using DendroGram::DendroGramNode;

constexpr double kLeft = 70, kRight = 24, kTop = 46, kHeight = 420;
constexpr double kSmallestWidth = 420, kUsualWidth = 1000, kLargestWidth = 1600;
constexpr double kWidestSlot = 40;                  ///< of one row
constexpr double kLabelSlot = 12, kSmallSlot = 8;   ///< what a line of text takes
constexpr double kLetter = 6.4, kSmallLetter = 4.1; ///< width of one, on average
constexpr double kStripGap = 4, kStrip = 6, kLabelGap = 5;
constexpr std::size_t kLongestLabel = 24;
constexpr int kTicks = 8;

/// The name, cut to what finds room below the tree.
std::string ShortLabel(const std::string& name) {
  const std::string line = OneLine(name);
  if (DisplayWidth(line) <= kLongestLabel) return line;
  std::size_t end = 0;
  for (std::size_t letters = 0; end < line.size(); ++end) {
    const bool begins = (static_cast<unsigned char>(line[end]) & 0xC0U) != 0x80U;  // a letter of UTF-8
    if (begins && ++letters == kLongestLabel) break;
  }
  return line.substr(0, end) + "\xE2\x80\xA6";
}

/// How the rows share the width.
struct Layout {
  double width = 0.0;
  bool small = false;  ///< labels
  int step = 1;        ///< every so many rows have a label

  explicit Layout(int rows) {
    width = std::clamp(rows * kWidestSlot, kSmallestWidth, kUsualWidth);
    if (width / rows >= kLabelSlot) return;
    small = true;
    width = std::clamp(rows * kSmallSlot, kUsualWidth, kLargestWidth);
    step = static_cast<int>(std::ceil(kSmallSlot * rows / width - 1e-9));
  }
};

/// The nodes from the top down, left before right.
std::vector<const DendroGramNode*> NodesOf(const DendroGramNode& root) {
  std::vector<const DendroGramNode*> nodes, pending = {&root};
  while (!pending.empty()) {
    const DendroGramNode* const node = pending.back();
    pending.pop_back();
    nodes.push_back(node);
    if (node->IsLeaf()) continue;
    pending.push_back(node->GetRight());
    pending.push_back(node->GetLeft());
  }
  return nodes;
}

/// The surface that the library draws on.
class Surface : public DendroGram::DendroGramDrawOutput {
 public:
  Surface(const ClusterResult& result, const Layout& layout, Svg* svg) : result_(result), layout_(layout), svg_(svg) {
    colourOf_.assign(result.clusterOf.size() + 1, -1);
    FindClusters();
  }

  void DrawLine(float x1, float y1, float x2, float y2, const DendroGramNode* node) override {
    if (result_.root->Height() == 0.0F) y1 = y2 = base_;  // all rows are alike: the tree has no height
    const int cluster = clusterOf_.at(node);
    if (cluster == 0) {
      svg_->Line(x1, y1, x2, y2, Svg::Look::Branch);
    } else {
      svg_->ClusterLine(x1, y1, x2, y2, colourOf_[static_cast<std::size_t>(cluster)]);
    }
  }

  void DrawLabel(const std::vector<int>* items, float x, float y) override {
    if (!HasLabel(x)) return;
    const Svg::Font font = layout_.small ? Svg::Font::Small : Svg::Font::Label;
    const double below = layout_.small ? 2.5 : 4;  // half of a small letter's height: the text is centred on x
    svg_->UprightText(x + below, y + Gap(), LabelOf(items), font, Svg::Anchor::End);
  }

  bool GetLabelRect(const std::vector<int>* items, float x, float y, float* left, float* top, float* width,
                    float* height) override {
    if (!HasLabel(x)) return false;
    const double slot = layout_.small ? kSmallSlot : kLabelSlot;
    const double letters = static_cast<double>(DisplayWidth(LabelOf(items)));
    *left = static_cast<float>(x - slot / 2);
    *top = y;
    *width = static_cast<float>(slot);
    *height = static_cast<float>(Gap() + letters * (layout_.small ? kSmallLetter : kLetter));
    return true;
  }

  /// Where the leaves stand, known once there is room for the labels.
  void SetBase(float base) { base_ = base; }

  /// A strip in its colour below each cluster, and its number below the labels.
  void DrawStrips() const {
    const std::vector<const DendroGramNode*> nodes = NodesOf(*result_.root);
    int place = 0, first = 0, before = 0;
    for (const DendroGramNode* node : nodes) {
      if (!node->IsLeaf()) continue;
      const int cluster = clusterOf_.at(node);
      if (place > 0 && cluster != before) {
        DrawStrip(first, place, before);
        first = place;
      }
      before = cluster;
      ++place;
    }
    DrawStrip(first, place, before);
  }

 private:
  double Slot() const { return layout_.width / result_.data.Rows(); }
  double Gap() const { return result_.IsCut() ? kStripGap + kStrip + kLabelGap : kLabelGap; }
  bool HasLabel(double x) const { return static_cast<int>((x - kLeft) / Slot()) % layout_.step == 0; }
  std::string LabelOf(const std::vector<int>* items) const {
    return ShortLabel(result_.data.rowNames[static_cast<std::size_t>(items->front()) - 1]);
  }

  /// A node is of the cluster of all its rows, or of none.
  void FindClusters() {
    const std::vector<const DendroGramNode*> nodes = NodesOf(*result_.root);
    for (auto at = nodes.rbegin(); at != nodes.rend(); ++at) {
      const DendroGramNode* const node = *at;
      int cluster = 0;
      if (result_.IsCut() && node->IsLeaf()) {
        cluster = result_.clusterOf[static_cast<std::size_t>(node->Items()->front()) - 1];
      } else if (!node->IsLeaf() && clusterOf_[node->GetLeft()] == clusterOf_[node->GetRight()]) {
        cluster = clusterOf_[node->GetLeft()];
      }
      clusterOf_[node] = cluster;
    }
    for (const DendroGramNode* node : nodes) {
      if (!node->IsLeaf() || !result_.IsCut()) continue;
      int& colour = colourOf_[static_cast<std::size_t>(clusterOf_[node])];
      if (colour < 0) colour = colours_++;
    }
  }

  void DrawStrip(int first, int end, int cluster) const {
    const double from = kLeft + first * Slot(), to = kLeft + end * Slot(), gap = std::min(1.0, Slot() / 8);
    svg_->ClusterRectangle(from + gap, base_ + kStripGap, to - from - 2 * gap, kStrip,
                           colourOf_[static_cast<std::size_t>(cluster)]);
    const std::string number = std::to_string(cluster), text = "cluster " + number;
    const double room = (to - from) / kLetter;
    if (room < static_cast<double>(number.size())) return;
    svg_->Text((from + to) / 2, kTop + kHeight + 16, room < static_cast<double>(text.size()) ? number : text,
               Svg::Font::Label, Svg::Anchor::Middle);
  }

  const ClusterResult& result_;
  const Layout& layout_;
  Svg* svg_;
  float base_ = 0.0F;
  std::unordered_map<const DendroGramNode*, int> clusterOf_;  ///< 0: several
  std::vector<int> colourOf_;  ///< of each cluster, from left to right: numbers may bring two of one colour together
  int colours_ = 0;
};

/// The axis of heights, from 0 at the base to the highest merge.
void DrawAxis(const Plot& plot, double highest, double right, Svg* svg) {
  for (const Tick& tick : RoundTicks(0.0, highest, kTicks, /*whole=*/false)) {
    svg->Line(kLeft - 4, plot.Y(tick.value), right, plot.Y(tick.value), Svg::Look::Grid);
    svg->Text(kLeft - 8, plot.Y(tick.value) + 4, tick.label, Svg::Font::Tick, Svg::Anchor::End);
  }
  svg->UprightText(kLeft - 52, (plot.Y(0.0) + plot.Y(highest)) / 2, "height", Svg::Font::Axis);
}

/// A line between the merges that stay and those that are undone, where one level parts them.
void DrawCut(const ClusterResult& result, const Plot& plot, double right, Svg* svg) {
  double below = 0.0, above = INFINITY;
  for (std::size_t k = 0; k < result.merges.size(); ++k) {
    const double height = result.merges[k].height;
    if (k < static_cast<std::size_t>(result.keptMerges)) {
      below = std::max(below, height);
    } else {
      above = std::min(above, height);
    }
  }
  if (!(below < above) || std::isinf(above)) return;
  const double level = plot.Y(result.cutHeight.value_or((below + above) / 2));
  svg->Line(kLeft, level, right, level, Svg::Look::Cut);
}

}  // namespace

std::string ClusterSvg(const ClusterResult& result) {
  const Layout layout(result.data.Rows());
  const double right = kLeft + layout.width;
  Svg svg(right + kRight, kTop + kHeight + (result.IsCut() ? 28 : 10), result.Title());
  svg.AddTreeStyle();
  svg.Text(kLeft, 26, result.Title(), Svg::Font::Title, Svg::Anchor::Start);
  Surface surface(result, layout, &svg);
  const DendroGram::DendroGramDrawer drawer(*result.root);
  float from = static_cast<float>(kLeft), to = static_cast<float>(right), top = static_cast<float>(kTop);
  float base = static_cast<float>(kTop + kHeight);
  drawer.AdjustForLabels(surface, from, to, top, base);
  surface.SetBase(base);

  // The root stands lower than the top where one of the merges below it is higher.
  double highest = 0.0;
  for (const ClusterMerge& merge : result.merges) highest = std::max(highest, static_cast<double>(merge.height));
  const double rootHeight = result.root->Height();
  if (highest > 0.0) {
    const Plot plot({kLeft, kTop, layout.width, base - kTop}, {0.0, 1.0}, {0.0, highest});
    DrawAxis(plot, highest, right, &svg);
    if (result.IsCut()) DrawCut(result, plot, right, &svg);
    top = static_cast<float>(plot.Y(rootHeight));
  }
  drawer.Draw(surface, from, to, top, base);
  if (result.IsCut()) surface.DrawStrips();
  return svg.File();
}

}  // namespace kalmia::analysis
