#pragma once

#include <string>
#include <vector>

/// A text of an SVG picture, with the box that its letters take at most: the widths of Svg::WidthOf, capitals of three
/// quarters of an em above the line, and a little below it.
struct SvgText {
  std::string text;
  double left = 0.0, top = 0.0, right = 0.0, bottom = 0.0;
};

/// The texts of a picture as Kalmia writes them.
std::vector<SvgText> TextsOf(const std::string& svg);

/// What is wrong with a picture, a line each: it is no well-formed XML, a text reaches out of it, two texts overlap, a
/// coordinate is no number. Empty for a good one.
std::vector<std::string> FaultsOf(const std::string& svg);
