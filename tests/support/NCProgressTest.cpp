#include "kalmia/support/NCProgress.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using ::testing::ElementsAre;

/// Writes down every call, and answers "stop" from then on once `stop` is set.
class Recorder : public NCProgress::Sink {
 public:
  Recorder(std::vector<std::string>* calls, const bool* stop) : calls_(calls), stop_(stop) {}
  ~Recorder() override { calls_->push_back("closed"); }
  void SetRange(float from, float to) override { Note("range", from, to); }
  bool SetValue(float value) override { return Note("value", value, 0); }
  void SetText(const char* text) override { calls_->push_back(text); }
  bool PushSubRange(float from, float to) override { return Note("push", from, to); }
  bool PopSubRange() override { return Note("pop", 0, 0); }
  bool IsBreakPressed() override { return !Note("break?", 0, 0); }
  bool NextSpin() override { return Note("spin", 0, 0); }
  void SpinDone() override { calls_->push_back("spun"); }

 private:
  bool Note(const char* what, float a, float b) {
    calls_->push_back(what + std::string(" ") + std::to_string(static_cast<int>(a)) + " " +
                      std::to_string(static_cast<int>(b)));
    return !*stop_;
  }
  std::vector<std::string>* calls_;
  const bool* stop_;
};

TEST(NCProgress, IsSilentAndNeverStopsByDefault) {
  NCProgress progress("title", 0, 1, false, false, true, nullptr);
  progress.SetRange(0, 1);
  progress.SetText("text");
  EXPECT_TRUE(progress.SetValue(0.5f));
  EXPECT_TRUE(progress.PushSubRange(0, 1));
  EXPECT_TRUE(progress.PopSubRange());
  EXPECT_FALSE(progress.IsBreakPressed());
  EXPECT_TRUE(progress.NextSpin());
  progress.SpinDone();
}

TEST(NCProgress, WithoutASinkIsSilentToo) {
  NCProgress progress{std::unique_ptr<NCProgress::Sink>()};
  EXPECT_TRUE(progress.SetValue(1));
}

TEST(NCProgress, PassesEveryCallToItsSink) {
  std::vector<std::string> calls;
  bool stop = false;
  {
    NCProgress progress(std::make_unique<Recorder>(&calls, &stop));
    progress.SetRange(-50, 0);
    EXPECT_TRUE(progress.SetValue(-10));
    progress.SetText("text");
    EXPECT_TRUE(progress.PushSubRange(1, 2));
    EXPECT_TRUE(progress.PopSubRange());
    EXPECT_FALSE(progress.IsBreakPressed());
    EXPECT_TRUE(progress.NextSpin());
    progress.SpinDone();
  }
  EXPECT_THAT(calls, ElementsAre("range -50 0", "value -10 0", "text", "push 1 2", "pop 0 0", "break? 0 0", "spin 0 0",
                                 "spun", "closed"));
}

TEST(NCProgress, PassesTheWishToStopBack) {
  std::vector<std::string> calls;
  bool stop = true;
  NCProgress progress(std::make_unique<Recorder>(&calls, &stop));
  EXPECT_FALSE(progress.SetValue(0));
  EXPECT_FALSE(progress.PushSubRange(0, 1));
  EXPECT_FALSE(progress.PopSubRange());
  EXPECT_TRUE(progress.IsBreakPressed());
  EXPECT_FALSE(progress.NextSpin());
}

TEST(NCProgress, OpensItsOwnBarsThroughTheFactory) {
  std::vector<std::string> calls;
  bool stop = false;
  NCProgress::SetSinkFactory([&](const char* title, float from, float to, bool first, bool second, bool third,
                                 const char* text) -> std::unique_ptr<NCProgress::Sink> {
    calls.push_back(title + std::to_string(static_cast<int>(from)) + std::to_string(static_cast<int>(to)) +
                    (first ? "t" : "f") + (second ? "t" : "f") + (third ? "t" : "f") + (text ? text : "null"));
    return std::make_unique<Recorder>(&calls, &stop);
  });
  NCProgress("bar ", 1, 2, false, true, true, nullptr).SetValue(1);
  NCProgress::SetSinkFactory(nullptr);
  EXPECT_THAT(calls, ElementsAre("bar 12fttnull", "value 1 0", "closed"));
  EXPECT_TRUE(NCProgress("bar", 0, 1, false, false, true, nullptr).SetValue(1));
  EXPECT_EQ(calls.size(), 3u) << "silent again";
}

TEST(NCProgress, LetsTheFactorySetAnotherOne) {
  std::vector<std::string> calls;
  bool stop = false;
  // The function is the only holder of what it captures: using that after the call shows whether it is still there.
  NCProgress::SetSinkFactory([&calls, &stop, name = std::string("a name beyond what a small string holds")](
                                 auto...) -> std::unique_ptr<NCProgress::Sink> {
    NCProgress::SetSinkFactory(nullptr);
    calls.push_back(name);
    return std::make_unique<Recorder>(&calls, &stop);
  });
  NCProgress("first", 0, 1, false, false, true, nullptr).SetValue(1);
  NCProgress("second", 0, 1, false, false, true, nullptr).SetValue(1);
  EXPECT_THAT(calls, ElementsAre("a name beyond what a small string holds", "value 1 0", "closed"));
}

TEST(NCProgress, IsSilentWhereTheFactoryGivesNoSink) {
  NCProgress::SetSinkFactory([](auto...) { return std::unique_ptr<NCProgress::Sink>(); });
  EXPECT_TRUE(NCProgress("bar", 0, 1, false, false, true, nullptr).SetValue(1));
  NCProgress::SetSinkFactory(nullptr);
}

}  // namespace
