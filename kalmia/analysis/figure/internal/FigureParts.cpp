#include "kalmia/analysis/figure/internal/FigureParts.h"

#include <cctype>
#include <filesystem>
#include <utility>

#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::analysis {

SharedNames ListOf(const std::string& key, const std::vector<std::string>& names) {
  return std::make_shared<NameList>(NameList{key, names});
}

Figure NewFigure(const std::string& name, Figure::Kind kind, const std::string& what, const std::string& subject,
                 const FigureRecipe& recipe) {
  Figure figure;
  figure.name = name;
  figure.kind = kind;
  figure.title = what + ": " + (recipe.title.empty() ? subject : recipe.title);
  figure.title.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(figure.title.front())));
  return figure;
}

std::string FileName(const std::string& table) { return OneLine(std::filesystem::path(table).filename().string()); }

FigureMark MarkOf(FigureMark::Type type, FigureLook look, std::vector<double> x, std::vector<double> y,
                  const std::string& name) {
  FigureMark mark;
  mark.type = type;
  mark.look = look;
  mark.x = std::move(x);
  mark.y = std::move(y);
  mark.name = name;
  return mark;
}

FigureMark LevelAt(double y, FigureLook look, const std::string& name) {
  return MarkOf(FigureMark::Type::Rule, look, {}, {y}, name);
}

FigureMark UprightAt(double x, FigureLook look, const std::string& name) {
  return MarkOf(FigureMark::Type::Rule, look, {x}, {}, name);
}

std::vector<double> NumbersTo(std::size_t count) {
  std::vector<double> numbers;
  for (std::size_t i = 1; i <= count; ++i) numbers.push_back(static_cast<double>(i));
  return numbers;
}

std::string LimitName(const std::string& share, double limit) { return share + ": " + Significant(limit, 4); }

std::vector<std::vector<double>> VectorsOf(const NCDataMatrix<float>& prim) {
  std::vector<std::vector<double>> vectors;
  for (int a = 1; a <= prim.SizeRows(); ++a) {
    vectors.emplace_back();
    for (int k = 1; k <= prim.SizeColumns(); ++k) {
      const float cell = prim[a][k];
      vectors.back().push_back(cell == kMissingCell<float> ? kNotANumber : ShortestDouble(cell));
    }
  }
  return vectors;
}

}  // namespace kalmia::analysis
