#include "testing/RecordingProgress.h"

#include <algorithm>
#include <sstream>

namespace {

template <class... Parts>
std::string Words(const Parts&... parts) {
  std::ostringstream text;
  std::string separator;
  ((text << separator << parts, separator = " "), ...);
  return text.str();
}

const char* OrNull(const char* text) { return text ? text : "null"; }

class RecordingSink : public NCProgress::Sink {
 public:
  explicit RecordingSink(ProgressLog* log) : log_(log) {}
  ~RecordingSink() override { log_->calls.push_back("~"); }

  void SetRange(float from, float to) override { log_->Record(Words("SetRange", from, to)); }
  bool SetValue(float value) override { return log_->Record(Words("SetValue", value)); }
  void SetText(const char* text) override { log_->Record(Words("SetText", OrNull(text))); }
  bool PushSubRange(float from, float to) override { return log_->Record(Words("PushSubRange", from, to)); }
  bool PopSubRange() override { return log_->Record("PopSubRange"); }
  bool IsBreakPressed() override { return !log_->Record("IsBreakPressed"); }
  bool NextSpin() override { return log_->Record("NextSpin"); }
  void SpinDone() override { log_->Record("SpinDone"); }

 private:
  ProgressLog* log_;
};

}  // namespace

bool ProgressLog::Record(const std::string& call) {
  calls.push_back(call);
  return stopAt == 0 || static_cast<int>(calls.size()) < stopAt;
}

int ProgressLog::Count(const std::string& operation) const {
  return static_cast<int>(std::count_if(calls.begin(), calls.end(), [&](const std::string& call) {
    return call.substr(0, call.find(' ')) == operation;
  }));
}

std::string ProgressLog::Joined() const {
  std::string joined;
  for (const std::string& call : calls) joined += (joined.empty() ? "" : "; ") + call;
  return joined;
}

std::unique_ptr<NCProgress> RecordingBar(ProgressLog* log) {
  return std::make_unique<NCProgress>(std::make_unique<RecordingSink>(log));
}

RecordOwnBars::RecordOwnBars(ProgressLog* log) {
  NCProgress::SetSinkFactory([log](const char* title, float from, float to, bool first, bool second, bool third,
                                   const char* text) -> std::unique_ptr<NCProgress::Sink> {
    log->Record(Words("open", OrNull(title), from, to, first, second, third, OrNull(text)));
    return std::make_unique<RecordingSink>(log);
  });
}

RecordOwnBars::~RecordOwnBars() { NCProgress::SetSinkFactory({}); }
