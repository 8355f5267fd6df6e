#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "app/Analysis.h"
#include "kalmia/analysis/model/DiscriminantRule.h"
#include "kalmia/pcapls/NCScale.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace kalmia::app {

/// One subcommand: declares its files and options to the parser, and words what is wrong with a command line. Values go
/// where the declarations point, at the latest in TakeValues(); the pointers must live as long as this object.
class CommandOptions {
 public:
  CommandOptions(CLI::App* program, const std::string& name, const std::string& whatItDoes);
  CommandOptions(const CommandOptions&) = delete;
  CommandOptions& operator=(const CommandOptions&) = delete;

  /// A file, `word` in the help; needed. Files come in the order of their declarations.
  void File(const std::string& word, std::string* value, const std::string& help);
  /// Further files, or words in their place, one at least; behind all others.
  void Files(const std::string& word, std::vector<std::string>* values, const std::string& help);
  /// One of the words, needed, in place of a file; `name` in the help.
  void Word(const std::string& name, const std::vector<std::string>& choices, std::string* value,
            const std::string& help);
  /// An option that takes one text, `word` in the help.
  void Text(const std::string& name, const std::string& word, std::string* value, const std::string& help);
  /// An option that takes a file to read; `-` is standard input, which only one file or option can be.
  void Input(const std::string& name, std::string* value, const std::string& help);
  /// An option that may come several times, each with one text.
  void Names(const std::string& name, std::vector<std::string>* values, const std::string& help,
             const std::string& word = "NAME");
  /// A whole number from `lowest` on.
  void Number(const std::string& name, int lowest, int* value, const std::string& help);
  void Number(const std::string& name, int lowest, std::optional<int>* value, const std::string& help);
  /// A whole number from 0 to 2^64 - 1.
  void Number(const std::string& name, std::optional<std::uint64_t>* value, const std::string& help);
  /// The same, or the word auto, which is no number.
  void NumberOrAuto(const std::string& name, int lowest, std::optional<int>* value, const std::string& help);
  /// A finite number that `accepts` is true for. `takes` names such numbers in messages: "a number above 0".
  void Real(const std::string& name, std::optional<double>* value, const std::string& takes, bool (*accepts)(double),
            const std::string& help);
  /// A number of bytes above 0: digits, and K, M, G or T for powers of 1024.
  void Size(const std::string& name, std::optional<std::uint64_t>* value, const std::string& help);
  /// One of the words.
  void Choice(const std::string& name, const std::string& word, const std::vector<std::string>& choices,
              std::string* value, const std::string& help);
  /// uv, pareto, centre or none.
  void Scaling(const std::string& name, NCScale::Scaling* value, const std::string& help);
  /// equal or data.
  void Priors(const std::string& name, ClassPriors* value, const std::string& help);
  void Flag(const std::string& name, bool* value, const std::string& help);
  /// Two options that cannot come together.
  void Exclude(const std::string& first, const std::string& second);
  /// A check of several values together, made after TakeValues() has taken them: returns what is wrong, or an empty
  /// text.
  void Check(std::function<std::string()> reason);
  /// Whether an option has come; known once the command line is parsed, and so in checks.
  bool IsGiven(const std::string& name) const;
  /// The command makes no sense without this option.
  void Require(const std::string& name);
  void Examples(const std::string& lines);

  std::string Name() const;
  /// Whether the command line calls this subcommand; known once it is parsed.
  bool IsCalled() const;

  // These throw BadRequest with one line that names the option, what came, and what would be right.

  /// Checks the words after the subcommand before they are parsed: an option without a value, or with another option in
  /// its place; a flag with a value.
  void CheckWords(const std::vector<std::string>& words) const;
  /// Checks what the parser found: unknown options, missing or surplus files, options that are missing, come twice or
  /// exclude each other, standard input read twice, values that make no sense. Converts the values.
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
  std::vector<std::string> OptionNames() const;
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
