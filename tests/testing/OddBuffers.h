#pragma once

#include <ios>
#include <string>
#include <utility>

#include "testing/StreamAttacks.h"

// Input buffers of other people: what they hold is sound, but each seeks in its own way, or not at all.

/// Throws whatever it is asked, as many a decompressing filter does.
class ThrowingBuffer : public PipeBuffer {
 public:
  using PipeBuffer::PipeBuffer;

 protected:
  pos_type seekoff(off_type, std::ios_base::seekdir, std::ios_base::openmode) override { throw 7; }
  pos_type seekpos(pos_type, std::ios_base::openmode) override { throw std::ios_base::failure("no random access"); }
};

/// Goes to any offset, and knows nothing of positions.
class OffsetBuffer : public PipeBuffer {
 public:
  using PipeBuffer::PipeBuffer;

 protected:
  pos_type seekoff(off_type offset, std::ios_base::seekdir from, std::ios_base::openmode) override {
    char* const start = from == std::ios_base::beg ? eback() : from == std::ios_base::cur ? gptr() : egptr();
    setg(eback(), start + offset, egptr());
    return pos_type(gptr() - eback());
  }
};

/// Tells where it stands, and throws where it is to go elsewhere.
class TellingBuffer : public OffsetBuffer {
 public:
  using OffsetBuffer::OffsetBuffer;

 protected:
  pos_type seekoff(off_type offset, std::ios_base::seekdir from, std::ios_base::openmode which) override {
    if (from != std::ios_base::cur || offset != 0) throw std::ios_base::failure("no random access");
    return OffsetBuffer::seekoff(offset, from, which);
  }
};

/// The same, but it says so quietly.
class QuietBuffer : public OffsetBuffer {
 public:
  using OffsetBuffer::OffsetBuffer;

 protected:
  pos_type seekoff(off_type offset, std::ios_base::seekdir from, std::ios_base::openmode which) override {
    if (from != std::ios_base::cur || offset != 0) return pos_type(off_type(-1));
    return OffsetBuffer::seekoff(offset, from, which);
  }
};

/// Runs through to its end before it throws, but finds back.
class RunningBuffer : public OffsetBuffer {
 public:
  using OffsetBuffer::OffsetBuffer;

 protected:
  pos_type seekoff(off_type offset, std::ios_base::seekdir from, std::ios_base::openmode which) override {
    const pos_type place = OffsetBuffer::seekoff(offset, from, which);
    if (from == std::ios_base::end) throw std::ios_base::failure("no length");
    return place;
  }
};

/// Goes to its end, and not back.
class OneWayBuffer : public OffsetBuffer {
 public:
  using OffsetBuffer::OffsetBuffer;

 protected:
  pos_type seekoff(off_type offset, std::ios_base::seekdir from, std::ios_base::openmode which) override {
    if (from == std::ios_base::beg) throw std::ios_base::failure("no way back");
    return OffsetBuffer::seekoff(offset, from, which);
  }
};
