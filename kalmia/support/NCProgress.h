#pragma once

#include <functional>
#include <memory>

#include "kalmia/support/Export.h"

/// A progress bar that also tells whether the user wants to stop. Every long calculation takes a pointer to one; null
/// means no reports and no stop. The application supplies a Sink, which decides what a bar looks like.
/// Called only by the thread of the calculation.
class KALMIA_EXPORT NCProgress {
 public:
  /// The application's side of a bar: one operation for each of NCProgress. Its destructor closes the bar.
  class Sink {
   public:
    virtual ~Sink();
    virtual void SetRange(float from, float to) = 0;
    virtual bool SetValue(float value) = 0;
    virtual void SetText(const char* text) = 0;
    virtual bool PushSubRange(float from, float to) = 0;
    virtual bool PopSubRange() = 0;
    virtual bool IsBreakPressed() = 0;
    virtual bool NextSpin() = 0;
    virtual void SpinDone() = 0;
  };

  /// Makes the sink of a bar that the library opens itself, from the seven arguments of the constructor below. Null
  /// gives the silent sink.
  using SinkFactory = std::function<std::unique_ptr<Sink>(const char* title, float from, float to, bool first,
                                                          bool second, bool third, const char* text)>;

  /// Opens a bar with a title and a range through the sink factory, which interprets the three flags and the last text;
  /// `first` asks for a spinner. `title` and `text` may be null.
  NCProgress(const char* title, float from, float to, bool first, bool second, bool third, const char* text);
  /// Wraps the application's own sink; null gives the silent one.
  explicit NCProgress(std::unique_ptr<Sink> sink);
  ~NCProgress();
  NCProgress(const NCProgress&) = delete;
  NCProgress& operator=(const NCProgress&) = delete;

  /// Sets what bars opened by title report to from now on. An empty function restores the silent sink.
  static void SetSinkFactory(SinkFactory factory);

  void SetRange(float from, float to);      ///< new range of the current level; from > to is a convergence bar
  bool SetValue(float value);               ///< moves the bar; false: the user wants to stop
  void SetText(const char* text);           ///< the line of text under the bar
  bool PushSubRange(float from, float to);  ///< a nested level onto [from, to] of the current one; false: stop
  bool PopSubRange();                       ///< closes the innermost level; false: stop
  bool IsBreakPressed();                    ///< true: the user wants to stop; the bar does not move
  bool NextSpin();                          ///< one step of a spinner; false: stop
  void SpinDone();                          ///< ends the spinner

 private:
  std::unique_ptr<Sink> sink_;
};
