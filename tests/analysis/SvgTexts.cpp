#include "SvgTexts.h"

#include <cstdlib>
#include <map>

#include "kalmia/analysis/figure/internal/Svg.h"

namespace {

using kalmia::analysis::Svg;

struct Tag {
  std::string name;
  std::map<std::string, std::string> attributes;
  bool closes = false, isEmpty = false;
};

/// Reads what stands between < and >; false where that is no tag.
bool ReadTag(const std::string& inside, Tag* tag) {
  std::size_t at = 0;
  const auto word = [&] {
    const std::size_t begin = at;
    while (at < inside.size() && (std::isalnum(static_cast<unsigned char>(inside[at])) != 0 || inside[at] == '-' ||
                                  inside[at] == ':')) {
      ++at;
    }
    return inside.substr(begin, at - begin);
  };
  if (at < inside.size() && inside[at] == '/') {
    tag->closes = true;
    ++at;
  }
  tag->name = word();
  while (at < inside.size() && inside[at] == ' ') {
    ++at;
    const std::string name = word();
    if (name.empty() || inside.compare(at, 2, "=\"") != 0) return false;
    const std::size_t begin = at + 2, end = inside.find('"', begin);
    if (end == std::string::npos) return false;
    tag->attributes[name] = inside.substr(begin, end - begin);
    at = end + 1;
  }
  if (at < inside.size() && inside[at] == '/') {
    tag->isEmpty = true;
    ++at;
  }
  return !tag->name.empty() && at == inside.size();
}

std::string Unescaped(std::string text) {
  const std::pair<const char*, const char*> marks[] = {{"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&amp;", "&"}};
  for (const auto& [mark, letter] : marks) {
    for (std::size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at + 1)) {
      text.replace(at, std::string(mark).size(), letter);
    }
  }
  return text;
}

struct Letters {
  Svg::Font font;
  double em;
};

Letters LettersOf(const std::string& name) {
  if (name == "title") return {Svg::Font::Title, 14};
  if (name == "axis") return {Svg::Font::Axis, 12};
  if (name == "small") return {Svg::Font::Small, 7};
  return {Svg::Font::Label, 11};
}

SvgText TextOf(const Tag& tag, const std::string& content) {
  const Letters letters = LettersOf(tag.attributes.at("class"));
  SvgText text;
  text.text = Unescaped(content);
  const double width = Svg::WidthOf(text.text, letters.font), ascent = 0.75 * letters.em, descent = 0.22 * letters.em;
  const std::string anchor = tag.attributes.at("text-anchor");
  const double before = anchor == "start" ? 0.0 : anchor == "middle" ? width / 2 : width;
  const auto turned = tag.attributes.find("transform");
  if (turned == tag.attributes.end()) {
    const double x = std::atof(tag.attributes.at("x").c_str()), y = std::atof(tag.attributes.at("y").c_str());
    text.left = x - before;
    text.right = text.left + width;
    text.top = y - ascent;
    text.bottom = y + descent;
    return text;
  }
  // "translate(X Y) rotate(-90)": the text runs upwards.
  const char* const numbers = turned->second.c_str() + std::string("translate(").size();
  char* behind = nullptr;
  const double x = std::strtod(numbers, &behind), y = std::strtod(behind, nullptr);
  text.left = x - ascent;
  text.right = x + descent;
  text.bottom = y + before;
  text.top = text.bottom - width;
  return text;
}

/// Goes through the elements; what is wrong with the form goes to `faults`.
struct Reading {
  std::vector<SvgText> texts;
  std::vector<std::string> faults;
  double width = 0.0, height = 0.0;
};

Reading Read(const std::string& svg) {
  Reading reading;
  std::vector<Tag> open;
  std::size_t at = 0;
  while (at < svg.size()) {
    const std::size_t begin = svg.find('<', at);
    const std::string content = svg.substr(at, begin - at);
    if (content.find('>') != std::string::npos) reading.faults.push_back("a > that closes nothing");
    if (begin == std::string::npos) break;
    const std::size_t end = svg.find('>', begin);
    Tag tag;
    if (end == std::string::npos || !ReadTag(svg.substr(begin + 1, end - begin - 1), &tag)) {
      reading.faults.push_back("no tag: " + svg.substr(begin, 80));
      break;
    }
    at = end + 1;
    for (const auto& [name, value] : tag.attributes) {
      if (value.find("nan") != std::string::npos || value.find("inf") != std::string::npos ||
          (value == "-" && name != "class") || value.find("-,") != std::string::npos) {
        reading.faults.push_back("no number: " + tag.name + " " + name + "=" + value.substr(0, 60));
      }
    }
    if (tag.closes) {
      if (open.empty() || open.back().name != tag.name) {
        reading.faults.push_back("closes nothing: " + tag.name);
        break;
      }
      if (tag.name == "text") reading.texts.push_back(TextOf(open.back(), content));
      open.pop_back();
    } else if (!tag.isEmpty) {
      if (tag.name == "svg") {
        reading.width = std::atof(tag.attributes["width"].c_str());
        reading.height = std::atof(tag.attributes["height"].c_str());
      }
      open.push_back(tag);
    }
  }
  if (!open.empty()) reading.faults.push_back("not closed: " + open.back().name);
  return reading;
}

std::string Named(const SvgText& text) { return "'" + text.text.substr(0, 60) + "'"; }

}  // namespace

std::vector<SvgText> TextsOf(const std::string& svg) { return Read(svg).texts; }

std::vector<std::string> FaultsOf(const std::string& svg) {
  const Reading reading = Read(svg);
  std::vector<std::string> faults = reading.faults;
  constexpr double kRounding = 0.02;  // of coordinates, which have two decimals
  for (std::size_t i = 0; i < reading.texts.size(); ++i) {
    const SvgText& a = reading.texts[i];
    if (a.left < -kRounding || a.top < -kRounding || a.right > reading.width + kRounding ||
        a.bottom > reading.height + kRounding) {
      faults.push_back("reaches out of the picture: " + Named(a));
    }
    for (std::size_t k = 0; k < i; ++k) {
      const SvgText& b = reading.texts[k];
      const bool isApart = a.left >= b.right - kRounding || b.left >= a.right - kRounding ||
                           a.top >= b.bottom - kRounding || b.top >= a.bottom - kRounding;
      if (!isApart) faults.push_back("overlap: " + Named(b) + " and " + Named(a));
    }
  }
  return faults;
}
