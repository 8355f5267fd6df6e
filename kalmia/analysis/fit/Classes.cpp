#include "kalmia/analysis/fit/Classes.h"

#include <cstddef>
#include <map>

#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {

Classes ClassesOf(const std::vector<std::string>& labels) {
  std::map<std::string, int> rowsOf;  // bytes compare as unsigned characters
  for (const std::string& label : labels) {
    if (!label.empty()) ++rowsOf[label];
  }
  if (rowsOf.size() < 2) throw BadData("a discriminant analysis takes two classes or more");
  Classes classes;
  std::map<std::string, int> numberOf;
  for (const auto& [name, rows] : rowsOf) {
    if (rows < 2) throw BadData("the class " + Quoted(name) + " has a single row");
    numberOf[name] = static_cast<int>(classes.names.size());
    classes.names.push_back(name);
  }
  for (const std::string& label : labels) classes.classOfRow.push_back(label.empty() ? -1 : numberOf[label]);
  return classes;
}

RealMatrix DummiesOf(const Classes& classes) {
  RealMatrix dummies(classes.classOfRow.size(), classes.names.size());
  for (std::size_t i = 0; i < dummies.rows; ++i) {
    const int own = classes.classOfRow[i];
    for (std::size_t c = 0; c < dummies.columns; ++c) {
      dummies(i, c) = own < 0 ? kNotANumber : (static_cast<int>(c) == own ? 1.0 : 0.0);
    }
  }
  return dummies;
}

}  // namespace kalmia::analysis
