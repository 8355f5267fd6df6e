#include "app/options/CompareOptions.h"

#include <CLI/CLI.hpp>
#include <utility>

#include "app/options/CommandOptions.h"
#include "app/options/TableOptions.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::app {

namespace {

/// What is between blanks, and between quotation marks; none of an unpaired mark.
std::optional<std::vector<std::string>> WordsOf(const std::string& text) {
  std::vector<std::string> words;
  char mark = 0;
  bool isWord = false;
  for (const char letter : text) {
    const bool isMark = letter == '"' || letter == '\'';
    if (mark == 0 && letter == ' ') {
      isWord = false;
      continue;
    }
    if (!isWord) words.emplace_back();
    isWord = true;
    if (mark == 0 && isMark) {
      mark = letter;
    } else if (mark == letter) {
      mark = 0;
    } else {
      words.back() += letter;
    }
  }
  return mark == 0 ? std::make_optional(words) : std::nullopt;
}

/// What is fitted, without what all models have in common.
void DeclareRecipe(CommandOptions* command, FitRecipe* recipe, RecipeText* text) {
  command->Names("--x", &recipe->x, "columns to model from", "COLUMNS");
  command->Names("--exclude", &recipe->exclude, "columns to leave out of X", "COLUMNS");
  command->Exclude("--x", "--exclude");
  command->Text("--steps", "STEPS", &text->steps, "steps of preprocessing");
  command->Input("--steps-file", &text->stepsFile, "file of steps");
  command->Exclude("--steps", "--steps-file");
  command->Scaling("--scale", &recipe->scaling, "scaling of X");
}

/// One recipe text as a command line of its own.
class RecipeParser {
 public:
  RecipeParser() : pls_(&app_, "pls", ""), opls_(&app_, "opls", "") {
    app_.set_help_flag();
    DeclareRecipe(&pls_, &plsRecipe_, &text_);
    pls_.NumberOrAuto("--components", 0, &plsRecipe_.components, "number of components");
    DeclareRecipe(&opls_, &oplsRecipe_, &text_);
    opls_.NumberOrAuto("--predictive", 1, &oplsRecipe_.predictive, "number of predictive components");
    opls_.NumberOrAuto("--orthogonal", 0, &oplsRecipe_.components, "number of orthogonal components");
  }

  RecipeText Read(const std::vector<std::string>& words) {
    const CommandOptions& own = words.front() == pls_.Name() ? pls_ : opls_;
    own.CheckWords({words.begin() + 1, words.end()});
    std::vector<std::string> backwards(words.rbegin(), words.rend());  // as the parser takes them
    try {
      app_.parse(std::move(backwards));
    } catch (const CLI::ParseError& way) {
      own.TakeValues();  // says it better
      throw BadRequest(OneLine(way.what()));
    }
    own.TakeValues();
    if (&own == &pls_) {
      text_.recipe = plsRecipe_;
    } else {
      text_.recipe = oplsRecipe_;
    }
    return text_;
  }

 private:
  CLI::App app_;
  CommandOptions pls_, opls_;
  PLSRecipe plsRecipe_;
  OPLSRecipe oplsRecipe_;
  RecipeText text_;
};

bool IsRecipe(const std::vector<std::string>& words) {
  return !words.empty() && (words.front() == "pls" || words.front() == "opls");
}

}  // namespace

std::optional<RecipeText> ReadRecipe(const std::string& text) {
  const std::optional<std::vector<std::string>> words = WordsOf(text);
  if (!words || !IsRecipe(*words)) return std::nullopt;
  try {
    return RecipeParser().Read(*words);
  } catch (const BadRequest& failure) {
    throw BadRequest("in the recipe " + Quoted(text) + ": " + failure.what());
  }
}

void DeclareCompare(CommandOptions* command, CompareOptions* options) {
  command->File("TABLE", &options->table, "CSV table with a header, also as .gz");
  command->Files("MODEL", &options->models,
                 "two or more: recipes such as 'pls --scale centre', in quotation marks, or files that --save has "
                 "written. A recipe is pls or opls and what these commands take: --x, --exclude, --steps, "
                 "--steps-file, --scale, --components; --predictive, --orthogonal");
  command->Names("--y", &options->y,
                 "column that all model (default: that of the first stored model); several: repeat, or put commas "
                 "between");
  command->Text("--classes", "NAME", &options->classes,
                "column whose texts or numbers are the classes that all tell apart; in place of --y");
  command->Exclude("--y", "--classes");
  command->Text("--id", "NAME", &options->common.id, "column that names the rows");
  ValidatedFit fit{&options->common.groups, &options->common.groupColumn, [] { return false; }, "", ""};
  fit.hasMethods = false;
  DeclareValidation(command, &options->validation, fit);
  command->Check([options]() -> std::string {
    return options->models.size() < 2 ? "compare takes two models or more" : "";
  });
  command->Flag("--json", &options->json, "print JSON");
  DeclareReading(command, &options->reading);
  command->Examples(
      "Examples:\n"
      "  kalmia compare gasoline.csv pls 'pls --scale centre' 'pls --steps snv' --y octane --id sample\n"
      "  kalmia compare gasoline.csv octane.model 'opls --orthogonal 3' --folds random --repeats 5");
}

}  // namespace kalmia::app
