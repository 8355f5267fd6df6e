#pragma once

#include <string>
#include <vector>

namespace kalmia::analysis {

/// Lines of cells in aligned columns, below a header.
class TextTable {
 public:
  enum class Align { Left, Right };

  void AddColumn(const std::string& title, Align align);
  /// One cell for each column; control characters are escaped.
  void AddRow(const std::vector<std::string>& cells);
  /// Two blanks before each column; no blanks at the ends of lines.
  std::string Text() const;

 private:
  std::vector<Align> aligns_;
  std::vector<std::vector<std::string>> rows_ = {{}};  ///< the header is the first
};

}  // namespace kalmia::analysis
