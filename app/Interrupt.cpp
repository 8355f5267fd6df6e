#include "app/Interrupt.h"

#include <signal.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <string_view>

#include "app/Failure.h"
#include "app/TemporaryPath.h"

namespace kalmia::app {

namespace {

constexpr long kPatience = 100'000'000;       ///< nanoseconds from the signal to the deadline
constexpr long kPatienceOnHold = 20'000'000;  ///< and from one look at the holds to the next
constexpr int kDeadlineSignal = SIGVTALRM;     ///< of a timer that nothing else uses

volatile std::sig_atomic_t stopSignal = 0;
volatile std::sig_atomic_t hasDeadline = 0;
timer_t deadline;
std::atomic<int> holds{0};

/// A signal handler may call it.
void StartDeadline(long nanoseconds) {
  itimerspec time = {};
  time.it_value.tv_nsec = nanoseconds;
  timer_settime(deadline, 0, &time, nullptr);
}

/// A terminal that is closed may hang up twice, which is no haste.
extern "C" void NoteSignal(int signal) {
  if (stopSignal == 0) {
    stopSignal = signal;
    if (hasDeadline != 0) StartDeadline(kPatience);
  } else if (signal == SIGINT) {
    _exit(ExitStatus(ExitCode::Stopped));
  }
}

extern "C" void EndAtDeadline(int /*signal*/) {
  if (hasDeadline == 0) return;
  if (holds > 0) {
    StartDeadline(kPatienceOnHold);
    return;
  }
  RemoveTemporaryPaths();
  constexpr std::string_view kWiped = "\r\x1b[Kkalmia: stopped\n";  // the first characters wipe the bar
  const std::string_view text = kWiped.substr(isatty(STDERR_FILENO) == 1 ? 0 : kWiped.find('k'));
  [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, text.data(), text.size());
  _exit(ExitStatus(ExitCode::Stopped));
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

void CatchSignalsWithDeadline() {
  CatchSignals();
  sigevent event = {};
  event.sigev_notify = SIGEV_SIGNAL;
  event.sigev_signo = kDeadlineSignal;
  if (timer_create(CLOCK_MONOTONIC, &event, &deadline) != 0) return;  // the work still stops where it looks
  Handle(kDeadlineSignal, EndAtDeadline);
  hasDeadline = 1;
}

void CancelDeadline() { hasDeadline = 0; }

DeadlineHold::DeadlineHold() { ++holds; }

DeadlineHold::~DeadlineHold() { --holds; }

bool Interrupted() { return stopSignal != 0; }

int ExitStatus(ExitCode code) {
  constexpr int kShellsOffset = 128;
  return code == ExitCode::Stopped && Interrupted() ? kShellsOffset + stopSignal : static_cast<int>(code);
}

void StopIfInterrupted() {
  if (Interrupted()) throw Failure(ExitCode::Stopped, "stopped");
}

}  // namespace kalmia::app
