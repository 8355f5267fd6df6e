#include <algorithm>
#include <numeric>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "kalmia/analysis/table/TableColumns.h"
#include "kalmia/analysis/table/internal/Refuse.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {

namespace {

constexpr std::string_view kDots = "..";

/// What a column that is named a second time is.
enum class Repeats { Refused, PassedOver };

/// Reads the arguments of one option.
class ColumnReader {
 public:
  ColumnReader(const Table& table, Repeats repeats)
      : table_(table), repeats_(repeats), taken_(static_cast<std::size_t>(table.Columns())) {
    for (const std::string& name : table.ColumnNames()) longestName_ = std::max(longestName_, name.size());
  }

  void Read(const std::string& argument) {
    for (std::size_t begin = 0; begin <= argument.size();) {
      const std::size_t end = TakeLongestPart(argument, begin);
      begin = end + 1;
    }
  }

  std::vector<int> Columns() { return std::move(columns_); }

 private:
  /// The end of the part that was taken: a comma, or the end of the argument.
  std::size_t TakeLongestPart(const std::string& argument, std::size_t begin) {
    const std::size_t firstEnd = std::min(argument.find(',', begin), argument.size());
    const std::size_t longestRange = begin + 2 * longestName_ + kDots.size();
    std::size_t end = longestRange < argument.size() ? argument.rfind(',', longestRange) : argument.size();
    for (; end != std::string::npos && end > firstEnd; end = argument.rfind(',', end - 1)) {
      if (TryPart(argument.substr(begin, end - begin))) return end;
    }
    const std::string part = argument.substr(begin, firstEnd - begin);
    if (!TryPart(part)) RefusePart(part, argument);
    return firstEnd;
  }

  /// False if the text is neither a name nor a range.
  bool TryPart(const std::string& part) {
    const int only = table_.Find(part);
    if (only >= 0) {
      Take(only, only);
      return true;
    }
    for (std::size_t at = part.find(kDots); at != std::string::npos; at = part.find(kDots, at + 1)) {
      const int first = table_.Find(part.substr(0, at)), last = table_.Find(part.substr(at + kDots.size()));
      if (first < 0 || last < 0) continue;
      if (last < first) {
        Refuse("in the range " + Quoted(part) + " the last column stands before the first", AtWord(part));
      }
      Take(first, last);
      return true;
    }
    return false;
  }

  void Take(int first, int last) {
    for (int column = first; column <= last; ++column) {
      const auto c = static_cast<std::size_t>(column);
      if (taken_[c] && repeats_ == Repeats::PassedOver) continue;
      const std::string& name = table_.ColumnNames()[c];
      if (taken_[c]) Refuse("column " + Quoted(name) + " is named twice", InColumn(name));
      taken_[c] = true;
      columns_.push_back(column);
    }
  }

  /// Names what the table does not have: an end of a range, or the text as a whole.
  [[noreturn]] void RefusePart(const std::string& part, const std::string& argument) const {
    if (part.empty()) {
      Refuse("there is no column '': a name is missing beside a comma of " + Quoted(argument), AtWord(argument));
    }
    const std::size_t at = part.find(kDots);
    if (at == 0) Refuse("the range " + Quoted(part) + " lacks its first column", AtWord(part));
    if (at != std::string::npos && at + kDots.size() == part.size()) {
      RequireColumn(table_, part.substr(0, at));
      Refuse("the range " + Quoted(part) + " lacks its last column", AtWord(part));
    }
    if (at != std::string::npos) {
      RequireColumn(table_, part.substr(0, at));
      RequireColumn(table_, part.substr(at + kDots.size()));
    }
    RequireColumn(table_, part);
    throw std::logic_error("a part of names that is there was not taken");
  }

  [[noreturn]] void Refuse(const std::string& message, FailurePlace place) const {
    analysis::Refuse(table_, message, std::move(place));
  }

  const Table& table_;
  Repeats repeats_;
  std::size_t longestName_ = 0;
  std::vector<bool> taken_;
  std::vector<int> columns_;
};

std::vector<int> ReadColumns(const Table& table, const std::vector<std::string>& arguments, Repeats repeats) {
  ColumnReader reader(table, repeats);
  for (const std::string& argument : arguments) reader.Read(argument);
  return reader.Columns();
}

}  // namespace

std::vector<int> RequireColumns(const Table& table, const std::vector<std::string>& arguments) {
  return ReadColumns(table, arguments, Repeats::Refused);
}

std::vector<int> ColumnsToExclude(const Table& table, const std::vector<std::string>& arguments) {
  return ReadColumns(table, arguments, Repeats::PassedOver);
}

std::vector<int> RequireColumnsOrAll(const Table& table, const std::vector<std::string>& arguments) {
  if (!arguments.empty()) return RequireColumns(table, arguments);
  std::vector<int> all(static_cast<std::size_t>(table.Columns()));
  std::iota(all.begin(), all.end(), 0);
  return all;
}

}  // namespace kalmia::analysis
