#include "kalmia/analysis/table/internal/RefuseOtherThanText.h"

#include <algorithm>

#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {

namespace {

using std::string_view_literals::operator""sv;

constexpr const char* kHowToExport = ": open it and save the sheet as CSV (UTF-8)";
constexpr const char* kHowToUnpack = ": unpack it, and give the table that is in it";
constexpr const char* kHowToEncode = ": save it as UTF-8";

/// A kind of file by the bytes at its beginning.
struct FileKind {
  std::string_view start;
  const char* what;
  const char* remedy;
};

constexpr FileKind kKinds[] = {
    {"PK\x05\x06"sv, "an empty zip archive", ""},
    {"\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"sv, "an Excel workbook of the old form", kHowToExport},
    {"\x1F\x8B"sv, "packed by gzip twice", ": unpack it once"},
    {"BZh"sv, "packed by bzip2", kHowToUnpack},
    {"\xFD" "7zXZ\0"sv, "packed by xz", kHowToUnpack},
    {"\x28\xB5\x2F\xFD"sv, "packed by zstd", kHowToUnpack},
    {"7z\xBC\xAF\x27\x1C"sv, "a 7z archive", kHowToUnpack},
    {"\xFF\xFE\0\0"sv, "UTF-32 text", kHowToEncode},
    {"\0\0\xFE\xFF"sv, "UTF-32 text", kHowToEncode},
    {"\xFF\xFE"sv, "UTF-16 text", kHowToEncode},
    {"\xFE\xFF"sv, "UTF-16 text", kHowToEncode}};

/// A table may well begin with BZh; the file goes on with a digit and the digits of pi.
constexpr std::string_view kBzip2Goes = "1AY&SY";
constexpr std::size_t kBzip2GoesAt = 4;

bool BeginsWith(std::string_view bytes, std::string_view start) { return bytes.substr(0, start.size()) == start; }

bool IsOfKind(std::string_view bytes, const FileKind& kind) {
  if (!BeginsWith(bytes, kind.start)) return false;
  return kind.start != "BZh"sv || bytes.substr(std::min(kBzip2GoesAt, bytes.size()), kBzip2Goes.size()) == kBzip2Goes;
}

/// What a file is that begins as a zip archive with something in it does.
std::string KindOfArchive(std::string_view bytes) {
  const auto holds = [bytes](std::string_view name) { return bytes.find(name) != std::string_view::npos; };
  if (holds("xl/workbook"sv)) return std::string("an Excel workbook") + kHowToExport;
  if (holds("opendocument.spreadsheet"sv)) return std::string("an OpenDocument spreadsheet") + kHowToExport;
  return std::string("a zip archive") + kHowToUnpack;
}

/// What bytes with a zero among them are.
std::string KindByZeros(std::string_view bytes, std::size_t zero) {
  std::string zeros;  // of the first two letters, which are ASCII in nearly every header
  for (const char byte : bytes.substr(0, 4)) zeros += byte == '\0' ? '0' : 'x';
  if (zeros == "x000" || zeros == "000x") return std::string("UTF-32 text") + kHowToEncode;
  if (zeros == "x0x0" || zeros == "0x0x") return std::string("UTF-16 text") + kHowToEncode;
  const auto before = bytes.substr(0, zero);
  return "not a text file: line " + std::to_string(1 + std::count(before.begin(), before.end(), '\n')) +
         " holds a zero byte";
}

}  // namespace

void RefuseOtherThanText(std::string_view bytes, const std::string& name) {
  const auto refuse = [&name](const std::string& what) { throw BadData(name + " is " + what); };
  if (BeginsWith(bytes, "PK\x03\x04"sv)) refuse(KindOfArchive(bytes));
  for (const FileKind& kind : kKinds) {
    if (IsOfKind(bytes, kind)) refuse(std::string(kind.what) + kind.remedy);
  }
  const std::size_t zero = bytes.find('\0');
  if (zero != std::string_view::npos) refuse(KindByZeros(bytes, zero));
}

}  // namespace kalmia::analysis
