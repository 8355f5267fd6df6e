#include "kalmia/analysis/figure/internal/PanelSvg.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "kalmia/analysis/figure/internal/DrawnItems.h"
#include "kalmia/analysis/text/DisplayText.h"

namespace kalmia::analysis {

namespace {

constexpr double kMargin = 0.05;  ///< of the range of values, at ends that are not fixed
constexpr double kPixelsPerXTick = 80, kPixelsPerYTick = 35;
constexpr double kAscent = 0.85, kDescent = 0.25;  ///< of a letter above and below its line, in ems
constexpr double kEm = 11;                         ///< of labels
constexpr double kLine = 13;                       ///< from one label to the one below it
constexpr double kWidestName = 110, kNameShare = 0.22;    ///< of a category or an item; of the picture
constexpr double kWidestLevel = 150, kLevelShare = 0.25;  ///< the same of a name beside a level
constexpr double kGap = 6;                         ///< between a text and what it stands beside
constexpr double kAxisLabel = 18;                  ///< what the label of an axis takes
constexpr double kEdge = 8;                        ///< of the picture, where no text stands
constexpr double kPixelsPerName = 2600;            ///< of a panel: more names would hide what it shows
constexpr std::size_t kFewestNames = 12;
constexpr std::size_t kFewDots = 150, kManyDots = 1000;
constexpr double kSignalDot = 4.4, kRing = 6.5;

bool IsCategory(const FigureAxis& axis) { return axis.kind == FigureAxis::Kind::Category; }

std::size_t CategoriesOf(const FigureAxis& axis) { return axis.categories ? axis.categories->names.size() : 0; }

bool IsCells(const FigureMark& mark) { return mark.type == FigureMark::Type::Area && !mark.value.empty(); }

/// Where the items end; from 0 to 1 where there are none.
struct Ends {
  ValueRange range = {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};

  void Include(double value) {
    if (IsDrawn(value)) range.Include(value);
  }
  bool AreKnown() const { return range.low <= range.high; }
};

void IncludeX(const FigureMark& mark, Ends* ends) {
  const double side = mark.type == FigureMark::Type::Bars ? mark.width / 2 : IsCells(mark) ? 0.5 : 0.0;
  for (std::size_t i = 0; i < mark.x.size(); ++i) {
    if (mark.type != FigureMark::Type::Rule && !HasPlace(mark, i)) continue;
    ends->Include(mark.x[i] - side);
    ends->Include(mark.x[i] + side);
  }
}

void IncludeY(const FigureMark& mark, Ends* ends) {
  const double side = IsCells(mark) ? 0.5 : 0.0;
  for (std::size_t i = 0; i < mark.y.size(); ++i) {
    if (mark.type != FigureMark::Type::Rule && !HasPlace(mark, i)) continue;
    ends->Include(mark.y[i] - side);
    ends->Include(mark.y[i] + side);
    if (mark.type == FigureMark::Type::Bars) ends->Include(mark.base.empty() ? 0.0 : mark.base[i]);
  }
  for (const double value : mark.low) ends->Include(value);
  for (const double value : mark.high) ends->Include(value);
}

/// The range of an axis. Bars that begin at 0 stand on the frame where none goes below it.
ValueRange RangeOf(const FigureAxis& axis, const Ends& ends, bool standsOnZero) {
  if (IsCategory(axis)) return {-0.5, std::max(1.0, static_cast<double>(CategoriesOf(axis))) - 0.5};
  ValueRange range = ends.AreKnown() ? ends.range : ValueRange{0.0, 1.0};
  const double low = range.low, high = range.high;
  range.Widen(kMargin);
  if (standsOnZero && low == 0.0 && high > 0.0) range.low = 0.0;
  if (standsOnZero && high == 0.0 && low < 0.0) range.high = 0.0;
  if (axis.low) range.low = *axis.low;
  if (axis.high) range.high = *axis.high;
  if (!(range.low < range.high)) range.Widen(kMargin);  // fixed ends that are one
  return range;
}

std::string NameOf(const FigureMark& mark, std::size_t item) {
  if (!mark.names) return "";
  const std::size_t place = mark.index.empty() ? item : static_cast<std::size_t>(mark.index[item]);
  return place < mark.names->names.size() ? mark.names->names[place] : "";
}

double WidthOf(const std::string& label) { return Svg::WidthOf(label, Svg::Font::Tick); }

double WidestOf(const std::vector<Tick>& ticks) {
  double widest = 0.0;
  for (const Tick& tick : ticks) widest = std::max(widest, WidthOf(tick.label));
  return widest;
}

bool IsLevel(const FigureMark& mark) {
  return mark.type == FigureMark::Type::Rule && !mark.y.empty() && IsDrawn(mark.y.front());
}

bool IsUpright(const FigureMark& mark) {
  return mark.type == FigureMark::Type::Rule && mark.y.empty() && !mark.x.empty() && IsDrawn(mark.x.front());
}

Svg::Look LineLook(FigureLook look) {
  switch (look) {
    case FigureLook::Second: return Svg::Look::SecondData;
    case FigureLook::Faint: return Svg::Look::FaintLine;
    case FigureLook::Plain: return Svg::Look::Plain;
    case FigureLook::Centre: return Svg::Look::Centre;
    case FigureLook::Limit: return Svg::Look::Limit;
    case FigureLook::Signal:
    case FigureLook::Ring: return Svg::Look::Run;
    case FigureLook::Data:
    case FigureLook::Class: break;
  }
  return Svg::Look::Data;
}

Svg::Look BarLook(FigureLook look, bool isSelected) {
  if (isSelected || look == FigureLook::Signal) return Svg::Look::SignalBar;
  if (look == FigureLook::Second) return Svg::Look::SecondBar;
  return look == FigureLook::Faint ? Svg::Look::FaintBar : Svg::Look::Bar;
}

/// A point of no class.
void DrawDot(FigureLook look, double x, double y, double radius, Svg* svg) {
  switch (look) {
    case FigureLook::Second:
      svg->Rectangle(x - radius, y - radius, 2 * radius, 2 * radius, Svg::Look::SecondPoint);
      return;
    case FigureLook::Faint:
    case FigureLook::Plain: svg->Circle(x, y, radius, Svg::Look::Faint); return;
    case FigureLook::Limit:
    case FigureLook::Signal: svg->Circle(x, y, std::max(radius, kSignalDot), Svg::Look::Signal); return;
    case FigureLook::Ring: svg->Circle(x, y, kRing, Svg::Look::Run); return;
    case FigureLook::Data:
    case FigureLook::Centre:
    case FigureLook::Class: break;
  }
  svg->Circle(x, y, radius, Svg::Look::Point);
}

void DrawPolyline(const FigureMark& mark, const Svg::Points& points, Svg* svg) {
  const int number = ClassOf(mark, 0);
  if (mark.look == FigureLook::Class && number >= 0) {
    svg->ClassPolyline(points, number);
  } else {
    svg->Polyline(points, mark.look == FigureLook::Class ? Svg::Look::Plain : LineLook(mark.look));
  }
}

void DrawBar(const FigureMark& mark, int number, bool isSelected, const Box& box, Svg* svg) {
  const double width = box.right - box.left, height = box.bottom - box.top;
  if (mark.look == FigureLook::Class && number >= 0 && !isSelected) {
    svg->ClassBar(box.left, box.top, width, height, number);
  } else {
    svg->Rectangle(box.left, box.top, width, height, BarLook(mark.look, isSelected));
  }
}

Box BoxOf(const std::string& text, double left, double baseline) {
  return {left, baseline - kAscent * kEm, left + Svg::WidthOf(text, Svg::Font::Label), baseline + kDescent * kEm};
}

/// The ticks without those whose texts would touch one before: `from` and `to` are the ends of a text in pixels.
template <class From, class To>
std::vector<Tick> WithoutTouching(const std::vector<Tick>& ticks, double gap, const From& from, const To& to) {
  std::vector<Tick> kept;
  double end = -std::numeric_limits<double>::infinity();
  for (const Tick& tick : ticks) {
    if (from(tick) < end + gap) continue;
    kept.push_back(tick);
    end = to(tick);
  }
  return kept;
}

}  // namespace

int ClassOf(const FigureMark& mark, std::size_t item) {
  if (mark.look != FigureLook::Class || mark.classes.empty()) return -1;
  return mark.classes.size() == 1 ? mark.classes.front() : mark.classes[item];
}

void DrawSample(const FigureMark& mark, int number, double x, double y, Svg* svg) {
  const double middle = x + kLegendSample / 2;
  const auto dot = [&] {
    if (number >= 0) {
      svg->ClassPoint(middle, y, 4, number);
    } else {
      DrawDot(mark.look, middle, y, 3.5, svg);
    }
  };
  switch (mark.type) {
    case FigureMark::Type::Points: dot(); return;
    case FigureMark::Type::Line:
    case FigureMark::Type::Rule:
      if (number >= 0) {
        svg->ClassPolyline({{x, y}, {x + kLegendSample, y}}, number);
      } else {
        svg->Line(x, y, x + kLegendSample, y, LineLook(mark.look));
      }
      return;
    case FigureMark::Type::Bars: DrawBar(mark, number, false, {middle - 6, y - 5, middle + 6, y + 5}, svg); return;
    case FigureMark::Type::Area:
    case FigureMark::Type::Text: break;
  }
  svg->Polygon({{x, y - 5}, {x + kLegendSample, y - 5}, {x + kLegendSample, y + 5}, {x, y + 5}}, Svg::Look::Band);
}

PanelSvg::PanelSvg(const FigurePanel& panel, double width, double height)
    : panel_(panel),
      widestName_(std::min(kWidestName, kNameShare * width)),
      widestLevel_(std::min(kWidestLevel, kLevelShare * width)),
      plot_({0, 0, 1, 1}, {0, 1}, {0, 1}) {
  FindRanges();
  yTicks_ = TicksOf(panel.y, y_, height, kPixelsPerYTick);
  left_ = kEdge + (panel.y.label.empty() ? 0 : kAxisLabel) + WidestOf(yTicks_) + 8 + 4;
  right_ = 2 * kEdge;
  // A number at the end of the axis reaches beyond it by its half.
  if (!IsCategory(panel.x)) {
    right_ = std::max(right_, WidestOf(TicksOf(panel.x, x_, width - left_ - right_, kPixelsPerXTick)) / 2 + 3);
  }
  for (const FigureMark& mark : panel.marks) {
    if (mark.name.empty()) continue;
    const double wide = Svg::WidthOf(mark.name, Svg::Font::Label);
    if (IsLevel(mark)) right_ = std::max(right_, std::min(wide, widestLevel_) + kGap + kEdge);
    if (IsUpright(mark)) above_ = kLine + 3;
  }
}

/// Ranges of both axes. Lines and areas alone fill the width: a spectrum begins at its first channel.
void PanelSvg::FindRanges() {
  Ends x, y;
  bool hasBars = false;
  for (const FigureMark& mark : panel_.marks) {
    IncludeX(mark, &x);
    IncludeY(mark, &y);
    hasBars = hasBars || mark.type == FigureMark::Type::Bars;
  }
  x_ = RangeOf(panel_.x, x, false);
  y_ = RangeOf(panel_.y, y, hasBars);
}

std::vector<Tick> PanelSvg::TicksOf(const FigureAxis& axis, const ValueRange& range, double pixels,
                                    double pixelsPerTick) const {
  std::vector<Tick> ticks;
  if (IsCategory(axis)) {
    const std::size_t count = CategoriesOf(axis);
    const double slot = pixels / std::max(1.0, static_cast<double>(count));
    const auto step = static_cast<std::size_t>(std::max(1.0, std::ceil(kLine / slot)));
    for (std::size_t k = 0; k < count; k += step) {
      ticks.push_back({static_cast<double>(k), Svg::Fitting(axis.categories->names[k], widestName_, Svg::Font::Tick)});
    }
    return ticks;
  }
  for (const FigureTick& tick : axis.ticks) {
    if (tick.at >= range.low && tick.at <= range.high) {
      ticks.push_back({tick.at, Svg::Fitting(tick.label, widestName_, Svg::Font::Tick)});
    }
  }
  if (!axis.ticks.empty()) return ticks;
  return RoundTicks(range.low, range.high, std::max(2, static_cast<int>(pixels / pixelsPerTick)), axis.whole);
}

double PanelSvg::RoomBelow(double width) {
  width_ = width;
  xTicks_ = TicksOf(panel_.x, x_, width, kPixelsPerXTick);
  const double widest = WidestOf(xTicks_);
  const double slot = width / std::max(1.0, static_cast<double>(CategoriesOf(panel_.x)));
  isUpright_ = IsCategory(panel_.x) && widest + kGap > slot;
  return 6 + (isUpright_ ? widest + 2 : kLine) + (panel_.x.label.empty() ? 0 : kAxisLabel) + 4;
}

Box PanelSvg::Frame() const {
  return {place_.left, place_.top, place_.left + place_.width, place_.top + place_.height};
}

void PanelSvg::Draw(const Plot::Place& place, Svg* svg, TakenPixels* texts, TakenPixels* marks,
                    LeftOutOfPicture* leftOut) {
  place_ = place;
  plot_ = Plot(place, x_, y_);
  svg_ = svg;
  texts_ = texts;
  marks_ = marks;
  leftOut_ = leftOut;
  DrawXTicks(svg);
  DrawYTicks(svg);
  svg->Rectangle(place.left, place.top, place.width, place.height, Svg::Look::Frame);
  for (const FigureMark& mark : panel_.marks) {
    DrawMark(mark);
  }
  DrawLevelNames();
  DrawUprightNames();
  for (const FigureMark& mark : panel_.marks) {
    if (mark.type == FigureMark::Type::Text) DrawTexts(mark);
  }
  for (const FigureMark& mark : panel_.marks) {
    if (!mark.labels || !mark.names || mark.type == FigureMark::Type::Text) continue;
    DrawNames(mark, PointsApart(mark, plot_), mark.look == FigureLook::Ring ? kRing : kSignalDot);
  }
}

void PanelSvg::DrawXTicks(Svg* svg) const {
  const double bottom = plot_.Bottom(), right = place_.left + place_.width;
  const auto at = [this](const Tick& tick) { return plot_.X(tick.value); };
  // A number at the end of the axis may reach as far beyond it as the picture goes.
  const auto half = [this](const Tick& tick) { return isUpright_ ? kLine / 2 : WidthOf(tick.label) / 2; };
  const std::vector<Tick> ticks = WithoutTouching(
      xTicks_, isUpright_ ? 0.0 : kGap, [&](const Tick& tick) { return at(tick) - half(tick); },
      [&](const Tick& tick) { return at(tick) + half(tick); });
  for (const Tick& tick : ticks) {
    const double x = at(tick);
    svg->Line(x, IsCategory(panel_.x) ? bottom : place_.top, x, bottom + 4, Svg::Look::Grid);
    if (isUpright_) {
      svg->UprightText(x + 4, bottom + 8, tick.label, Svg::Font::Tick, Svg::Anchor::End);
    } else if (x - half(tick) >= 2 && x + half(tick) <= right + right_ - 2) {
      svg->Text(x, bottom + 17, tick.label, Svg::Font::Tick, Svg::Anchor::Middle);
    }
  }
  if (panel_.x.label.empty()) return;
  const double below = isUpright_ ? WidestOf(xTicks_) + 2 : kLine;
  svg->Text(place_.left + place_.width / 2, bottom + 6 + below + 14,
            Svg::Fitting(panel_.x.label, place_.width, Svg::Font::Axis), Svg::Font::Axis, Svg::Anchor::Middle);
}

void PanelSvg::DrawYTicks(Svg* svg) const {
  const auto at = [this](const Tick& tick) { return plot_.Y(tick.value); };
  const std::vector<Tick> ticks = WithoutTouching(
      yTicks_, 0.0, [&](const Tick& tick) { return place_.top - at(tick) - kLine / 2; },
      [&](const Tick& tick) { return place_.top - at(tick) + kLine / 2; });
  const bool falls = IsCategory(panel_.y);
  for (const Tick& tick : ticks) {
    const double y = at(tick);
    svg->Line(place_.left - 4, y, falls ? place_.left : place_.left + place_.width, y, Svg::Look::Grid);
    svg->Text(place_.left - 8, y + 4, tick.label, Svg::Font::Tick, Svg::Anchor::End);
  }
  if (panel_.y.label.empty()) return;
  svg->UprightText(kEdge + 11, place_.top + place_.height / 2,
                   Svg::Fitting(panel_.y.label, place_.height, Svg::Font::Axis), Svg::Font::Axis);
}

void PanelSvg::DrawMark(const FigureMark& mark) {
  switch (mark.type) {
    case FigureMark::Type::Points: DrawPoints(mark); return;
    case FigureMark::Type::Line: DrawLine(mark); return;
    case FigureMark::Type::Bars: DrawBars(mark); return;
    case FigureMark::Type::Area: IsCells(mark) ? DrawCells(mark) : DrawArea(mark); return;
    case FigureMark::Type::Rule: DrawRule(mark); return;
    case FigureMark::Type::Text: return;  // above all marks
  }
}

void PanelSvg::DrawInterval(const FigureMark& mark, std::size_t item) {
  if (mark.low.empty() || !std::isfinite(mark.low[item]) || !std::isfinite(mark.high[item])) return;
  const double x = plot_.X(mark.x[item]), low = plot_.Y(mark.low[item]), high = plot_.Y(mark.high[item]);
  svg_->Line(x, low, x, high, Svg::Look::Plain);
  const double side = std::min(3.0, place_.width / static_cast<double>(mark.x.size()) / 3);
  if (side < 0.8) return;
  for (const double y : {low, high}) svg_->Line(x - side, y, x + side, y, Svg::Look::Plain);
}

void PanelSvg::DrawPoint(const FigureMark& mark, std::size_t item, double radius, bool isSelected) {
  const double x = plot_.X(mark.x[item]), y = plot_.Y(mark.y[item]);
  const int number = ClassOf(mark, item);
  if (number >= 0) {
    svg_->ClassPoint(x, y, radius, number);
    if (isSelected) svg_->Circle(x, y, kRing, Svg::Look::Run);
  } else {
    const bool isOfNoClass = mark.look == FigureLook::Class;
    DrawDot(isSelected ? FigureLook::Signal : isOfNoClass ? FigureLook::Faint : mark.look, x, y, radius, svg_);
  }
  marks_->Take({x - radius - 1, y - radius - 1, x + radius + 1, y + radius + 1});
}

void PanelSvg::DrawPoints(const FigureMark& mark) {
  const std::vector<std::size_t> items = PointsApart(mark, plot_);
  std::size_t placed = 0;
  for (std::size_t i = 0; i < mark.x.size(); ++i) placed += HasPlace(mark, i) ? 1U : 0U;
  leftOut_->points += items.size();
  leftOut_->ofPoints += placed;
  const double radius = placed <= kFewDots ? 3.0 : placed <= kManyDots ? 2.4 : 1.7;
  std::vector<bool> isSelected(mark.x.size(), false);
  for (const int item : mark.selected) isSelected[static_cast<std::size_t>(item)] = true;
  for (const std::size_t item : items) {
    DrawInterval(mark, item);
    DrawPoint(mark, item, radius, isSelected[item]);
  }
}

void PanelSvg::DrawLine(const FigureMark& mark) {
  const std::vector<std::size_t> items = ExtremesOfStretches(mark, place_.width);
  leftOut_->items += items.size();
  leftOut_->ofItems += mark.x.size();
  Svg::Points line;
  for (const std::size_t item : items) {
    if (HasPlace(mark, item)) {
      line.emplace_back(plot_.X(mark.x[item]), plot_.Y(mark.y[item]));
    } else {
      DrawPolyline(mark, line, svg_);
      line.clear();
    }
  }
  DrawPolyline(mark, line, svg_);
}

void PanelSvg::DrawBars(const FigureMark& mark) {
  const std::vector<std::size_t> items = ExtremesOfStretches(mark, place_.width);
  leftOut_->items += items.size();
  leftOut_->ofItems += mark.x.size();
  std::vector<bool> isSelected(mark.x.size(), false);
  for (const int item : mark.selected) isSelected[static_cast<std::size_t>(item)] = true;
  for (const std::size_t item : items) {
    if (!HasPlace(mark, item)) continue;
    const double base = plot_.Y(mark.base.empty() ? 0.0 : mark.base[item]), end = plot_.Y(mark.y[item]);
    const double left = plot_.X(mark.x[item] - mark.width / 2), right = plot_.X(mark.x[item] + mark.width / 2);
    if (base == end && mark.low.empty()) continue;
    DrawBar(mark, ClassOf(mark, item), isSelected[item], {left, std::min(base, end), right, std::max(base, end)}, svg_);
    DrawInterval(mark, item);
  }
}

void PanelSvg::DrawArea(const FigureMark& mark) {
  Svg::Points corners;
  if (mark.low.empty()) {
    for (std::size_t i = 0; i < mark.x.size(); ++i) {
      if (HasPlace(mark, i)) corners.emplace_back(plot_.X(mark.x[i]), plot_.Y(mark.y[i]));
    }
    svg_->Polygon(corners, Svg::Look::Band);
    return;
  }
  const std::size_t length = std::max<std::size_t>(1, mark.x.size() / static_cast<std::size_t>(place_.width));
  std::vector<std::size_t> items;  // the widest of each stretch
  for (std::size_t begin = 0; begin < mark.x.size(); begin += length) {
    std::size_t widest = begin;
    for (std::size_t i = begin; i < std::min(begin + length, mark.x.size()); ++i) {
      if (mark.high[i] - mark.low[i] > mark.high[widest] - mark.low[widest]) widest = i;
    }
    if (std::isfinite(mark.high[widest] - mark.low[widest])) items.push_back(widest);
  }
  for (const std::size_t i : items) corners.emplace_back(plot_.X(mark.x[i]), plot_.Y(mark.high[i]));
  std::reverse(items.begin(), items.end());
  for (const std::size_t i : items) corners.emplace_back(plot_.X(mark.x[i]), plot_.Y(mark.low[i]));
  svg_->Polygon(corners, Svg::Look::Band);
}

void PanelSvg::DrawCells(const FigureMark& mark) {
  constexpr double kDarkest = 0.55;  // so that numbers on it can be read
  for (std::size_t i = 0; i < mark.x.size(); ++i) {
    if (!HasPlace(mark, i) || !(mark.value[i] > 0.0)) continue;
    const double left = plot_.X(mark.x[i] - 0.5), right = plot_.X(mark.x[i] + 0.5);
    const double top = plot_.Y(mark.y[i] + 0.5), bottom = plot_.Y(mark.y[i] - 0.5);
    svg_->Cell(left, top, right - left, bottom - top, kDarkest * std::min(1.0, mark.value[i]));
  }
}

/// No name of an item stands on it.
void PanelSvg::DrawRule(const FigureMark& mark) {
  if (IsLevel(mark)) {
    const double y = plot_.Y(mark.y.front());
    svg_->Line(place_.left, y, plot_.Right(), y, LineLook(mark.look));
    marks_->Take({place_.left, y - 0.5, plot_.Right(), y + 0.5});
  } else if (IsUpright(mark)) {
    const double x = plot_.X(mark.x.front());
    svg_->Line(x, place_.top, x, plot_.Bottom(), LineLook(mark.look));
    marks_->Take({x - 0.5, place_.top, x + 0.5, plot_.Bottom()});
  }
}

/// On the right, pushed apart where they would run into each other; where all of them have no room, those at the top
/// have.
void PanelSvg::DrawLevelNames() {
  std::vector<std::pair<double, std::string>> names;
  for (const FigureMark& mark : panel_.marks) {
    if (!IsLevel(mark) || mark.name.empty()) continue;
    names.emplace_back(plot_.Y(mark.y.front()), Svg::Fitting(mark.name, widestLevel_, Svg::Font::Label));
  }
  std::stable_sort(names.begin(), names.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  double before = place_.top - kLine / 2;
  for (auto& [y, name] : names) before = y = std::max(y, before + kLine);
  double after = plot_.Bottom() + kLine / 2;
  for (auto name = names.rbegin(); name != names.rend(); ++name) {
    after = name->first = std::min(name->first, after - kLine);
  }
  for (const auto& [y, name] : names) {
    if (y < place_.top) continue;
    svg_->Text(plot_.Right() + kGap, y + 4, name, Svg::Font::Label, Svg::Anchor::Start);
  }
}

/// Above the panel, as far as they do not run into each other.
void PanelSvg::DrawUprightNames() {
  for (const FigureMark& mark : panel_.marks) {
    if (!IsUpright(mark) || mark.name.empty()) continue;
    const double room = place_.width + right_ - kEdge;
    const std::string name = Svg::Fitting(mark.name, room, Svg::Font::Label);
    const double width = Svg::WidthOf(name, Svg::Font::Label), baseline = place_.top - 4;
    const double left = std::clamp(plot_.X(mark.x.front()) - width / 2, place_.left, place_.left + room - width);
    const Box box = BoxOf(name, left, baseline);
    if (!texts_->IsFree(box)) {
      ++leftOut_->ofNames;
      continue;
    }
    texts_->Take(box);
    svg_->Text(left, baseline, name, Svg::Font::Label, Svg::Anchor::Start);
  }
}

void PanelSvg::DrawTexts(const FigureMark& mark) {
  const Box frame = Frame();
  for (std::size_t i = 0; i < mark.x.size(); ++i) {
    if (!HasPlace(mark, i)) continue;
    const std::string text = Svg::Fitting(NameOf(mark, i), widestName_, Svg::Font::Label);
    const double x = plot_.X(mark.x[i]), baseline = plot_.Y(mark.y[i]) + 4;
    const Box box = BoxOf(text, x - Svg::WidthOf(text, Svg::Font::Label) / 2, baseline);
    const bool isInside = box.left >= frame.left && box.right <= frame.right && box.top >= frame.top;
    ++leftOut_->ofNames;
    if (!isInside || box.bottom > frame.bottom || !texts_->IsFree(box)) continue;
    texts_->Take(box);
    ++leftOut_->names;
    svg_->Text(x, baseline, text, Svg::Font::Label, Svg::Anchor::Middle);
  }
}

void PanelSvg::DrawNames(const FigureMark& mark, const std::vector<std::size_t>& items, double radius) {
  std::vector<bool> isSelected(mark.x.size(), false);
  for (const int item : mark.selected) isSelected[static_cast<std::size_t>(item)] = true;
  const auto distance = [this, &mark](std::size_t i) {
    const double x = (plot_.X(mark.x[i]) - place_.left) / place_.width - 0.5;
    const double y = (plot_.Y(mark.y[i]) - place_.top) / place_.height - 0.5;
    return x * x + y * y;
  };
  std::vector<std::size_t> order;
  for (const std::size_t item : items) {
    if (!NameOf(mark, item).empty()) order.push_back(item);
  }
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    return isSelected[a] != isSelected[b] ? isSelected[a] : distance(a) > distance(b);
  });
  const double room = place_.width * place_.height / kPixelsPerName;
  const std::size_t most = std::max(kFewestNames, static_cast<std::size_t>(room));
  std::size_t placed = 0;
  for (std::size_t i = 0; i < order.size() && placed < most && i < 4 * most; ++i) {
    const std::size_t item = order[i];
    const std::string name = Svg::Fitting(NameOf(mark, item), widestName_, Svg::Font::Label);
    const double x = plot_.X(mark.x[item]), y = plot_.Y(mark.y[item]);
    const double away = isSelected[item] && ClassOf(mark, item) >= 0 ? kRing : radius;  // a ring is around it
    const bool isPlaced = PlaceName(name, x, y, away, /*mayHideMarks=*/false) ||
                          (isSelected[item] && PlaceName(name, x, y, away, /*mayHideMarks=*/true));
    if (isPlaced) ++placed;
  }
  leftOut_->names += placed;
  for (std::size_t i = 0; i < mark.x.size(); ++i) {
    leftOut_->ofNames += HasPlace(mark, i) && !NameOf(mark, i).empty() ? 1U : 0U;
  }
}

/// Tries eight places around the point: beside it, above and below, then the corners; of a ring, which stands on a line
/// of points, above and below first.
bool PanelSvg::PlaceName(const std::string& name, double x, double y, double radius, bool mayHideMarks) {
  constexpr double kBeside[8][2] = {{1, 0}, {-1, 0}, {0, -1}, {0, 1}, {1, -1}, {-1, -1}, {1, 1}, {-1, 1}};
  constexpr double kAbove[8][2] = {{0, -1}, {0, 1}, {1, -1}, {-1, -1}, {1, 1}, {-1, 1}, {1, 0}, {-1, 0}};
  const auto& places = radius == kRing ? kAbove : kBeside;
  const double width = Svg::WidthOf(name, Svg::Font::Label);
  const Box frame = Frame();
  for (const auto& [across, down] : places) {
    const double away = radius + 1.5 - (across != 0 && down != 0 ? 2.0 : 0.0);
    const double left = across > 0 ? x + away : across < 0 ? x - away - width : x - width / 2;
    const double middle = y + down * (away + kEm / 2);
    const Box box = BoxOf(name, left, middle + 0.3 * kEm);
    if (box.left < frame.left + 1 || box.right > frame.right - 1 || box.top < frame.top + 1 ||
        box.bottom > frame.bottom - 1 || !texts_->IsFree(box) || !(mayHideMarks || marks_->IsFree(box))) {
      continue;
    }
    texts_->Take(box);
    svg_->Text(left, middle + 0.3 * kEm, name, Svg::Font::Label, Svg::Anchor::Start);
    return true;
  }
  return false;
}

}  // namespace kalmia::analysis
