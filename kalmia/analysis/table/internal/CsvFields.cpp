#include "kalmia/analysis/table/internal/CsvFields.h"

#include <stdexcept>
#include <vector>

namespace kalmia::analysis {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/// Copies a text from its beginning on, with pieces of it replaced.
class TextCopier {
 public:
  explicit TextCopier(std::string_view text) : text_(text) { copy_.reserve(text.size()); }

  /// Puts `piece` in place of what stands from `begin` to `end`; pieces come in their order.
  void Replace(std::size_t begin, std::size_t end, const std::string& piece) {
    copy_ += text_.substr(copied_, begin - copied_);
    copy_ += piece;
    copied_ = end;
  }
  std::string Finish() {
    copy_ += text_.substr(copied_);
    return std::move(copy_);
  }

 private:
  std::string_view text_;
  std::size_t copied_ = 0;  ///< of the text
  std::string copy_;
};

}  // namespace

std::string WithFieldsReplaced(std::string_view text, const CsvFormat& format, const FieldReplacement& replacement) {
  const bool hasMark = format.begin == 0 && text.substr(0, kByteOrderMark.size()) == kByteOrderMark;
  CsvPlace place{hasMark ? kByteOrderMark.size() : format.begin, format.firstLine};
  TextCopier copier(text);
  std::vector<FieldPlace> fields;
  for (std::size_t record = 0; FindRecord(text, format, &place); ++record) {
    std::size_t begin = place.at;
    while (format.IsBlank(text[begin])) ++begin;  // blanks that begin a line stay
    if (!PassRecord(text, format, &place, &fields)) throw std::logic_error("the text was read without failure");
    for (std::size_t k = 0; k < fields.size(); ++k) {
      const std::optional<std::string> piece = replacement(record, k);
      if (piece) copier.Replace(begin, fields[k].next, *piece);
      begin = fields[k].next + 1;
    }
  }
  return copier.Finish();
}

}  // namespace kalmia::analysis
