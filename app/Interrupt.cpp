#include "app/Interrupt.h"

#include <signal.h>
#include <unistd.h>

#include <csignal>

#include "app/Failure.h"

namespace kalmia::app {

namespace {

volatile std::sig_atomic_t stopSignal = 0;

/// A terminal that is closed may hang up twice, which is no haste.
extern "C" void NoteSignal(int signal) {
  if (stopSignal == 0) {
    stopSignal = signal;
  } else if (signal == SIGINT) {
    _exit(ExitStatus(ExitCode::Stopped));
  }
}

void Handle(int signal, void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;  // without SA_RESTART: a read that waits for input ends with EINTR
  sigemptyset(&action.sa_mask);
  sigaction(signal, &action, nullptr);
}

/// A signal that the starter of the process had ignored, as nohup does, stays ignored.
void CatchUnlessIgnored(int signal) {
  struct sigaction before = {};
  if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler == SIG_IGN) return;
  Handle(signal, NoteSignal);
}

}  // namespace

void CatchSignals() {
  Handle(SIGINT, NoteSignal);
  CatchUnlessIgnored(SIGTERM);
  CatchUnlessIgnored(SIGHUP);
  Handle(SIGXFSZ, SIG_IGN);
}

bool Interrupted() { return stopSignal != 0; }

int ExitStatus(ExitCode code) {
  constexpr int kShellsOffset = 128;
  return code == ExitCode::Stopped && Interrupted() ? kShellsOffset + stopSignal : static_cast<int>(code);
}

void StopIfInterrupted() {
  if (Interrupted()) throw Failure(ExitCode::Stopped, "stopped");
}

}  // namespace kalmia::app
