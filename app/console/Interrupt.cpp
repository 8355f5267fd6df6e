#include "app/console/Interrupt.h"

#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <string_view>

#include "app/console/TemporaryPath.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::app {

namespace {

constexpr long kPatience = 100'000'000;     ///< nanoseconds from the signal to the deadline
constexpr int kDeadlineSignal = SIGVTALRM;  ///< of a timer that nothing else uses

// Other threads read the flag; everything else is of the main thread and of the handlers that interrupt it.
std::atomic<int> stopSignal{0};
std::atomic<bool> hasDeadline{false};
std::atomic<int> holds{0};
std::atomic<bool> endsAfterHolds{false};
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<bool>::is_always_lock_free, "handlers use them");

// Set before the first handler is.
timer_t deadline;
pthread_t mainThread;
bool errorIsTerminal = false;

void StartDeadline() {
  itimerspec time = {};
  time.it_value.tv_nsec = kPatience;
  timer_settime(deadline, 0, &time, nullptr);
}

/// Nothing where standard error cannot take it, as a pipe that nobody reads: the end waits for nobody.
void SayStopped() {
  constexpr std::string_view kWiped = "\r\x1b[Kkalmia: stopped\n";  // the first characters wipe the bar
  const std::string_view text = kWiped.substr(errorIsTerminal ? 0 : kWiped.find('k'));
  pollfd error = {STDERR_FILENO, POLLOUT, 0};
  if (poll(&error, 1, 0) != 1) return;
  [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, text.data(), text.size());
}

[[noreturn]] void End() {
  RemoveTemporaryPaths();
  SayStopped();
  _exit(ExitStatus(ExitCode::Stopped));
}

void EndUnlessHeld() {
  if (holds == 0) End();
  endsAfterHolds = true;
}

void NoteSignal(int signal) {
  if (stopSignal == 0) {
    stopSignal = signal;
    if (hasDeadline) StartDeadline();
  } else if (signal == SIGINT) {
    EndUnlessHeld();
  }
}

void MeetDeadline(int /*signal*/) {
  if (hasDeadline) EndUnlessHeld();
}

/// Handles a signal in the main thread alone, so that no hold begins while the handler looks at the holds.
template <void (*handle)(int)>
void InMainThread(int signal) {
  const int error = errno;
  if (pthread_equal(pthread_self(), mainThread) != 0) {
    handle(signal);
  } else {
    pthread_kill(mainThread, signal);
  }
  errno = error;
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
  Handle(signal, InMainThread<NoteSignal>);
}

/// False where there is no timer: the work then stops where it looks.
bool MakeDeadline() {
  sigevent event = {};
  event.sigev_notify = SIGEV_SIGNAL;
  event.sigev_signo = kDeadlineSignal;
  if (timer_create(CLOCK_MONOTONIC, &event, &deadline) != 0) return false;
  sigset_t own = {};
  sigemptyset(&own);
  sigaddset(&own, kDeadlineSignal);  // which the starter of the process may have blocked
  return pthread_sigmask(SIG_UNBLOCK, &own, nullptr) == 0;
}

}  // namespace

void CatchSignals() {
  mainThread = pthread_self();
  errorIsTerminal = isatty(STDERR_FILENO) == 1;
  Handle(SIGINT, InMainThread<NoteSignal>);
  CatchUnlessIgnored(SIGTERM);
  CatchUnlessIgnored(SIGHUP);
  Handle(SIGXFSZ, SIG_IGN);
}

void CatchSignalsWithDeadline() {
  mainThread = pthread_self();
  if (MakeDeadline()) {
    Handle(kDeadlineSignal, InMainThread<MeetDeadline>);
    hasDeadline = true;
  }
  CatchSignals();  // last: a signal finds its deadline
}

void CancelDeadline() { hasDeadline = false; }

DeadlineHold::DeadlineHold() { ++holds; }

DeadlineHold::~DeadlineHold() {
  if (--holds == 0 && endsAfterHolds) End();
}

bool Interrupted() { return stopSignal != 0; }

int ExitStatus(ExitCode code) {
  constexpr int kShellsOffset = 128;
  return code == ExitCode::Stopped && Interrupted() ? kShellsOffset + stopSignal : static_cast<int>(code);
}

void StopIfInterrupted() {
  if (Interrupted()) throw Stopped("stopped");
}

}  // namespace kalmia::app
