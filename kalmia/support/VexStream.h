#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <istream>
#include <limits>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "kalmia/support/CString.h"
#include "kalmia/support/Exception.h"
#include "kalmia/support/Export.h"

// The binary form of every persistent class. All numbers are little-endian on every machine; floating-point cells are
// their IEEE 754 bits. docs/streams.md describes the bytes.

/// Malformed or truncated stream data.
class KALMIA_EXPORT VexStreamError : public Exception {
 public:
  VexStreamError();
  explicit VexStreamError(const CString& message);
};

/// Root of persistence. It writes no bytes of its own.
class KALMIA_EXPORT VexStreamBase {
 public:
  virtual ~VexStreamBase();

 protected:
  virtual bool VexStreamableStartWrite(std::ostream& stream);
  virtual bool VexStreamableStartRead(std::istream& stream);
  virtual void VexStreamableReset();

  friend std::ostream& operator<<(std::ostream& stream, const VexStreamBase& object);
  friend std::istream& operator>>(std::istream& stream, VexStreamBase& object);
};

/// One complete pass over an object: reset, then start. Sets the fail bit if the write or read returns false. Throws
/// VexStreamError if the class says so. Both mark the object as visited, so one thread at a time, even to write.
KALMIA_EXPORT std::ostream& operator<<(std::ostream& stream, const VexStreamBase& object);
KALMIA_EXPORT std::istream& operator>>(std::istream& stream, VexStreamBase& object);

/// Magic and version of a class, and the version that the last Check found. One thread at a time.
class KALMIA_EXPORT VexStreamableData {
 public:
  VexStreamableData(short version, const char* magic);

  bool Write(std::ostream& stream) const;  ///< magic and own version; true on success
  bool Check(std::istream& stream);        ///< false on another magic or a failed stream; keeps the version read
  short GetVexStreamVersionNumber() const { return versionRead_; }
  short GetMyVexStreamVersionNumber() const { return version_; }

 private:
  short version_;
  std::string magic_;
  short versionRead_ = 0;
};

/// The same record for classes outside the hierarchy.
class KALMIA_EXPORT VexStreamLight {
 public:
  static bool WriteMagicStringAndVersionNumber(std::ostream& stream, unsigned short version, const char* magic);
  static bool CheckMagicStringAndVersionNumber(std::istream& stream, unsigned short& version, const char* magic);
};

/// A table of numbered entries, each a byte stream of its own. A class adds fields by adding entries; a reader skips
/// the entries that it does not know. One object serves one write.
class KALMIA_EXPORT OutputStreamDirectory {
 public:
  /// Nothing reaches `stream` before Close.
  OutputStreamDirectory(std::ostream& stream, unsigned short entries);
  ~OutputStreamDirectory();  ///< without a Close nothing is written
  OutputStreamDirectory(const OutputStreamDirectory&) = delete;
  OutputStreamDirectory& operator=(const OutputStreamDirectory&) = delete;

  /// Entry `index`, from 0; std::out_of_range after the last. An entry never requested is not written.
  std::ostream& GetOutput(unsigned short index);
  /// Writes table and entries to the underlying stream, once. If the stream of an entry failed, writes nothing and sets
  /// the fail bit of the underlying stream.
  void Close();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

/// Reads such a table; one object serves one read. A table that promises more bytes than the stream has sets its fail
/// bit, has no entries and takes no memory. The bytes of the outermost directory are held in memory once; a directory
/// inside an entry reads the same bytes.
class KALMIA_EXPORT InputStreamDirectory {
 public:
  explicit InputStreamDirectory(std::istream& stream);
  ~InputStreamDirectory();
  InputStreamDirectory(const InputStreamDirectory&) = delete;
  InputStreamDirectory& operator=(const InputStreamDirectory&) = delete;

  /// Entry `index`, from 0; null if there is no such entry. Every call returns the same stream, at its position.
  std::istream* GetInput(unsigned short index);
  /// Moves the underlying stream to the end of the directory. GetInput returns null afterwards. Streams that it
  /// returned before stay valid as long as the directory.
  void Close();

 private:
  friend bool ReadFromStreamDir(int& target, InputStreamDirectory& directory, unsigned short index, bool must);

  struct State;
  std::unique_ptr<State> state_;
};

// Byte helpers. They return true on success; otherwise, and for a negative count or a size below 1, they set the fail
// bit of the stream. `items` may be null if the count is 0; its size is not checked. Items of 2, 4 and 8 bytes are
// numbers, others plain bytes.
KALMIA_EXPORT bool WriteBytes(const void* items, int count, std::ostream& stream);
KALMIA_EXPORT bool ReadBytes(void* items, int count, std::istream& stream);
KALMIA_EXPORT bool WriteTwoBytes(const void* items, int count, std::ostream& stream);
KALMIA_EXPORT bool ReadTwoBytes(void* items, int count, std::istream& stream);
KALMIA_EXPORT bool WriteFourBytes(const void* items, int count, std::ostream& stream);
KALMIA_EXPORT bool ReadFourBytes(void* items, int count, std::istream& stream);
KALMIA_EXPORT bool WriteArray(const void* items, int count, int itemSize, std::ostream& stream);
KALMIA_EXPORT bool ReadArray(void* items, int count, int itemSize, std::istream& stream);
/// A text with its length; null writes the empty text. A text with a zero byte inside is refused by the readers.
KALMIA_EXPORT bool WriteBinaryString(const char* text, std::ostream& stream);
/// A new char[] that the caller frees; null on failure.
KALMIA_EXPORT bool ReadBinaryString(char** text, std::istream& stream);
KALMIA_EXPORT bool ReadBinaryString(CString& text, std::istream& stream);  ///< on failure `text` keeps its value

/// Reads a 4-byte field or a persistent object from entry `index`. Returns false if the entry is absent or the read
/// fails; with `must` it throws VexStreamError instead ("ReadFromStreamDir failed", "Error when reading from stream").
/// A field keeps its value on failure.
KALMIA_EXPORT bool ReadFromStreamDir(int& target, InputStreamDirectory& directory, unsigned short index, bool must);
KALMIA_EXPORT bool ReadFromStreamDir(VexStreamBase& target, InputStreamDirectory& directory, unsigned short index,
                                     bool must);

namespace kalmia {

/// Throws the VexStreamError of a stream that lies or ends too early: "Error when reading from stream".
[[noreturn]] KALMIA_EXPORT void ThrowReadError();

/// The root of persistence as a virtual base, from which the containers derive.
class KALMIA_EXPORT VirtualStreamBase : public virtual VexStreamBase {};

/// What every persistent class has beside its fields. `Class` derives from Persistent<Class> and declares, in public,
///   static DerivedStreamableData MyStreamableData;   its magic and version
///   bool VexStreamableWrite(std::ostream& stream);   writes its fields; true on success
///   bool VexStreamableRead(std::istream& stream);    reads them, after the magic and the version
/// `Base` is the persistent class that it extends.
template <class Class, class Base = VexStreamBase>
class KALMIA_EXPORT Persistent : public Base {
 public:
  class DerivedStreamableData : public VexStreamableData {
   public:
    using VexStreamableData::VexStreamableData;
  };

  using Base::Base;
  Persistent() = default;
  explicit Persistent(const Base& other) : Base(other) {}

  short GetVexStreamVersionNumber() const { return Class::MyStreamableData.GetVexStreamVersionNumber(); }
  short GetMyVexStreamVersionNumber() const { return Class::MyStreamableData.GetMyVexStreamVersionNumber(); }
  bool VexStreamableWriteBases(std::ostream& stream) { return Base::VexStreamableStartWrite(stream); }
  bool VexStreamableReadBases(std::istream& stream) { return Base::VexStreamableStartRead(stream); }

  mutable bool streamVisited = false;  ///< in this pass; << and >> start by resetting it

 protected:
  /// Writes magic and version, the base and the fields, unless the object was visited in this pass.
  bool VexStreamableStartWrite(std::ostream& stream) override {
    if (streamVisited) return true;
    streamVisited = true;
    return Class::MyStreamableData.Write(stream) && VexStreamableWriteBases(stream) &&
           Self().VexStreamableWrite(stream);
  }
  /// Checks the magic and has the rest read, unless the object was visited in this pass.
  bool VexStreamableStartRead(std::istream& stream) override {
    if (streamVisited) return true;
    streamVisited = true;
    return Class::MyStreamableData.Check(stream) && Self().VexStreamableRead(stream);
  }
  void VexStreamableReset() override {
    streamVisited = false;
    Base::VexStreamableReset();
  }

 private:
  Class& Self() { return static_cast<Class&>(*this); }
};

/// An entry of a directory that is an array of items, as WriteArray takes it; null items leave the entry out.
struct ArrayEntry {
  const void* items;
  int count;
  int itemSize;
};

/// Writes a directory of such entries, with the bytes of an OutputStreamDirectory but without a stream for each entry,
/// which would take longer than the entries of a short vector. True on success.
KALMIA_EXPORT bool WriteDirectory(std::ostream& stream, std::initializer_list<ArrayEntry> entries);

/// The bytes from here to the end of the stream, found by seeking. -1 if the buffer cannot seek or throws (pipes,
/// filters), 0 for a failed stream. Keeps position and state; sets the bad bit if the buffer cannot seek back.
KALMIA_EXPORT std::int64_t BytesLeft(std::istream& stream);

/// Whether the stream can have `count` more items of `itemSize` bytes. Exact for entries of a directory and other
/// streams of known length; true if the length is unknown. False for a negative count.
KALMIA_EXPORT bool HasBytesFor(std::istream& stream, std::int64_t count, int itemSize);

/// Reads `count` items into `cells`. The count may come from the stream: if the length of the stream is known, it is
/// checked before memory is taken; otherwise memory grows as bytes arrive, to at most three times what has arrived.
/// On failure `cells` is empty, the fail bit is set, and the result is false.
template <class Item>
bool ReadCells(std::istream& stream, std::int64_t count, std::vector<Item>& cells);

}  // namespace kalmia

/// Registers a class by its plain name, so that containers of persistent objects can make one of it.
class KALMIA_EXPORT ClassCreatorRegistrator {
 public:
  ClassCreatorRegistrator(const char* typeName, const char* name, VexStreamBase* (*creator)());
  /// A new default object of the class with this plain name, owned by the caller; null if the name is unknown. A class
  /// registers itself where its header is included: a program that includes it nowhere does not know the name.
  static VexStreamBase* Create(const char* name);
  /// The plain name under which the object's class is registered; null if it is not.
  static const char* NameOf(const VexStreamBase& object);
};

template <class Item>
bool kalmia::ReadCells(std::istream& stream, std::int64_t count, std::vector<Item>& cells) {
  constexpr std::int64_t kFirstPiece = 8192 / sizeof(Item) + 1;
  constexpr std::int64_t kLargestPiece = std::numeric_limits<int>::max() / 2;
  std::vector<Item> result;
  const std::int64_t left = BytesLeft(stream);
  const bool known = left >= 0;
  bool good = count >= 0 && (!known || count <= left / static_cast<std::int64_t>(sizeof(Item)));
  if (good && known) result.reserve(static_cast<std::size_t>(count));
  for (std::int64_t done = 0; good && done < count;) {
    const std::int64_t wish = known ? count - done : std::max(kFirstPiece, done);
    const std::int64_t piece = std::min({wish, count - done, kLargestPiece});
    if (!known) result.reserve(static_cast<std::size_t>(done + piece));
    result.resize(static_cast<std::size_t>(done + piece));
    good = ReadArray(result.data() + done, static_cast<int>(piece), sizeof(Item), stream);
    done += piece;
  }
  if (!good) {
    result = {};
    stream.setstate(std::ios_base::failbit);
  }
  cells.swap(result);
  return good;
}
