#pragma once

#include <pthread.h>

#include <cstddef>

/// In this scope no thread can be started: each asks for a stack that no machine has.
class NoMoreThreads {
 public:
  NoMoreThreads() {
    pthread_getattr_default_np(&before_);
    pthread_attr_t huge;
    pthread_attr_init(&huge);
    pthread_attr_setstacksize(&huge, std::size_t{1} << 60);
    pthread_setattr_default_np(&huge);
    pthread_attr_destroy(&huge);
  }
  ~NoMoreThreads() {
    pthread_setattr_default_np(&before_);
    pthread_attr_destroy(&before_);
  }
  NoMoreThreads(const NoMoreThreads&) = delete;
  NoMoreThreads& operator=(const NoMoreThreads&) = delete;

 private:
  pthread_attr_t before_;
};
