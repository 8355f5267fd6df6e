#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/figure/Figure.h"
#include "kalmia/analysis/figure/internal/Plot.h"
#include "kalmia/analysis/figure/internal/Svg.h"
#include "kalmia/analysis/figure/internal/TakenPixels.h"

namespace kalmia::analysis {

/// How many items a picture could not show, counted over its panels.
struct LeftOutOfPicture {
  std::size_t points = 0, ofPoints = 0;  ///< drawn, of so many
  std::size_t items = 0, ofItems = 0;    ///< of lines and bars
  std::size_t names = 0, ofNames = 0;
};

/// One panel on its way into a picture: what room it needs around it, then the drawing. The panel outlives it.
class PanelSvg {
 public:
  /// `width` is that of the picture, `height` about what the panel will have.
  PanelSvg(const FigurePanel& panel, double width, double height);

  double RoomLeft() const { return left_; }    ///< for the axis there
  double RoomRight() const { return right_; }  ///< for names of levels
  double RoomAbove() const { return above_; }  ///< for names of upright rules
  /// For the axis below a panel of that width.
  double RoomBelow(double width);

  /// `texts` and `marks` are the pixels that those of other panels take.
  void Draw(const Plot::Place& place, Svg* svg, TakenPixels* texts, TakenPixels* marks, LeftOutOfPicture* leftOut);

 private:
  void FindRanges();
  std::vector<Tick> TicksOf(const FigureAxis& axis, const ValueRange& range, double pixels, double pixelsPerTick) const;
  void DrawXTicks(Svg* svg) const;
  void DrawYTicks(Svg* svg) const;
  void DrawGrid(Svg* svg) const;
  void DrawMark(const FigureMark& mark);
  void DrawPoints(const FigureMark& mark);
  void DrawPoint(const FigureMark& mark, std::size_t item, double radius, bool isSelected);
  void DrawLine(const FigureMark& mark);
  void DrawBars(const FigureMark& mark);
  void DrawArea(const FigureMark& mark);
  void DrawCells(const FigureMark& mark);
  void DrawInterval(const FigureMark& mark, std::size_t item);
  void DrawRule(const FigureMark& mark);
  void DrawLevelNames();
  void DrawUprightNames();
  void DrawTexts(const FigureMark& mark);
  void DrawNames(const FigureMark& mark, const std::vector<std::size_t>& items, double radius);
  bool PlaceName(const std::string& name, double x, double y, double radius, bool mayHideMarks);
  Box Frame() const;

  const FigurePanel& panel_;
  ValueRange x_, y_;
  std::vector<Tick> xTicks_, yTicks_;
  double widestName_, widestLevel_;  ///< pixels of the picture that they may take
  double left_ = 0.0, right_ = 0.0, above_ = 0.0;
  double width_ = 0.0;
  bool isUpright_ = false;  ///< what stands below the panel
  // While it is drawn.
  Plot plot_;
  Plot::Place place_ = {};
  Svg* svg_ = nullptr;
  TakenPixels* texts_ = nullptr;
  TakenPixels* marks_ = nullptr;
  LeftOutOfPicture* leftOut_ = nullptr;
};

/// The class of an item; -1 for none.
int ClassOf(const FigureMark& mark, std::size_t item);

/// Draws what stands for a mark in a legend, `kLegendSample` wide, around the height y; an item of that class.
constexpr double kLegendSample = 22;
void DrawSample(const FigureMark& mark, int number, double x, double y, Svg* svg);

}  // namespace kalmia::analysis
