#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "kalmia/pcapls/NCScale.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace kalmia::app {

/// One subcommand: declares its files and options to the parser, and says in own words what is wrong with a command
/// line. Values are written to where the declarations say, at the latest by TakeValues(). The pointers have to live as
/// long as this object.
class CommandOptions {
 public:
  CommandOptions(CLI::App* program, const std::string& name, const std::string& whatItDoes);
  CommandOptions(const CommandOptions&) = delete;
  CommandOptions& operator=(const CommandOptions&) = delete;

  /// A file, `word` in the help; needed. Files come in the order of their declarations.
  void File(const std::string& word, std::string* value, const std::string& help);
  /// One of the words, needed, in place of a file; `name` in the help.
  void Word(const std::string& name, const std::vector<std::string>& choices, std::string* value,
            const std::string& help);
  /// An option with one text behind it, `word` in the help.
  void Text(const std::string& name, const std::string& word, std::string* value, const std::string& help);
  /// An option with a file behind it that the command reads, `-` for standard input; of files and such options no two
  /// can be that.
  void Input(const std::string& name, std::string* value, const std::string& help);
  /// An option that may come several times, each time with one text behind it.
  void Names(const std::string& name, std::vector<std::string>* values, const std::string& help,
             const std::string& word = "NAME");
  /// A whole number from `lowest` on.
  void Number(const std::string& name, int lowest, int* value, const std::string& help);
  void Number(const std::string& name, int lowest, std::optional<int>* value, const std::string& help);
  /// The same, or the word auto, which is no number.
  void NumberOrAuto(const std::string& name, int lowest, std::optional<int>* value, const std::string& help);
  /// Any finite number that `accepts` takes; `takes` says in messages which those are: "a number above 0".
  void Real(const std::string& name, std::optional<double>* value, const std::string& takes, bool (*accepts)(double),
            const std::string& help);
  /// A number of bytes above 0: digits, and K, M, G or T for powers of 1024.
  void Size(const std::string& name, std::optional<std::uint64_t>* value, const std::string& help);
  /// One of the words.
  void Choice(const std::string& name, const std::string& word, const std::vector<std::string>& choices,
              std::string* value, const std::string& help);
  /// uv, pareto, centre or none.
  void Scaling(const std::string& name, NCScale::Scaling* value, const std::string& help);
  void Flag(const std::string& name, bool* value, const std::string& help);
  /// Two options that cannot come together.
  void Exclude(const std::string& first, const std::string& second);
  /// What is wrong with the values together, each good for itself; `reason` is empty if nothing is. It sees them as
  /// TakeValues() has left them.
  void Check(std::function<std::string()> reason);
  /// The command makes no sense without this option.
  void Require(const std::string& name);
  void Examples(const std::string& lines);

  std::string Name() const;
  /// Whether the command line calls this subcommand; known once it is parsed.
  bool IsCalled() const;

  // These throw BadRequest with one line that names the option, what came, and what would be right.

  /// Looks at the words behind the subcommand, before they are parsed: an option with nothing behind it, or with
  /// another option where its value should be; a flag with a value.
  void CheckWords(const std::vector<std::string>& words) const;
  /// Looks at what the parser found: unknown options, files that are missing or too many, options that are missing,
  /// come twice or exclude each other, standard input read twice, values that make no sense. Converts the values.
  void TakeValues() const;

 private:
  CLI::Option* Add(CLI::Option* option, const std::string& word);
  void RequireChoice(const CLI::Option* option, const std::vector<std::string>& choices) const;
  CLI::Option* Find(const std::string& name) const;
  int NumberOf(const CLI::Option* option, const std::string& otherwise, int lowest) const;
  void CheckRest() const;
  void CheckFiles() const;
  void CheckCounts() const;
  void CheckStandardInput() const;
  std::string OptionNames() const;
  [[noreturn]] void Refuse(const std::string& message) const;

  CLI::App* command_;  ///< owned by the program
  std::vector<CLI::Option*> files_;   ///< what stands without an option before it
  std::string nounOfFiles_ = "file";
  std::vector<CLI::Option*> inputs_;  ///< files that are read: of files_, and behind options
  std::vector<CLI::Option*> lists_;
  std::vector<CLI::Option*> required_;
  std::vector<std::pair<CLI::Option*, CLI::Option*>> exclusive_;
  std::vector<std::function<void()>> conversions_;
  std::vector<std::function<std::string()>> checks_;
};

}  // namespace kalmia::app
