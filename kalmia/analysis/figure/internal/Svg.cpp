#include "kalmia/analysis/figure/internal/Svg.h"

#include <cstring>
#include <iterator>

#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/internal/Json.h"

namespace kalmia::analysis {

namespace {

/// Signals differ from points by shape and size too, limits from the centre line and a second series from the first by
/// dashes, its points by their shape: black and white will do.
constexpr auto kStyle = R"(<style>
text { font-family: Helvetica, Arial, sans-serif; font-size: 12px; fill: #222; }
text.title { font-size: 14px; font-weight: bold; }
text.tick, text.label { font-size: 11px; }
.grid { stroke: #e4e4e4; stroke-width: 1; fill: none; }
.frame { stroke: #555; stroke-width: 1; fill: none; }
.data { stroke: #1f5a8c; stroke-width: 1.2; stroke-linejoin: round; stroke-linecap: round; fill: none; }
.faint { fill: #fff; stroke: #8a8a8a; stroke-width: 1; }
.point { fill: #1f5a8c; }
.centre { stroke: #2f7d32; stroke-width: 1.2; fill: none; }
.limit { stroke: #b3261e; stroke-width: 1.2; stroke-dasharray: 6 4; fill: none; }
.signal { fill: #b3261e; stroke: #fff; stroke-width: 0.8; }
.bar { fill: #7fa6c9; stroke: #1f5a8c; stroke-width: 0.8; }
</style>
)";

/// Colours of clusters, dark enough for thin lines. Numbers beside them say the same in black and white.
constexpr const char* kClusterColours[] = {"#1f5a8c", "#c8502d", "#2f7d32", "#8a4fa3",
                                           "#9a7406", "#12808a", "#a8325f", "#5c5c2a"};
constexpr int kColours = std::size(kClusterColours);

/// Colours of classes, which the colour-blind tell apart: M. Okabe, K. Ito, Color universal design (2008).
constexpr const char* kClassColours[] = {"#0072b2", "#d55e00", "#009e73", "#cc79a7",
                                         "#e69f00", "#56b4e9", "#000000", "#f0e442"};
constexpr const char* kClassDashes[] = {"none", "7 3", "2 2", "9 3 2 3", "4 2", "12 4", "1 3", "6 2 1 2 1 2"};
constexpr int kClassColourCount = std::size(kClassColours);

constexpr auto kFigureStyle = R"(<style>
text.label { stroke: #fff; stroke-width: 2.5px; paint-order: stroke; }
.second-data { stroke: #d55e00; stroke-width: 1.2; stroke-dasharray: 5 3; stroke-linejoin: round; fill: none; }
.second-point { fill: #fff; stroke: #d55e00; stroke-width: 1.3; }
.run { stroke: #b3261e; stroke-width: 1.5; fill: none; }
.faint-line { stroke: #b4b4b4; stroke-width: 1; stroke-linejoin: round; fill: none; }
.plain { stroke: #444; stroke-width: 1; fill: none; }
.band { fill: #1f5a8c; fill-opacity: 0.18; }
.cell { fill: #0072b2; }
.second-bar { fill: #fff; stroke: #d55e00; stroke-width: 1; }
.faint-bar { fill: #ededed; stroke: #8a8a8a; stroke-width: 0.8; }
.signal-bar { fill: #e39b96; stroke: #b3261e; stroke-width: 0.8; }
.class-point { stroke: #333; stroke-width: 0.6; }
.class-line { stroke-width: 1.3; stroke-linejoin: round; fill: none; }
.class-bar { stroke: #333; stroke-width: 0.6; }
)";

/// A colour for points, lines and bars, and the dashes of lines.
std::string ClassStyle() {
  std::string style = kFigureStyle;
  for (int k = 0; k < kClassColourCount; ++k) {
    const std::string number = std::to_string(k), colour = kClassColours[k];
    style += ".class-point.c" + number + ", .class-bar.c" + number + " { fill: " + colour + "; } .class-line.c" +
             number + " { stroke: " + colour + "; } .d" + number + " { stroke-dasharray: " + kClassDashes[k] + "; }\n";
  }
  return style + "</style>\n";
}

/// The shape of a class: neighbours in a round of colours have different ones, and the next round is shifted.
int ShapeOf(int number) { return (number + number / kClassColourCount) % kClassColourCount; }

using Corners = std::vector<std::pair<double, double>>;

/// Corners of the shapes, for a circle of radius 1, of about its area; the first shape is the circle itself.
const Corners& CornersOf(int shape) {
  static const std::vector<Corners> kShapes = {
      {},
      {{0, -1.35}, {1.2, 0.8}, {-1.2, 0.8}},
      {{-0.95, -0.95}, {0.95, -0.95}, {0.95, 0.95}, {-0.95, 0.95}},
      {{0, -1.4}, {1.1, 0}, {0, 1.4}, {-1.1, 0}},
      {{0, 1.35}, {1.2, -0.8}, {-1.2, -0.8}},
      {{-0.45, -1.3}, {0.45, -1.3}, {0.45, -0.45}, {1.3, -0.45}, {1.3, 0.45}, {0.45, 0.45}, {0.45, 1.3}, {-0.45, 1.3},
       {-0.45, 0.45}, {-1.3, 0.45}, {-1.3, -0.45}, {-0.45, -0.45}},
      {{1.35, 0}, {-0.8, 1.2}, {-0.8, -1.2}},
      {{-1.35, 0}, {0.8, 1.2}, {0.8, -1.2}}};
  return kShapes[static_cast<std::size_t>(shape)];
}

std::string ClassNames(const char* what, int number) {
  return std::string(what) + " c" + std::to_string(number % kClassColourCount);
}

std::string ClusterClass(int colour) { return "k" + std::to_string(colour % kColours); }

std::string TreeStyle() {
  std::string style =
      "<style>\n"
      "text.small { font-size: 7px; }\n"
      ".branch { stroke: #444; stroke-width: 1; stroke-linecap: square; fill: none; }\n"
      ".cut { stroke: #555; stroke-width: 1; stroke-dasharray: 6 4; fill: none; }\n";
  for (int k = 0; k < kColours; ++k) {
    const std::string name = ClusterClass(k), colour = kClusterColours[k];
    style += "line." + name + " { stroke: " + colour + "; stroke-width: 1; stroke-linecap: square; } rect." + name +
             " { fill: " + colour + "; }\n";
  }
  return style + "</style>\n";
}

const char* ClassOf(Svg::Look look) {
  switch (look) {
    case Svg::Look::Grid: return "grid";
    case Svg::Look::Frame: return "frame";
    case Svg::Look::Data: return "data";
    case Svg::Look::SecondData: return "second-data";
    case Svg::Look::Faint: return "faint";
    case Svg::Look::Point: return "point";
    case Svg::Look::SecondPoint: return "second-point";
    case Svg::Look::Centre: return "centre";
    case Svg::Look::Limit: return "limit";
    case Svg::Look::Signal: return "signal";
    case Svg::Look::Run: return "run";
    case Svg::Look::Branch: return "branch";
    case Svg::Look::Cut: return "cut";
    case Svg::Look::FaintLine: return "faint-line";
    case Svg::Look::Plain: return "plain";
    case Svg::Look::Band: return "band";
    case Svg::Look::SecondBar: return "second-bar";
    case Svg::Look::FaintBar: return "faint-bar";
    case Svg::Look::SignalBar: return "signal-bar";
    case Svg::Look::Bar: break;
  }
  return "bar";
}

const char* ClassOf(Svg::Font font) {
  switch (font) {
    case Svg::Font::Title: return "title";
    case Svg::Font::Axis: return "axis";
    case Svg::Font::Tick: return "tick";
    case Svg::Font::Small: return "small";
    case Svg::Font::Label: break;
  }
  return "label";
}

const char* WordOf(Svg::Anchor anchor) {
  if (anchor == Svg::Anchor::Start) return "start";
  return anchor == Svg::Anchor::Middle ? "middle" : "end";
}

/// Pixels of an em. Bold letters are wider by up to a sixth.
double EmOf(Svg::Font font) {
  switch (font) {
    case Svg::Font::Title: return 14.0 * 7.0 / 6.0;
    case Svg::Font::Axis: return 12.0;
    case Svg::Font::Small: return 7.0;
    case Svg::Font::Tick:
    case Svg::Font::Label: break;
  }
  return 11.0;
}

struct LetterClass {
  const char* letters;
  double ems;
};
/// The letters of ASCII by the wider of their advance widths in Helvetica and in DejaVu Sans, which stands in for it.
constexpr LetterClass kLetterClasses[] = {{"ijlI|.,:;' ", 0.34},         {"frt()[]-/\\!", 0.42}, {"\"`*", 0.50},
                                          {"#&+<=>^~w", 0.84},           {"mMW%@", 1.02},
                                          {"ABCDEGHKNOPQRSTUVXYZ", 0.79}};
constexpr double kOtherLetter = 0.64;  ///< digits, most small letters
constexpr double kLongLetter = 1.1;    ///< of two or three bytes in UTF-8: other alphabets, square signs
constexpr double kPicture = 1.4;       ///< of four bytes

bool ContinuesLetter(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

/// In ems, of the letter that begins with this byte.
double LetterWidth(char first) {
  const auto byte = static_cast<unsigned char>(first);
  if (byte >= 0x80U) return byte >= 0xF0U ? kPicture : kLongLetter;
  for (const LetterClass& letters : kLetterClasses) {
    if (std::strchr(letters.letters, first) != nullptr) return letters.ems;
  }
  return kOtherLetter;
}

/// U+FFFE and U+FFFF, which XML has no place for, become U+FFFD.
std::string WithoutNonCharacters(std::string text) {
  for (const char* code : {"\xEF\xBF\xBE", "\xEF\xBF\xBF"}) {
    for (std::size_t at = text.find(code); at != std::string::npos; at = text.find(code, at)) text[at + 2] = '\xBD';
  }
  return text;
}

/// A hundredth of a pixel is finer than any printer.
std::string Number(double value) { return Fixed(value, 2); }

std::string Attribute(const char* name, double value) {
  return std::string(" ") + name + "=\"" + Number(value) + "\"";
}

std::string Class(const std::string& name) { return " class=\"" + name + "\""; }

}  // namespace

Svg::Svg(double width, double height, const std::string& title, const std::string& description)
    : text_("<svg xmlns=\"http://www.w3.org/2000/svg\"" + Attribute("width", width) + Attribute("height", height) +
            " viewBox=\"0 0 " + Number(width) + " " + Number(height) + "\">\n<title>" + XmlText(title) + "</title>\n" +
            (description.empty() ? "" : "<desc>" + XmlText(description) + "</desc>\n") + kStyle +
            "<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n") {}

void Svg::AddTreeStyle() { text_ += TreeStyle(); }

void Svg::Line(double x1, double y1, double x2, double y2, Look look) { AddLine(x1, y1, x2, y2, ClassOf(look)); }

void Svg::ClusterLine(double x1, double y1, double x2, double y2, int colour) {
  AddLine(x1, y1, x2, y2, ClusterClass(colour));
}

void Svg::AddLine(double x1, double y1, double x2, double y2, const std::string& name) {
  text_ += "<line" + Attribute("x1", x1) + Attribute("y1", y1) + Attribute("x2", x2) + Attribute("y2", y2) +
           Class(name) + "/>\n";
}

void Svg::AddFigureStyle() { text_ += ClassStyle(); }

void Svg::AddPoints(const char* element, const Points& points, const std::string& name) {
  text_ += std::string("<") + element + " points=\"";
  for (const auto& [x, y] : points) text_ += Number(x) + "," + Number(y) + " ";
  text_.back() = '"';
  text_ += Class(name) + "/>\n";
}

void Svg::Polyline(const Points& points, Look look) {
  if (points.empty()) return;
  const bool isDot = points.size() == 1;  // drawn by its round caps
  AddPoints("polyline", isDot ? Points{points[0], points[0]} : points, ClassOf(look));
}

void Svg::Polygon(const Points& points, Look look) {
  if (!points.empty()) AddPoints("polygon", points, ClassOf(look));
}

void Svg::Cell(double x, double y, double width, double height, double shade) {
  text_ += "<rect" + Attribute("x", x) + Attribute("y", y) + Attribute("width", width) + Attribute("height", height) +
           Attribute("fill-opacity", shade) + Class("cell") + "/>\n";
}

void Svg::ClassPoint(double x, double y, double radius, int number) {
  const std::string name = ClassNames("class-point", number);
  const Corners& corners = CornersOf(ShapeOf(number));
  if (corners.empty()) {
    text_ += "<circle" + Attribute("cx", x) + Attribute("cy", y) + Attribute("r", radius) + Class(name) + "/>\n";
    return;
  }
  Points points;
  for (const auto& [dx, dy] : corners) points.emplace_back(x + radius * dx, y + radius * dy);
  AddPoints("polygon", points, name);
}

void Svg::ClassPolyline(const Points& points, int number) {
  if (points.empty()) return;
  AddPoints("polyline", points, ClassNames("class-line", number) + " d" + std::to_string(ShapeOf(number)));
}

void Svg::ClassBar(double x, double y, double width, double height, int number) {
  AddRectangle(x, y, width, height, ClassNames("class-bar", number));
}

void Svg::Circle(double x, double y, double radius, Look look) {
  text_ += "<circle" + Attribute("cx", x) + Attribute("cy", y) + Attribute("r", radius) + Class(ClassOf(look)) + "/>\n";
}

void Svg::Rectangle(double x, double y, double width, double height, Look look) {
  AddRectangle(x, y, width, height, ClassOf(look));
}

void Svg::ClusterRectangle(double x, double y, double width, double height, int colour) {
  AddRectangle(x, y, width, height, ClusterClass(colour));
}

void Svg::AddRectangle(double x, double y, double width, double height, const std::string& name) {
  text_ += "<rect" + Attribute("x", x) + Attribute("y", y) + Attribute("width", width) + Attribute("height", height) +
           Class(name) + "/>\n";
}

void Svg::Text(double x, double y, const std::string& text, Font font, Anchor anchor) {
  text_ += "<text" + Attribute("x", x) + Attribute("y", y) + Class(ClassOf(font)) + " text-anchor=\"" +
           WordOf(anchor) + "\">" + XmlText(text) + "</text>\n";
}

void Svg::UprightText(double x, double y, const std::string& text, Font font, Anchor anchor) {
  text_ += "<text transform=\"translate(" + Number(x) + " " + Number(y) + ") rotate(-90)\"" + Class(ClassOf(font)) +
           " text-anchor=\"" + WordOf(anchor) + "\">" + XmlText(text) + "</text>\n";
}

double Svg::WidthOf(const std::string& text, Font font) {
  double ems = 0.0;
  for (const char byte : OneLine(text)) ems += ContinuesLetter(byte) ? 0.0 : LetterWidth(byte);
  return ems * EmOf(font);
}

std::string Svg::Fitting(const std::string& text, double pixels, Font font) {
  const std::string line = OneLine(text), dots = "...";
  if (WidthOf(line, font) <= pixels) return line;
  double room = pixels - WidthOf(dots, font);
  std::size_t end = 0;
  for (; end < line.size(); ++end) {
    if (ContinuesLetter(line[end])) continue;
    room -= LetterWidth(line[end]) * EmOf(font);
    if (room < 0.0) break;
  }
  return line.substr(0, end) + dots;
}

std::string XmlText(std::string_view text) {
  // The JSON library knows what is no UTF-8, and puts U+FFFD there.
  const Json valid = Json::parse(Json(OneLine(text)).dump(-1, ' ', false, Json::error_handler_t::replace));
  std::string escaped;
  for (const char c : WithoutNonCharacters(valid.get<std::string>())) {
    switch (c) {
      case '&': escaped += "&amp;"; break;
      case '<': escaped += "&lt;"; break;
      case '>': escaped += "&gt;"; break;
      case '"': escaped += "&quot;"; break;
      default: escaped += c;
    }
  }
  return escaped;
}

}  // namespace kalmia::analysis
