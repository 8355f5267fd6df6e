#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "kalmia/support/CString.h"
#include "kalmia/support/Exception.h"

// The binary form of every persistent class. All numbers are little-endian on every machine; floating-point cells are
// their IEEE 754 bits. docs/streams.md describes the bytes.

/// Malformed or truncated stream data.
class VexStreamError : public Exception {
 public:
  VexStreamError();
  explicit VexStreamError(const CString& message);
};

/// Root of persistence. It writes no bytes of its own.
class VexStreamBase {
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
/// Throws VexStreamError where the class says so.
std::ostream& operator<<(std::ostream& stream, const VexStreamBase& object);
std::istream& operator>>(std::istream& stream, VexStreamBase& object);

/// Magic and version of a class, and the version that the last Check found. Not for two threads at once.
class VexStreamableData {
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
class VexStreamLight {
 public:
  static bool WriteMagicStringAndVersionNumber(std::ostream& stream, unsigned short version, const char* magic);
  static bool CheckMagicStringAndVersionNumber(std::istream& stream, unsigned short& version, const char* magic);
};

/// A table of numbered entries, each a byte stream of its own: a class adds fields by adding entries, and a reader that
/// does not know an entry passes it over. For the length of one write.
class OutputStreamDirectory {
 public:
  OutputStreamDirectory(std::ostream& stream, unsigned short entries);
  ~OutputStreamDirectory();
  OutputStreamDirectory(const OutputStreamDirectory&) = delete;
  OutputStreamDirectory& operator=(const OutputStreamDirectory&) = delete;

  std::ostream& GetOutput(unsigned short index);  ///< entry `index`, from 0; index < entries is not checked
  void Close();                                   ///< writes table and entries to the underlying stream

 private:
  struct State;
  std::unique_ptr<State> state_;
};

/// For the length of one read. Never takes more memory than the stream has bytes: a table that promises more than is
/// there sets the stream's fail bit and has no entries.
class InputStreamDirectory {
 public:
  explicit InputStreamDirectory(std::istream& stream);
  ~InputStreamDirectory();
  InputStreamDirectory(const InputStreamDirectory&) = delete;
  InputStreamDirectory& operator=(const InputStreamDirectory&) = delete;

  std::istream* GetInput(unsigned short index);  ///< entry `index`, from 0; null if the stream has no such entry
  void Close();                                  ///< the underlying stream now stands behind the directory

 private:
  struct State;
  std::unique_ptr<State> state_;
};

// Byte helpers; true on success. `count` is a number of items; a negative one fails.
bool WriteBytes(const void* items, int count, std::ostream& stream);
bool ReadBytes(void* items, int count, std::istream& stream);
bool WriteTwoBytes(const void* items, int count, std::ostream& stream);
bool ReadTwoBytes(void* items, int count, std::istream& stream);
bool WriteFourBytes(const void* items, int count, std::ostream& stream);
bool ReadFourBytes(void* items, int count, std::istream& stream);
bool WriteArray(const void* items, int count, int itemSize, std::ostream& stream);
bool ReadArray(void* items, int count, int itemSize, std::istream& stream);
bool WriteBinaryString(const char* text, std::ostream& stream);
bool ReadBinaryString(char** text, std::istream& stream);  ///< a new char[] that the caller frees; null on failure
bool ReadBinaryString(CString& text, std::istream& stream);

/// Reads a 4-byte field or a persistent object from entry `index`. An absent entry or a failed read gives false, or,
/// with `must`, VexStreamError "ReadFromStreamDir failed" or "Error when reading from stream".
bool ReadFromStreamDir(int& target, InputStreamDirectory& directory, unsigned short index, bool must);
bool ReadFromStreamDir(VexStreamBase& target, InputStreamDirectory& directory, unsigned short index, bool must);

namespace kalmia {

/// Whether `count` more items of `itemSize` bytes can be there. For entries of a directory and other streams of known
/// length the answer is exact; for a stream whose length cannot be known it is true.
bool HasBytesFor(std::istream& stream, std::int64_t count, int itemSize);

}  // namespace kalmia

/// Registers how to make an object of a class from its plain name, for containers that hold persistent objects.
class ClassCreatorRegistrator {
 public:
  ClassCreatorRegistrator(const char* typeName, const char* name, VexStreamBase* (*creator)());
  /// A new default object of the registered class, owned by the caller; null if the name is unknown.
  static VexStreamBase* Create(const char* name);
};
