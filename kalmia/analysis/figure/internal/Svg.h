#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kalmia::analysis {

/// A drawing in SVG under construction, in pixels from the upper left corner. Its look has one home, the style sheet in
/// the .cpp: shapes only name what they are. The file needs nothing else and prints sharp at any size.
class Svg {
 public:
  /// What a shape or a text is.
  enum class Look {
    Grid, Frame, Data, SecondData, Faint, Point, SecondPoint, Centre, Limit, Signal, Run, Bar, Branch, Cut,
    FaintLine, Plain, Band, SecondBar, FaintBar, SignalBar
  };
  enum class Font { Title, Axis, Tick, Label, Small };
  enum class Anchor { Start, Middle, End };
  using Points = std::vector<std::pair<double, double>>;

  /// Programs that show the file call it `title`; who cannot see it is told `description`, if there is one.
  Svg(double width, double height, const std::string& title, const std::string& description = "");

  void Line(double x1, double y1, double x2, double y2, Look look);
  /// The looks of trees: Branch, Cut, Small and the colours of clusters. Before the first of them.
  void AddTreeStyle();
  /// In a colour of clusters, from 0. Colours repeat, but neighbouring numbers have different ones.
  void ClusterLine(double x1, double y1, double x2, double y2, int colour);
  void ClusterRectangle(double x, double y, double width, double height, int colour);
  /// The looks of figures: SecondData, SecondPoint, Run, those from FaintLine on, cells and classes. Before the first.
  void AddFigureStyle();
  void Polyline(const Points& points, Look look);  ///< of one point: a dot
  void Polygon(const Points& points, Look look);
  /// A cell shaded from 0 to 1.
  void Cell(double x, double y, double width, double height, double shade);
  // Of classes, from 0: colours that people tell apart who do not see all of them, and shapes and dashes besides.
  // Colours repeat after 8, pairs of colour and shape after 64.
  void ClassPoint(double x, double y, double radius, int number);
  void ClassPolyline(const Points& points, int number);
  void ClassBar(double x, double y, double width, double height, int number);
  void Circle(double x, double y, double radius, Look look);
  void Rectangle(double x, double y, double width, double height, Look look);
  /// `y` is the line on which the letters stand.
  void Text(double x, double y, const std::string& text, Font font, Anchor anchor);
  /// Runs upwards; `y` is its start, its middle or its end.
  void UprightText(double x, double y, const std::string& text, Font font, Anchor anchor = Anchor::Middle);

  /// The text, or as much of its beginning as fits into so many pixels by WidthOf(), with "..." after it.
  static std::string Fitting(const std::string& text, double pixels, Font font);
  /// How wide a text is at most, letter by letter, in Helvetica, Arial or DejaVu Sans.
  static double WidthOf(const std::string& text, Font font);

  /// The whole file.
  std::string File() const { return text_ + "</svg>\n"; }

 private:
  void AddPoints(const char* element, const Points& points, const std::string& name);
  void AddLine(double x1, double y1, double x2, double y2, const std::string& name);
  void AddRectangle(double x, double y, double width, double height, const std::string& name);

  std::string text_;
};

/// The text as content of an XML element: & < > " escaped, control characters as \x1b; U+FFFD for U+FFFE, U+FFFF and
/// bytes that are not UTF-8.
std::string XmlText(std::string_view text);

}  // namespace kalmia::analysis
