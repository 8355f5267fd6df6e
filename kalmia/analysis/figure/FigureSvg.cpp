#include "kalmia/analysis/figure/FigureSvg.h"

#include <algorithm>
#include <set>

#include "kalmia/analysis/figure/internal/PanelSvg.h"

namespace kalmia::analysis {

namespace {

constexpr double kWidth = 720, kOnePanel = 350, kOfSeveral = 230;  ///< of pictures whose size nobody chose
constexpr double kSmallestPanel = 60;
constexpr double kEdge = 12, kTitleLine = 24, kTop = 36;
constexpr double kLegendRow = 18, kLegendGap = 16, kWidestEntry = 150;
constexpr int kMostLegendRows = 3;
constexpr double kBelowLegend = 6;
constexpr double kBetweenPanels = 14;
constexpr double kNoteRow = 15, kBottom = 6;
constexpr std::size_t kMostNotes = 12;

/// What marks of one name, or of one class, are.
struct LegendEntry {
  std::string name;
  std::vector<const FigureMark*> marks;
  int number = -1;  ///< of the class
};

void AddEntry(const std::string& name, int number, const FigureMark& mark, std::vector<LegendEntry>* entries) {
  for (LegendEntry& entry : *entries) {
    if (entry.name != name || entry.number != number) continue;
    const bool isThere = std::any_of(entry.marks.begin(), entry.marks.end(), [&mark](const FigureMark* other) {
      return other->type == mark.type && other->look == mark.look;
    });
    if (!isThere) entry.marks.push_back(&mark);
    return;
  }
  entries->push_back({name, {&mark}, number});
}

/// Of the classes first, in their order, then of the names, in that of the marks.
std::vector<LegendEntry> EntriesOf(const Figure& figure) {
  std::vector<std::vector<const FigureMark*>> ofClasses(figure.classNames.size());
  std::vector<LegendEntry> named, entries;
  for (const FigurePanel& panel : figure.panels) {
    for (const FigureMark& mark : panel.marks) {
      if (mark.look == FigureLook::Class) {
        for (const int number : std::set<int>(mark.classes.begin(), mark.classes.end())) {
          if (number < 0 || static_cast<std::size_t>(number) >= ofClasses.size()) continue;
          auto& marks = ofClasses[static_cast<std::size_t>(number)];
          const auto isAlike = [&mark](const FigureMark* other) { return other->type == mark.type; };
          if (std::none_of(marks.begin(), marks.end(), isAlike)) marks.push_back(&mark);
        }
      } else if (!mark.name.empty() && mark.type != FigureMark::Type::Rule && mark.type != FigureMark::Type::Text) {
        AddEntry(mark.name, -1, mark, &named);
      }
    }
  }
  for (std::size_t k = 0; k < ofClasses.size(); ++k) {
    if (!ofClasses[k].empty()) entries.push_back({figure.classNames[k], ofClasses[k], static_cast<int>(k)});
  }
  entries.insert(entries.end(), named.begin(), named.end());
  return entries;
}

/// Entries with their places, in rows; those for which there is no room are counted at the end.
class Legend {
 public:
  Legend(const Figure& figure, double width) : entries_(EntriesOf(figure)) {
    const double room = width - 2 * kEdge;
    const double more = Svg::WidthOf(MoreText(entries_.size()), Svg::Font::Label) + kLegendGap;
    double x = 0.0;
    int row = 0;
    for (LegendEntry& entry : entries_) {
      entry.name = Svg::Fitting(entry.name, kWidestEntry, Svg::Font::Label);
      const double wide = kLegendSample + 5 + Svg::WidthOf(entry.name, Svg::Font::Label) + kLegendGap;
      if (x > 0.0 && x + wide > room) {
        x = 0.0;
        ++row;
      }
      const bool isLast = places_.size() + 1 == entries_.size();
      if (row == kMostLegendRows - 1 && !isLast && x + wide > room - more) break;
      if (row >= kMostLegendRows) break;
      places_.emplace_back(kEdge + x, row);
      x += wide;
    }
    end_ = {kEdge + x, std::min(row, kMostLegendRows - 1)};
  }

  double Height() const { return entries_.empty() ? 0.0 : (end_.second + 1) * kLegendRow + kBelowLegend; }

  void Draw(double top, Svg* svg) const {
    for (std::size_t i = 0; i < places_.size(); ++i) {
      const auto& [x, row] = places_[i];
      const double y = top + row * kLegendRow + kLegendRow / 2;
      for (const FigureMark* mark : entries_[i].marks) DrawSample(*mark, entries_[i].number, x, y, svg);
      svg->Text(x + kLegendSample + 5, y + 4, entries_[i].name, Svg::Font::Label, Svg::Anchor::Start);
    }
    if (places_.size() == entries_.size()) return;
    svg->Text(end_.first, top + end_.second * kLegendRow + kLegendRow / 2 + 4,
              MoreText(entries_.size() - places_.size()), Svg::Font::Label, Svg::Anchor::Start);
  }

 private:
  static std::string MoreText(std::size_t count) { return "and " + std::to_string(count) + " more"; }

  std::vector<LegendEntry> entries_;
  std::vector<std::pair<double, int>> places_;  ///< left end and row
  std::pair<double, int> end_ = {kEdge, 0};
};

/// What the picture does not show.
std::string LeftOutText(const LeftOutOfPicture& leftOut) {
  std::string text;
  const auto add = [&text](std::size_t shown, std::size_t of, const std::string& what, const std::string& why) {
    if (shown == of) return;
    text += (text.empty() ? "" : "; ") + std::to_string(shown) + " of " + std::to_string(of) + " " + what + ": " + why;
  };
  add(leftOut.points, leftOut.ofPoints, "points", "the others lie under them");
  add(leftOut.items, leftOut.ofItems, "items of lines and bars", "the lowest and the highest of each pixel");
  add(leftOut.names, leftOut.ofNames, "names", "there is no room for more");
  return text;
}

}  // namespace

std::string FigureSvg(const Figure& figure, const SvgOptions& options) {
  const auto count = static_cast<double>(figure.panels.size());
  const double width = options.width > 0.0 ? options.width : kWidth;
  const Legend legend(figure, width);
  const std::size_t notes = std::min(figure.notes.size(), kMostNotes);
  const double top = kTop + legend.Height();
  // A line for what is left out stands there in any case, so that sizes do not depend on it.
  const double bottom = static_cast<double>(notes + 1) * kNoteRow + kBottom;
  const double about = options.height > 0.0 ? (options.height - top - bottom) / count - 50
                       : count > 1          ? kOfSeveral
                                            : kOnePanel;
  std::vector<PanelSvg> panels;
  double left = 0.0, right = 0.0, around = (count - 1) * kBetweenPanels;
  for (const FigurePanel& panel : figure.panels) {
    panels.emplace_back(panel, width, about);
    left = std::max(left, panels.back().RoomLeft());
    right = std::max(right, panels.back().RoomRight());
  }
  const double plotWidth = std::max(kSmallestPanel, width - left - right);
  std::vector<double> below;
  for (PanelSvg& panel : panels) {
    below.push_back(panel.RoomBelow(plotWidth));
    around += panel.RoomAbove() + below.back();
  }
  double plotHeight = count > 1 ? kOfSeveral : kOnePanel;
  if (options.height > 0.0) plotHeight = std::max(kSmallestPanel, (options.height - top - around - bottom) / count);
  const double height = top + around + count * plotHeight + bottom;

  Svg svg(width, height, figure.title, figure.alt);
  svg.AddFigureStyle();
  svg.Text(kEdge, kTitleLine, Svg::Fitting(figure.title, width - 2 * kEdge, Svg::Font::Title), Svg::Font::Title,
           Svg::Anchor::Start);
  legend.Draw(kTop, &svg);
  TakenPixels texts(width, height), marks(width, height);
  LeftOutOfPicture leftOut;
  double y = top;
  for (std::size_t i = 0; i < panels.size(); ++i) {
    y += panels[i].RoomAbove();
    panels[i].Draw({left, y, plotWidth, plotHeight}, &svg, &texts, &marks, &leftOut);
    y += plotHeight + below[i] + kBetweenPanels;
  }
  y += kNoteRow - 4 - kBetweenPanels;
  const auto note = [&](const std::string& text) {
    svg.Text(kEdge, y, Svg::Fitting(text, width - 2 * kEdge, Svg::Font::Label), Svg::Font::Label, Svg::Anchor::Start);
    y += kNoteRow;
  };
  for (std::size_t i = 0; i < notes; ++i) note(figure.notes[i]);
  const std::string text = LeftOutText(leftOut);
  if (!text.empty()) note(text);
  return svg.File();
}

}  // namespace kalmia::analysis
