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

/// One complete pass over an object: reset, then start. A write or read that returns false sets the fail bit.
/// Throws VexStreamError where the class says so. Both mark the object as visited: one thread at a time, also to write.
KALMIA_EXPORT std::ostream& operator<<(std::ostream& stream, const VexStreamBase& object);
KALMIA_EXPORT std::istream& operator>>(std::istream& stream, VexStreamBase& object);

/// Magic and version of a class, and the version that the last Check found. Not for two threads at once.
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

/// A table of numbered entries, each a byte stream of its own: a class adds fields by adding entries, and a reader that
/// does not know an entry passes it over. For the length of one write.
class KALMIA_EXPORT OutputStreamDirectory {
 public:
  /// Nothing reaches `stream` before Close.
  OutputStreamDirectory(std::ostream& stream, unsigned short entries);
  ~OutputStreamDirectory();  ///< without a Close nothing is written
  OutputStreamDirectory(const OutputStreamDirectory&) = delete;
  OutputStreamDirectory& operator=(const OutputStreamDirectory&) = delete;

  /// Entry `index`, from 0; std::out_of_range behind the last. What nobody asks for is absent to a reader.
  std::ostream& GetOutput(unsigned short index);
  /// Writes table and entries to the underlying stream, once. If an entry's stream failed nothing is written, and the
  /// underlying stream's fail bit is set.
  void Close();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

/// For the length of one read. A table that promises more than is there sets the stream's fail bit and has no entries;
/// no memory is taken on the promise. The bytes of the outermost directory are held in memory once; a directory inside
/// an entry looks into the same bytes.
class KALMIA_EXPORT InputStreamDirectory {
 public:
  explicit InputStreamDirectory(std::istream& stream);
  ~InputStreamDirectory();
  InputStreamDirectory(const InputStreamDirectory&) = delete;
  InputStreamDirectory& operator=(const InputStreamDirectory&) = delete;

  /// Entry `index`, from 0; null if the stream has no such entry. The same stream, where it stands, each time.
  std::istream* GetInput(unsigned short index);
  /// The underlying stream stands behind the directory; GetInput gives null from now on. Streams handed out before live
  /// as long as the directory.
  void Close();

 private:
  friend bool ReadFromStreamDir(int& target, InputStreamDirectory& directory, unsigned short index, bool must);

  struct State;
  std::unique_ptr<State> state_;
};

// Byte helpers; true on success, else the stream's fail bit is set, as for a negative count and a size below 1. `items`
// may be null where the count is 0; its room is not checked. Items of 2, 4 and 8 bytes are numbers, others plain bytes.
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

/// Reads a 4-byte field or a persistent object from entry `index`. An absent entry or a failed read gives false, or,
/// with `must`, VexStreamError "ReadFromStreamDir failed" or "Error when reading from stream". A field keeps its value
/// on failure.
KALMIA_EXPORT bool ReadFromStreamDir(int& target, InputStreamDirectory& directory, unsigned short index, bool must);
KALMIA_EXPORT bool ReadFromStreamDir(VexStreamBase& target, InputStreamDirectory& directory, unsigned short index,
                                     bool must);

namespace kalmia {

/// Throws the VexStreamError of a stream that lies or ends too early: "Error when reading from stream".
[[noreturn]] KALMIA_EXPORT void ThrowReadError();

/// A root of persistence that classes share however often they derive from it, as containers do.
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
    return Class::MyStreamableData.Write(stream) && VexStreamableWriteBases(stream) && Self().VexStreamableWrite(stream);
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

/// Writes a directory of such entries: the bytes that an OutputStreamDirectory would write, without a stream for each
/// entry, which takes longer than the entries of a short vector. True on success.
KALMIA_EXPORT bool WriteDirectory(std::ostream& stream, std::initializer_list<ArrayEntry> entries);

/// The bytes from here to the end of the stream, by seeking: -1 where its buffer cannot or throws (pipes, filters),
/// 0 for a failed stream. Position and state stay, unless the buffer finds no way back from its end: bad then.
KALMIA_EXPORT std::int64_t BytesLeft(std::istream& stream);

/// Whether `count` more items of `itemSize` bytes can be there. For entries of a directory and other streams of known
/// length the answer is exact; for a stream whose length cannot be known it is true. False for a negative count.
KALMIA_EXPORT bool HasBytesFor(std::istream& stream, std::int64_t count, int itemSize);

/// Reads `count` items into `cells`, for sizes that come from the stream itself: memory is taken at once where the
/// stream's length is known to cover it, else piece by piece as the bytes arrive, never more than three times what was
/// there. On failure `cells` is empty, the fail bit is set, and the result is false.
template <class Item>
bool ReadCells(std::istream& stream, std::int64_t count, std::vector<Item>& cells);

}  // namespace kalmia

/// Registers how to make an object of a class from its plain name, for containers that hold persistent objects.
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
