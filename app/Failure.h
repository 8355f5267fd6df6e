#pragma once

#include <stdexcept>

namespace kalmia::app {

/// What ended the work, as one sentence for the person who asked for it. Whoever throws it has left nothing half done.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The data, or what they lead to: a cell that is no number, a column without variance, a fit that cannot be computed.
class BadData : public Failure {
 public:
  using Failure::Failure;
};

/// What was asked for makes no sense, whatever the data.
class BadRequest : public Failure {
 public:
  using Failure::Failure;
};

/// A file that cannot be read or written, or that is not what it should be.
class BadFile : public Failure {
 public:
  using Failure::Failure;
};

/// The user wanted to stop.
class Stopped : public Failure {
 public:
  using Failure::Failure;
};

}  // namespace kalmia::app
