#include "app/options/CommandOptions.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <utility>

#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/NearestName.h"

namespace kalmia::app {

namespace {

template <class T>
struct WholeNumber {
  T value = 0;
  bool isNumber = false;
  bool isTooLarge = false;
};

template <class T>
WholeNumber<T> ReadWholeNumber(const std::string& text) {
  WholeNumber<T> number;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number.value);
  number.isTooLarge = result.ec == std::errc::result_out_of_range && result.ptr == end;
  number.isNumber = result.ec == std::errc() && result.ptr == end;
  return number;
}

/// A finite number, with a decimal point whatever the locale.
std::optional<double> ReadReal(const std::string& text) {
  double value = 0.0;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  if (result.ec != std::errc() || result.ptr != end || !std::isfinite(value)) return std::nullopt;
  return value;
}

/// Bytes: a whole number, and perhaps K, M, G or T behind it.
std::optional<std::uint64_t> ReadSize(const std::string& text) {
  std::uint64_t bytes = 0;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, bytes);
  if (result.ec != std::errc() || end - result.ptr > 1) return std::nullopt;
  const std::string units = "KMGT";
  const std::size_t unit = result.ptr == end ? 0 : units.find(*result.ptr) + 1;  // npos + 1 is 0
  if (result.ptr != end && unit == 0) return std::nullopt;
  if (bytes > std::numeric_limits<std::uint64_t>::max() >> (10 * unit)) return std::nullopt;
  return bytes << (10 * unit);
}

bool IsFlag(const CLI::Option* option) { return option->get_expected_max() == 0; }

/// " (did you mean 'leave-one-out'?)", or nothing.
std::string HintOf(const std::string& word, const std::vector<std::string>& choices) {
  const std::string nearest = NearestWord(word, choices);
  return nearest.empty() ? "" : " (did you mean " + Quoted(nearest) + "?)";
}

/// "--groups '5'": an option as it came.
std::string AsGiven(const CLI::Option* option) {
  return option->get_name() + (IsFlag(option) ? "" : " " + Quoted(option->results().front()));
}

}  // namespace

CommandOptions::CommandOptions(CLI::App* program, const std::string& name, const std::string& whatItDoes)
    : command_(program->add_subcommand(name, whatItDoes)) {
  command_->allow_extras();  // CheckRest() speaks of them
}

/// An option of one text, shown as `--name WORD` in the help. All that come are kept, for CheckCounts() to see.
CLI::Option* CommandOptions::Add(CLI::Option* option, const std::string& word) {
  return option->option_text(word)->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
}

void CommandOptions::File(const std::string& word, std::string* value, const std::string& help) {
  files_.push_back(Add(command_->add_option(word, *value, help + "; - reads standard input"), " ")->required());
  inputs_.push_back(files_.back());
}

void CommandOptions::Files(const std::string& word, std::vector<std::string>* values, const std::string& help) {
  files_.push_back(command_->add_option(word, *values, help)->option_text(" ")->required());
  lists_.push_back(files_.back());
}

void CommandOptions::Word(const std::string& name, const std::vector<std::string>& choices, std::string* value,
                          const std::string& help) {
  CLI::Option* option = Add(command_->add_option(name, *value, help), " ")->required();
  files_.push_back(option);
  nounOfFiles_ = "word";
  conversions_.emplace_back([this, option, choices] { RequireChoice(option, choices); });
}

void CommandOptions::Text(const std::string& name, const std::string& word, std::string* value,
                          const std::string& help) {
  Add(command_->add_option(name, *value, help), word);
}

void CommandOptions::Input(const std::string& name, std::string* value, const std::string& help) {
  inputs_.push_back(Add(command_->add_option(name, *value, help), "FILE"));
}

void CommandOptions::Names(const std::string& name, std::vector<std::string>* values, const std::string& help,
                           const std::string& word) {
  // One word each time, so that a file name can follow.
  lists_.push_back(command_->add_option(name, *values, help)->option_text(word)->allow_extra_args(false));
}

void CommandOptions::Number(const std::string& name, int lowest, int* value, const std::string& help) {
  CLI::Option* option = Add(command_->add_option(name, help), "N");
  conversions_.emplace_back([this, option, lowest, value] {
    if (option->count() > 0) *value = NumberOf(option, "", lowest);
  });
}

void CommandOptions::Number(const std::string& name, int lowest, std::optional<int>* value, const std::string& help) {
  CLI::Option* option = Add(command_->add_option(name, help), "N");
  conversions_.emplace_back([this, option, lowest, value] {
    if (option->count() > 0) *value = NumberOf(option, "", lowest);
  });
}

void CommandOptions::Number(const std::string& name, std::optional<std::uint64_t>* value, const std::string& help) {
  CLI::Option* option = Add(command_->add_option(name, help), "N");
  conversions_.emplace_back([this, option, value] {
    if (option->count() == 0) return;
    const std::string& text = option->results().front();
    const WholeNumber number = ReadWholeNumber<std::uint64_t>(text);
    if (!number.isNumber) {
      Refuse(option->get_name() + " takes a whole number from 0 to " +
             std::to_string(std::numeric_limits<std::uint64_t>::max()) + ", not " + Quoted(text));
    }
    *value = number.value;
  });
}

void CommandOptions::NumberOrAuto(const std::string& name, int lowest, std::optional<int>* value,
                                  const std::string& help) {
  CLI::Option* option = Add(command_->add_option(name, help), "N|auto");
  conversions_.emplace_back([this, option, lowest, value] {
    if (option->count() > 0 && option->results().front() != "auto") *value = NumberOf(option, "auto or ", lowest);
  });
}

int CommandOptions::NumberOf(const CLI::Option* option, const std::string& otherwise, int lowest) const {
  const std::string& text = option->results().front();
  const WholeNumber number = ReadWholeNumber<int>(text);
  if (number.isNumber && number.value >= lowest) return number.value;
  const std::string upTo = number.isTooLarge ? "to " + std::to_string(std::numeric_limits<int>::max()) : "on";
  Refuse(option->get_name() + " takes " + otherwise + "a whole number from " + std::to_string(lowest) + " " + upTo +
         ", not " + Quoted(text));
}

void CommandOptions::Real(const std::string& name, std::optional<double>* value, const std::string& takes,
                          bool (*accepts)(double), const std::string& help) {
  CLI::Option* option = Add(command_->add_option(name, help), "X");
  conversions_.emplace_back([this, option, value, takes, accepts] {
    if (option->count() == 0) return;
    const std::string& text = option->results().front();
    const std::optional<double> number = ReadReal(text);
    if (!number || !accepts(*number)) Refuse(option->get_name() + " takes " + takes + ", not " + Quoted(text));
    *value = number;
  });
}

void CommandOptions::Size(const std::string& name, std::optional<std::uint64_t>* value, const std::string& help) {
  CLI::Option* option = Add(command_->add_option(name, help), "SIZE");
  conversions_.emplace_back([this, option, value] {
    if (option->count() == 0) return;
    const std::string& text = option->results().front();
    *value = ReadSize(text);
    if (value->value_or(0) > 0) return;
    Refuse(option->get_name() + " takes a number of bytes above 0, such as 800000, 500M or 4G, not " + Quoted(text));
  });
}

void CommandOptions::Choice(const std::string& name, const std::string& word, const std::vector<std::string>& choices,
                            std::string* value, const std::string& help) {
  CLI::Option* option = Add(command_->add_option(name, *value, help), word);
  conversions_.emplace_back([this, option, choices] {
    if (option->count() > 0) RequireChoice(option, choices);
  });
}

void CommandOptions::RequireChoice(const CLI::Option* option, const std::vector<std::string>& choices) const {
  const std::string& word = option->results().front();
  if (std::find(choices.begin(), choices.end(), word) != choices.end()) return;
  Refuse(option->get_name() + " takes one of " + Listed(choices) + ", not " + Quoted(word) + HintOf(word, choices));
}

void CommandOptions::Scaling(const std::string& name, NCScale::Scaling* value, const std::string& help) {
  CLI::Option* option = Add(command_->add_option(name, help), "HOW");
  conversions_.emplace_back([this, option, value] {
    if (option->count() == 0) return;
    RequireChoice(option, ScalingWords());
    *value = *ScalingOfWord(option->results().front());
  });
}

void CommandOptions::Priors(const std::string& name, ClassPriors* value, const std::string& help) {
  CLI::Option* option = Add(command_->add_option(name, help), "HOW");
  conversions_.emplace_back([this, option, value] {
    if (option->count() == 0) return;
    RequireChoice(option, {"equal", "data"});
    *value = option->results().front() == "data" ? ClassPriors::Shares : ClassPriors::Equal;
  });
}

void CommandOptions::Flag(const std::string& name, bool* value, const std::string& help) {
  command_->add_flag(name, *value, help);
}

void CommandOptions::Exclude(const std::string& first, const std::string& second) {
  exclusive_.emplace_back(Find(first), Find(second));
}

void CommandOptions::Check(std::function<std::string()> reason) { checks_.push_back(std::move(reason)); }

bool CommandOptions::IsGiven(const std::string& name) const {
  const CLI::Option* option = Find(name);
  return option != nullptr && option->count() > 0;
}

void CommandOptions::Require(const std::string& name) { required_.push_back(Find(name)->required()); }

void CommandOptions::Examples(const std::string& lines) { command_->footer(lines); }

std::string CommandOptions::Name() const { return command_->get_name(); }

bool CommandOptions::IsCalled() const { return command_->parsed(); }

void CommandOptions::CheckWords(const std::vector<std::string>& words) const {
  for (std::size_t i = 0; i < words.size() && words[i] != "--"; ++i) {
    const std::size_t equals = words[i].find('=');
    const CLI::Option* option = Find(words[i].substr(0, equals));
    if (option == nullptr || option->get_positional()) continue;
    const std::string name = words[i].substr(0, equals);
    if (IsFlag(option)) {
      if (equals != std::string::npos) Refuse(name + " takes no value, not " + Quoted(words[i].substr(equals + 1)));
      continue;
    }
    const std::string needs = name + " needs a value, " + option->get_option_text();
    if (equals != std::string::npos) {
      if (equals + 1 == words[i].size()) Refuse(needs + ", behind the =");
      continue;
    }
    ++i;
    if (i == words.size()) Refuse(needs + ", behind it");
    if (words[i].empty()) Refuse(needs + ", not an empty text");
    const CLI::Option* next = Find(words[i]);
    if (next != nullptr && !next->get_positional()) {
      Refuse(needs + ", not the option " + words[i] + " (if that is the value: " + name + "=" + words[i] + ")");
    }
  }
}

void CommandOptions::TakeValues() const {
  CheckRest();
  CheckFiles();
  CheckCounts();
  CheckStandardInput();
  for (const auto& convert : conversions_) convert();
  for (const auto& check : checks_) {
    const std::string reason = check();
    if (!reason.empty()) Refuse(reason);
  }
}

/// Unknown options before words that are too many: these may be the values of those.
void CommandOptions::CheckRest() const {
  std::vector<std::string> rest = command_->remaining();
  rest.erase(std::remove(rest.begin(), rest.end(), "--"), rest.end());  // the mark behind which there are only files
  if (rest.empty()) return;
  for (const std::string& word : rest) {
    if (word.size() > 1 && word.front() == '-') {
      const std::vector<std::string> names = OptionNames();
      Refuse(Name() + " has no option " + Quoted(word) + HintOf(word.substr(0, word.find('=')), names) +
             "; it takes " + Listed(names));
    }
  }
  std::vector<std::string> words;
  for (const CLI::Option* file : files_) words.push_back(file->get_name());
  Refuse(Name() + " takes " + Counted(words.size(), nounOfFiles_) + ", " + Listed(words) + "; " + Quoted(rest.front()) +
         " is one too many");
}

void CommandOptions::CheckFiles() const {
  for (const CLI::Option* file : files_) {
    if (file->count() == 0) Refuse(Name() + " needs a " + file->get_name() + ": " + file->get_description());
    if (nounOfFiles_ == "file" && file->results().front().empty()) {
      Refuse(file->get_name() + " needs the name of a file, not an empty text");
    }
  }
}

void CommandOptions::CheckCounts() const {
  for (const CLI::Option* option : required_) {
    if (option->count() > 0) continue;
    Refuse(Name() + " needs " + option->get_name() + " " + option->get_option_text() + ": " +
           option->get_description());
  }
  for (const auto& [first, second] : exclusive_) {
    if (first->count() == 0 || second->count() == 0) continue;
    Refuse(AsGiven(first) + " and " + AsGiven(second) + " do not go together: give one of them");
  }
  for (const CLI::Option* option : command_->get_options()) {
    const bool mayComeOften = IsFlag(option) || std::find(lists_.begin(), lists_.end(), option) != lists_.end();
    if (mayComeOften || option->count() < 2) continue;
    Refuse(option->get_name() + " comes more than once, with " + Quoted(option->results()[0]) + " and " +
           Quoted(option->results()[1]) + "; it takes one " + option->get_option_text());
  }
}

/// What one file takes from standard input is not there for another.
void CommandOptions::CheckStandardInput() const {
  std::vector<std::string> names;
  for (const CLI::Option* input : inputs_) {
    if (input->count() > 0 && input->results().front() == "-") names.push_back(input->get_name());
  }
  if (names.size() > 1) Refuse("only one of " + Listed(names) + " can be -, standard input");
}

/// The option of that name, or null.
CLI::Option* CommandOptions::Find(const std::string& name) const { return command_->get_option_no_throw(name); }

/// With --help at the end.
std::vector<std::string> CommandOptions::OptionNames() const {
  std::vector<std::string> names;
  for (const CLI::Option* option : command_->get_options()) {
    if (!option->get_positional() && option != command_->get_help_ptr()) names.push_back(option->get_name());
  }
  names.emplace_back("--help");
  return names;
}

void CommandOptions::Refuse(const std::string& message) const {
  throw BadRequest(message + "; see kalmia " + Name() + " --help");
}

}  // namespace kalmia::app
