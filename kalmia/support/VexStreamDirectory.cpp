// A directory on the stream: the number of entries (2 bytes), a table of their lengths (8 bytes each; all bits set for
// an entry that is not there), then the entries' bytes one behind the other.
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>

#include "kalmia/support/VexStream.h"
#include "kalmia/support/internal/StreamView.h"

namespace {

/// In place of the length of an entry that is not there.
constexpr std::uint64_t kAbsent = std::numeric_limits<std::uint64_t>::max();

/// An output buffer that keeps all it is given.
class StreamCollector : public std::streambuf {
 public:
  const std::string& GetBytes() const { return bytes_; }

 protected:
  int_type overflow(int_type c) override {
    if (!traits_type::eq_int_type(c, traits_type::eof())) bytes_.push_back(traits_type::to_char_type(c));
    return traits_type::not_eof(c);
  }
  std::streamsize xsputn(const char* bytes, std::streamsize count) override {
    bytes_.append(bytes, static_cast<std::size_t>(count));
    return count;
  }

 private:
  std::string bytes_;
};

struct OutputEntry {
  StreamCollector buffer;
  std::ostream stream{&buffer};
};

void WriteTable(std::ostream& stream, const std::vector<std::uint64_t>& lengths) {
  const std::uint16_t count = static_cast<std::uint16_t>(lengths.size());
  WriteTwoBytes(&count, 1, stream);
  WriteArray(lengths.data(), count, sizeof(std::uint64_t), stream);
}

/// The bytes of an entry, as a stream only once somebody wants one: that takes longer to make than to read a number.
struct InputEntry {
  InputEntry(kalmia::StreamView::Bytes bytes, std::size_t first, std::size_t length)
      : buffer(std::move(bytes), first, length) {}

  std::istream& Stream() { return stream ? *stream : stream.emplace(&buffer); }

  kalmia::StreamView buffer;
  std::optional<std::istream> stream;
};

/// Reads the table; false when it is cut off.
bool ReadLengths(std::istream& stream, std::vector<std::uint64_t>& lengths) {
  std::uint16_t entries = 0;
  return ReadTwoBytes(&entries, 1, stream) && kalmia::ReadCells(stream, entries, lengths);
}

/// The sum of the lengths, or false when it is more than any stream can have.
bool AddUp(const std::vector<std::uint64_t>& lengths, std::int64_t& total) {
  total = 0;
  for (const std::uint64_t length : lengths) {
    if (length == kAbsent) continue;
    if (length > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max() - total)) return false;
    total += static_cast<std::int64_t>(length);
  }
  return true;
}

}  // namespace

struct OutputStreamDirectory::State {
  std::ostream* stream;
  std::vector<std::unique_ptr<OutputEntry>> entries;  ///< null where nobody has asked
  bool closed = false;
};

bool kalmia::WriteDirectory(std::ostream& stream, std::initializer_list<ArrayEntry> entries) {
  std::vector<std::uint64_t> lengths;
  lengths.reserve(entries.size());
  for (const ArrayEntry& entry : entries)
    lengths.push_back(entry.items ? static_cast<std::uint64_t>(entry.count) * static_cast<std::uint64_t>(entry.itemSize)
                                  : kAbsent);
  WriteTable(stream, lengths);
  for (const ArrayEntry& entry : entries) WriteArray(entry.items, entry.count, entry.itemSize, stream);
  return stream.good();
}

OutputStreamDirectory::OutputStreamDirectory(std::ostream& stream, unsigned short entries)
    : state_(std::make_unique<State>()) {
  state_->stream = &stream;
  state_->entries.resize(entries);
}

OutputStreamDirectory::~OutputStreamDirectory() = default;

std::ostream& OutputStreamDirectory::GetOutput(unsigned short index) {
  std::unique_ptr<OutputEntry>& entry = state_->entries.at(index);
  if (!entry) entry = std::make_unique<OutputEntry>();
  return entry->stream;
}

void OutputStreamDirectory::Close() {
  if (state_->closed) return;
  state_->closed = true;
  std::ostream& stream = *state_->stream;
  std::vector<std::uint64_t> lengths;
  for (const auto& entry : state_->entries) {
    if (entry && !entry->stream.good()) return stream.setstate(std::ios_base::failbit);
    lengths.push_back(entry ? entry->buffer.GetBytes().size() : kAbsent);
  }
  WriteTable(stream, lengths);
  for (const auto& entry : state_->entries)
    if (entry) {
      const std::string& bytes = entry->buffer.GetBytes();
      stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }
}

struct InputStreamDirectory::State {
  void TakeBytes(std::istream& stream, std::int64_t total);
  InputEntry* Find(unsigned short index);  ///< null if there is no such entry, or the directory is closed

  kalmia::StreamView::Bytes bytes;                   ///< where the entries lie, or null after a failure
  std::vector<std::size_t> ends;                     ///< of each entry in `bytes`
  std::vector<bool> isAbsent;                        ///< entries that the writer left out
  std::size_t begin = 0;                             ///< of the first entry
  std::vector<std::unique_ptr<InputEntry>> entries;  ///< null where nobody has asked
  bool closed = false;
};

/// Passes the stream over the entries' bytes, copying them only where they are not in memory already.
void InputStreamDirectory::State::TakeBytes(std::istream& stream, std::int64_t total) {
  if (auto* view = dynamic_cast<kalmia::StreamView*>(stream.rdbuf())) {
    if (!kalmia::HasBytesFor(stream, total, 1)) return stream.setstate(std::ios_base::failbit);
    bytes = view->GetBytes();
    begin = view->GetPosition();
    view->Skip(static_cast<std::size_t>(total));
    return;
  }
  auto copy = std::make_shared<std::vector<char>>();
  if (kalmia::ReadCells(stream, total, *copy)) bytes = std::move(copy);
}

InputStreamDirectory::InputStreamDirectory(std::istream& stream) : state_(std::make_unique<State>()) {
  std::vector<std::uint64_t> lengths;
  std::int64_t total = 0;
  if (!ReadLengths(stream, lengths)) return;
  if (AddUp(lengths, total))
    state_->TakeBytes(stream, total);
  else
    stream.setstate(std::ios_base::failbit);
  if (!state_->bytes) return;
  state_->ends.reserve(lengths.size());
  std::size_t end = state_->begin;
  for (const std::uint64_t length : lengths) {
    state_->isAbsent.push_back(length == kAbsent);
    state_->ends.push_back(end += length == kAbsent ? 0 : static_cast<std::size_t>(length));
  }
  state_->entries.resize(lengths.size());
}

InputStreamDirectory::~InputStreamDirectory() = default;

InputEntry* InputStreamDirectory::State::Find(unsigned short index) {
  if (closed || index >= entries.size() || isAbsent[index]) return nullptr;
  std::unique_ptr<InputEntry>& entry = entries[index];
  if (!entry) {
    const std::size_t first = index == 0 ? begin : ends[index - 1U];
    entry = std::make_unique<InputEntry>(bytes, first, ends[index] - first);
  }
  return entry.get();
}

std::istream* InputStreamDirectory::GetInput(unsigned short index) {
  InputEntry* entry = state_->Find(index);
  return entry ? &entry->Stream() : nullptr;
}

void InputStreamDirectory::Close() { state_->closed = true; }

namespace {

[[noreturn]] void ThrowAbsent() { throw VexStreamError("ReadFromStreamDir failed"); }

/// The result of a read from `entry`, or what `must` makes of a failed one.
bool Judge(const std::istream& entry, bool must) {
  if (entry.fail() && must) kalmia::ThrowReadError();
  return !entry.fail();
}

}  // namespace

bool ReadFromStreamDir(int& target, InputStreamDirectory& directory, unsigned short index, bool must) {
  InputEntry* entry = directory.state_->Find(index);
  if (!entry && must) ThrowAbsent();
  if (!entry) return false;
  if (!entry->stream && entry->buffer.ReadFourBytes(target)) return true;
  int value = 0;
  if (ReadFourBytes(&value, 1, entry->Stream())) target = value;
  return Judge(entry->Stream(), must);
}

bool ReadFromStreamDir(VexStreamBase& target, InputStreamDirectory& directory, unsigned short index, bool must) {
  std::istream* entry = directory.GetInput(index);
  if (!entry && must) ThrowAbsent();
  if (!entry) return false;
  *entry >> target;
  return Judge(*entry, must);
}
