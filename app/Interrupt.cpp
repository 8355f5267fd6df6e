#include "app/Interrupt.h"

#include <signal.h>
#include <unistd.h>

#include <csignal>

#include "app/Failure.h"

namespace kalmia::app {

namespace {

volatile std::sig_atomic_t interrupted = 0;

extern "C" void NoteInterrupt(int /*signal*/) {
  if (interrupted != 0) _exit(static_cast<int>(ExitCode::Stopped));
  interrupted = 1;
}

void Handle(int signal, void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;  // without SA_RESTART: a read that waits for input ends with EINTR
  sigemptyset(&action.sa_mask);
  sigaction(signal, &action, nullptr);
}

}  // namespace

void CatchSignals() {
  Handle(SIGINT, NoteInterrupt);
  Handle(SIGXFSZ, SIG_IGN);
}

bool Interrupted() { return interrupted != 0; }

void StopIfInterrupted() {
  if (Interrupted()) throw Failure(ExitCode::Stopped, "stopped");
}

}  // namespace kalmia::app
