#include "app/CsvFields.h"

#include <algorithm>

namespace kalmia::app {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool IsLineEnd(char byte) { return byte == '\r' || byte == '\n'; }

/// Walks through the fields of a text and copies it on the way.
class FieldCopier {
 public:
  FieldCopier(std::string_view text, char separator, const FieldReplacement& replacement)
      : text_(text), separator_(separator), replacement_(replacement) {
    copy_.reserve(text.size());
  }

  std::string Copy() {
    if (text_.substr(0, kByteOrderMark.size()) == kByteOrderMark) CopyUpTo(kByteOrderMark.size());
    for (std::size_t record = 0;; ++record) {
      CopyUpTo(SkipWhile(at_, [this](char byte) { return IsBlank(byte) || IsLineEnd(byte); }));
      if (at_ == text_.size()) return std::move(copy_);
      CopyRecord(record);
    }
  }

 private:
  bool IsBlank(char byte) const { return (byte == ' ' || byte == '\t') && byte != separator_; }
  bool EndsField(char byte) const { return byte == separator_ || IsLineEnd(byte); }

  template <class Condition>
  std::size_t SkipWhile(std::size_t from, Condition condition) const {
    return static_cast<std::size_t>(std::find_if_not(text_.begin() + static_cast<std::ptrdiff_t>(from), text_.end(),
                                                     condition) -
                                    text_.begin());
  }

  void CopyUpTo(std::size_t end) {
    copy_ += text_.substr(at_, end - at_);
    at_ = end;
  }

  void CopyRecord(std::size_t record) {
    for (std::size_t field = 0;; ++field) {
      const std::size_t end = EndOfField();
      const std::optional<std::string> replacement = replacement_(record, field);
      if (replacement) {
        copy_ += *replacement;
        at_ = end;
      } else {
        CopyUpTo(end);
      }
      if (at_ == text_.size() || text_[at_] != separator_) return;
      CopyUpTo(at_ + 1);
    }
  }

  std::size_t EndOfField() const {
    std::size_t end = SkipWhile(at_, [this](char byte) { return IsBlank(byte); });
    if (end < text_.size() && text_[end] == '"') end = BehindQuotation(end);
    return SkipWhile(end, [this](char byte) { return !EndsField(byte); });
  }

  /// The place behind the quotation that begins here; "" inside stands for a quotation mark.
  std::size_t BehindQuotation(std::size_t begin) const {
    for (std::size_t mark = text_.find('"', begin + 1); mark != std::string_view::npos;
         mark = text_.find('"', mark + 2)) {
      if (mark + 1 == text_.size() || text_[mark + 1] != '"') return mark + 1;
    }
    return text_.size();
  }

  std::string_view text_;
  char separator_;
  const FieldReplacement& replacement_;
  std::size_t at_ = 0;  ///< what lies before is copied
  std::string copy_;
};

}  // namespace

std::string WithFieldsReplaced(std::string_view text, char separator, const FieldReplacement& replacement) {
  return FieldCopier(text, separator, replacement).Copy();
}

}  // namespace kalmia::app
