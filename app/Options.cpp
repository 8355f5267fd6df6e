#include "app/Options.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <map>
#include <sstream>

#include "app/DisplayText.h"
#include "app/Failure.h"
#include "app/Version.h"

namespace kalmia::app {

namespace {

const std::map<std::string, NCScale::Scaling>& Scalings() {
  static const std::map<std::string, NCScale::Scaling> scalings = {{"uv", NCScale::ScalingUnitVariance},
                                                                   {"pareto", NCScale::ScalingPareto},
                                                                   {"centre", NCScale::ScalingCentre},
                                                                   {"none", NCScale::ScalingNone}};
  return scalings;
}

std::optional<int> WholeNumber(const std::string& text) {
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

/// A whole number of at least `lowest`; `otherwise` says what else the option takes.
int RequireNumber(const std::string& option, const std::string& text, int lowest, const std::string& otherwise) {
  const std::optional<int> number = WholeNumber(text);
  if (!number || *number < lowest) {
    throw Failure(ExitCode::Usage, option + " takes a whole number from " + std::to_string(lowest) + " on" + otherwise +
                                       ", not " + Quoted(text));
  }
  return *number;
}

NCScale::Scaling RequireScaling(const std::string& word) {
  const auto found = Scalings().find(word);
  if (found == Scalings().end()) {
    throw Failure(ExitCode::Usage, "--scale takes uv, pareto, centre or none, not " + Quoted(word));
  }
  return found->second;
}

void RefuseStandardInputTwice(const std::string& a, const std::string& b) {
  if (a == "-" && b == "-") throw Failure(ExitCode::Usage, "only one of the two files can be standard input");
}

/// An option that is there with nothing in it is a slip, as of a script whose variable is empty.
void RefuseEmptyValues(const CLI::App& command) {
  for (const CLI::Option* option : command.get_options()) {
    for (const std::string& value : option->results()) {
      if (value.empty()) throw Failure(ExitCode::Usage, option->get_name() + " needs a value, not an empty text");
    }
  }
}

constexpr auto kMainFooter =
    "Examples:\n"
    "  kalmia describe gasoline.csv\n"
    "  kalmia pls gasoline.csv --y octane --id sample --save octane.model\n"
    "  kalmia predict octane.model new.csv\n"
    "  kalmia info octane.model\n\n"
    "Exit codes: 0 done, 1 bad data, 2 wrong usage, 3 a file cannot be read or written,\n"
    "130 stopped with Ctrl-C. 'kalmia COMMAND --help' tells more.";

constexpr auto kPlsFooter =
    "Examples:\n"
    "  kalmia pls gasoline.csv --y octane --id sample --scale centre --save octane.model\n"
    "  kalmia pls oil.csv --y yellow --y green --id sample --x Acidity..DK --csv results";

/// What the parser fills, before the texts are made numbers.
struct RawNumbers {
  std::string components = "auto";
  std::string groups = "7";
  std::string scale = "uv";
};

/// An option of one word, shown as `--name WORD` in the help.
template <class T>
CLI::Option* AddOption(CLI::App* command, const std::string& name, T* value, const std::string& word,
                       const std::string& help) {
  return command->add_option(name, *value, help)->option_text(word);
}

/// An option that may come several times; each time it takes one word, so that a file name can follow.
CLI::Option* AddNames(CLI::App* command, const std::string& name, std::vector<std::string>* values,
                      const std::string& help) {
  return AddOption(command, name, values, "NAME", help)->allow_extra_args(false);
}

CLI::Option* AddFile(CLI::App* command, const std::string& name, std::string* value, const std::string& help) {
  return AddOption(command, name, value, " ", help + "; - reads standard input")->required();
}

void AddPls(CLI::App* app, PlsOptions* options, RawNumbers* raw) {
  CLI::App* pls = app->add_subcommand("pls", "Fit a PLS model and judge every component by cross-validation");
  AddFile(pls, "TABLE", &options->table, "CSV table with a header");
  AddNames(pls, "--y", &options->y, "column to model; several: repeat, or put commas between")->required();
  AddOption(pls, "--id", &options->id, "NAME", "column that names the rows");
  auto* x = AddOption(pls, "--x", &options->x, "FIRST..LAST", "columns to model from (default: all others of numbers)");
  AddNames(pls, "--exclude", &options->exclude, "columns to leave out of X; not with --x")->excludes(x);
  AddOption(pls, "--scale", &raw->scale, "HOW", "scaling of X: uv (default), pareto, centre or none");
  AddOption(pls, "--components", &raw->components, "N|auto",
            "number of components; auto (default): as long as Q2 exceeds its limit");
  auto* groups = AddOption(pls, "--groups", &raw->groups, "N", "number of groups of the cross-validation (default: 7)");
  AddOption(pls, "--group-column", &options->groupColumn, "NAME",
            "column whose values are the groups; not with --groups")
      ->excludes(groups);
  AddOption(pls, "--save", &options->save, "FILE", "store the model");
  pls->add_flag("--json", options->json, "print JSON");
  AddOption(pls, "--csv", &options->csvFolder, "DIR", "write scores, loadings, coefficients and more as CSV files");
  pls->footer(kPlsFooter);
}

void AddPredict(CLI::App* app, PredictOptions* options) {
  CLI::App* predict = app->add_subcommand("predict", "Predict new rows with a stored model");
  AddFile(predict, "MODEL", &options->model, "file that pls --save has written");
  AddFile(predict, "TABLE", &options->table, "CSV table with columns named as the model's");
  AddOption(predict, "--id", &options->id, "NAME", "column that names the rows (default: the model's, if it is there)");
  predict->add_flag("--json", options->json, "print JSON");
  AddOption(predict, "--csv", &options->csvFolder, "DIR", "write predictions.csv");
  predict->footer("Example:\n  kalmia predict octane.model new.csv");
}

void AddInfo(CLI::App* app, InfoOptions* options) {
  CLI::App* info = app->add_subcommand("info", "Show what a stored model holds");
  AddFile(info, "MODEL", &options->model, "file that pls --save has written");
  info->add_flag("--json", options->json, "print JSON");
  info->footer("Example:\n  kalmia info octane.model");
}

void AddDescribe(CLI::App* app, DescribeOptions* options) {
  CLI::App* describe = app->add_subcommand("describe", "Show counts, means and spread of the columns of a table");
  AddFile(describe, "TABLE", &options->table, "CSV table with a header");
  describe->add_flag("--json", options->json, "print JSON");
  describe->footer("Example:\n  kalmia describe gasoline.csv");
}

std::string FirstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

void RefuseUnknownCommand(const CLI::App& app, int argc, const char* const* argv) {
  if (argc < 2 || argv[1][0] == '-') return;
  const std::string word = argv[1];
  if (!app.get_subcommands([&word](const CLI::App* command) { return command->get_name() == word; }).empty()) return;
  throw Failure(ExitCode::Usage, "there is no command " + Quoted(word) + "; see kalmia --help");
}

/// The command line that prints the help for what was asked.
std::string HelpCommand(const CLI::App& app) {
  std::string words = "kalmia ";
  for (const CLI::App* command : app.get_subcommands()) words += command->get_name() + " ";
  return words + "--help";
}

/// What a way out of the parser that is no error prints: help or version.
Answer AnswerOf(const CLI::App& app, const CLI::ParseError& way) {
  std::ostringstream out;
  std::ostringstream err;
  app.exit(way, out, err);
  return {out.str()};
}

}  // namespace

Command ParseCommandLine(int argc, const char* const* argv) {
  CLI::App app("Partial least squares on tables with missing cells.", "kalmia");
  PlsOptions pls;
  PredictOptions predict;
  InfoOptions info;
  DescribeOptions describe;
  RawNumbers raw;
  app.set_version_flag("--version", std::string("kalmia ") + kVersion, "print the version and end");
  app.require_subcommand(1);
  app.footer(kMainFooter);
  app.set_help_flag("-h,--help", "print this text and end");  // subcommands inherit it
  AddPls(&app, &pls, &raw);
  AddPredict(&app, &predict);
  AddInfo(&app, &info);
  AddDescribe(&app, &describe);
  RefuseUnknownCommand(app, argc, argv);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return AnswerOf(app, error);
    throw Failure(ExitCode::Usage, OneLine(FirstLine(error.what())) + "; see " + HelpCommand(app));
  }
  for (const CLI::App* command : app.get_subcommands()) RefuseEmptyValues(*command);
  if (app.got_subcommand("pls")) {
    if (raw.components != "auto") pls.components = RequireNumber("--components", raw.components, 1, ", or auto");
    pls.groups = RequireNumber("--groups", raw.groups, 2, "");
    pls.scaling = RequireScaling(raw.scale);
    return pls;
  }
  if (app.got_subcommand("predict")) {
    RefuseStandardInputTwice(predict.model, predict.table);
    return predict;
  }
  if (app.got_subcommand("info")) return info;
  return describe;
}

std::string ScalingWord(NCScale::Scaling scaling) {
  for (const auto& [word, value] : Scalings()) {
    if (value == scaling) return word;
  }
  return "undefined";
}

}  // namespace kalmia::app
