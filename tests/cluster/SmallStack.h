#pragma once

#include <sys/resource.h>

/// In this scope the stack of the main thread may not grow beyond 1 MB, whatever the shell allows: walks that recurse
/// 100,000 deep need some 10 MB, and end in a crash.
class SmallStack {
 public:
  SmallStack() {
    getrlimit(RLIMIT_STACK, &before_);
    const rlimit small = {rlim_t{1} << 20, before_.rlim_max};
    setrlimit(RLIMIT_STACK, &small);
  }
  ~SmallStack() { setrlimit(RLIMIT_STACK, &before_); }
  SmallStack(const SmallStack&) = delete;
  SmallStack& operator=(const SmallStack&) = delete;

 private:
  rlimit before_ = {};
};
