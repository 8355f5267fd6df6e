#include "app/Options.h"

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>
#include <sstream>
#include <utility>

#include "app/CommandOptions.h"
#include "app/DisplayText.h"
#include "app/Failure.h"
#include "app/Steps.h"
#include "app/Version.h"

namespace kalmia::app {

namespace {

constexpr auto kMainFooter =
    "Examples:\n"
    "  kalmia describe gasoline.csv\n"
    "  kalmia pls gasoline.csv --y octane --id sample --save octane.model\n"
    "  kalmia pca wine.csv --id sample --exclude cultivar\n"
    "  kalmia predict octane.model new.csv\n"
    "  kalmia fill wine.csv --out filled.csv --id sample --exclude cultivar\n"
    "  kalmia info octane.model\n"
    "  kalmia cluster wine.csv --method ward --id sample --exclude cultivar --cut 3 --svg tree.svg\n"
    "  kalmia chart drift.csv --column diameter --type mean-range --subgroup 5 --svg chart.svg\n\n"
    "Exit codes: 0 done, 1 bad data, 2 wrong usage, 3 a file cannot be read or written,\n"
    "130 stopped with Ctrl-C. 'kalmia COMMAND --help' tells more.";

/// The options of every command that fits a model. The table is declared before, so that it comes first in the help.
template <class DeclareComponents>
void DeclareFit(CommandOptions* command, FitOptions* options, const DeclareComponents& declareComponents) {
  command->Text("--id", "NAME", &options->id, "column that names the rows");
  command->Text("--x", "FIRST..LAST", &options->x, "columns to model from (default: all others of numbers)");
  command->Names("--exclude", &options->exclude, "columns to leave out of X; not with --x");
  command->Exclude("--x", "--exclude");
  command->Text("--steps-file", "FILE", &options->stepsFile,
                "preprocess X by these steps, which predict repeats; see kalmia preprocess --help");
  command->Scaling("--scale", &options->scaling, "scaling of X: uv (default), pareto, centre or none");
  declareComponents();
  command->Number("--groups", 2, &options->groups, "number of groups of the cross-validation (default: 7)");
  command->Text("--group-column", "NAME", &options->groupColumn,
                "column whose values are the groups; not with --groups");
  command->Exclude("--groups", "--group-column");
  command->Text("--save", "FILE", &options->save, "store the model");
  command->Flag("--json", &options->json, "print JSON");
}

void DeclareFit(CommandOptions* command, FitOptions* options) {
  DeclareFit(command, options, [=] {
    command->NumberOrAuto("--components", 1, &options->components,
                          "number of components; auto (default): as long as Q2 exceeds its limit");
  });
}

void DeclarePls(CommandOptions* command, PlsOptions* options) {
  command->File("TABLE", &options->table, "CSV table with a header");
  command->Names("--y", &options->y, "column to model, always needed; several: repeat, or put commas between");
  command->Require("--y");
  DeclareFit(command, options);
  command->Text("--csv", "DIR", &options->csvFolder, "write scores, loadings, coefficients and more as CSV files");
  command->Examples(
      "Examples:\n"
      "  kalmia pls gasoline.csv --y octane --id sample --scale centre --save octane.model\n"
      "  kalmia pls oil.csv --y yellow --y green --id sample --x Acidity..DK --csv results");
}

void DeclarePca(CommandOptions* command, PcaOptions* options) {
  command->File("TABLE", &options->table, "CSV table with a header");
  DeclareFit(command, options);
  command->Text("--csv", "DIR", &options->csvFolder, "write scores, loadings and more as CSV files");
  command->Examples(
      "Examples:\n"
      "  kalmia pca wine.csv --id sample --exclude cultivar\n"
      "  kalmia pca gasoline.csv --id sample --exclude octane --scale centre --save spectra.model --csv results");
}

void DeclareOpls(CommandOptions* command, OplsOptions* options) {
  command->File("TABLE", &options->table, "CSV table with a header");
  command->Names("--y", &options->y, "column to model, always needed; several: repeat, or put commas between");
  command->Require("--y");
  DeclareFit(command, options, [=] {
    command->NumberOrAuto("--predictive", 1, &options->predictive,
                          "number of predictive components; auto (default): those of note in Y'X");
    command->NumberOrAuto("--orthogonal", 0, &options->components,
                          "number of orthogonal components; auto (default): as long as Q2 gains more than its limit");
  });
  command->Text("--save-cv", "FILE", &options->saveCv, "store the cross-validation, for --resume");
  command->Text("--resume", "FILE", &options->resume, "go on from what --save-cv has stored of the same table");
  command->Text("--csv", "DIR", &options->csvFolder, "write scores, loadings, coefficients and more as CSV files");
  command->Examples(
      "Examples:\n"
      "  kalmia opls gasoline.csv --y octane --id sample --scale centre --save octane.model\n"
      "  kalmia opls oliveoil.csv --y yellow,green --id sample --x Acidity..DK --predictive 1 --csv results\n"
      "  kalmia opls gasoline.csv --y octane --id sample --orthogonal 2 --save-cv octane.cv\n"
      "  kalmia opls gasoline.csv --y octane --id sample --orthogonal 5 --resume octane.cv");
}

void DeclareO2pls(CommandOptions* command, O2plsOptions* options) {
  command->File("X", &options->table, "CSV table with a header, the X block");
  command->File("Y", &options->yTable,
                "CSV table with a header, the Y block; it may be the same file, with --x and --y");
  command->Text("--id", "NAME", &options->id, "column of both tables that names the rows and matches them");
  command->Text("--x", "FIRST..LAST", &options->x,
                "columns of the X table that are the block (default: all of numbers)");
  command->Text("--y", "FIRST..LAST", &options->y, "the same of the Y table");
  command->Scaling("--scale", &options->scaling, "scaling of both blocks: uv (default), pareto, centre or none");
  command->Number("--joint", 1, &options->joint, "number of components that the blocks share (predictive components)");
  command->Number("--x-unique", 0, &options->xUnique,
                  "number of components of X that have nothing to do with Y; the library's X side, which the progress "
                  "calls Y-orthogonal components: they lie in X and are orthogonal to Y");
  command->Number("--y-unique", 0, &options->yUnique,
                  "number of components of Y that have nothing to do with X; the library's Y side, which the progress "
                  "calls X-orthogonal components: they lie in Y and are orthogonal to X");
  command->Flag("--auto", &options->automatic,
                "let cross-validation find all three numbers (default); otherwise all three are given");
  for (const char* number : {"--joint", "--x-unique", "--y-unique"}) command->Exclude("--auto", number);
  command->Flag("--fill", &options->fill, "estimate missing cells of each block from the other first");
  command->Number("--groups", 2, &options->groups, "number of groups of the cross-validation (default: 7)");
  command->Text("--save", "FILE", &options->save, "store the model");
  command->Flag("--json", &options->json, "print JSON");
  command->Text("--csv", "DIR", &options->csvFolder, "write scores, loadings, weights and fitted values as CSV files");
  command->Examples(
      "Examples:\n"
      "  kalmia o2pls chemistry.csv panel.csv --id sample --save oils.model\n"
      "  kalmia o2pls oliveoil.csv oliveoil.csv --id sample --x Acidity..DK --y yellow..syrup --csv results\n"
      "  kalmia o2pls chemistry.csv panel.csv --id sample --joint 1 --x-unique 1 --y-unique 0");
}

void DeclarePredict(CommandOptions* command, PredictOptions* options) {
  command->File("MODEL", &options->model, "file that --save has written");
  command->File("TABLE", &options->table, "CSV table with columns named as the model's");
  command->Text("--id", "NAME", &options->id, "column that names the rows (default: the model's, if it is there)");
  command->Choice("--from", "x|y", {"x", "y"}, &options->from,
                  "block that the table holds: an O2PLS model predicts Y from X (x, the default) or X from Y (y)");
  command->Flag("--json", &options->json, "print JSON");
  command->Text("--csv", "DIR", &options->csvFolder, "write predictions.csv");
  command->Examples("Example:\n  kalmia predict octane.model new.csv");
}

void DeclareFill(CommandOptions* command, FillOptions* options) {
  command->File("TABLE", &options->table, "CSV table with a header");
  command->Text("--out", "FILE", &options->out, "the table with its missing cells filled, always needed");
  command->Require("--out");
  command->Text("--id", "NAME", &options->id, "column that names the rows; it takes no part");
  command->Names("--exclude", &options->exclude, "further columns that take no part and stay as they are");
  command->NumberOrAuto("--components", 0, &options->components,
                        "number of components; auto (default): as many as bring hidden cells back best; 0: means");
  command->Flag("--report", &options->report, "hide a tenth of the present cells as well, and tell how they come back");
  command->Flag("--json", &options->json, "print JSON");
  command->Examples("Example:\n  kalmia fill wine.csv --out filled.csv --id sample --exclude cultivar --report");
}

void DeclareFilter(CommandOptions* command, FilterOptions* options) {
  command->File("TABLE", &options->table, "CSV table with a header");
  command->Text("--out", "FILE", &options->out, "the table with its X columns filtered, always needed");
  command->Require("--out");
  command->Names("--y", &options->y,
                 "column that the filter leaves alone what has to do with; several: repeat, or put commas between");
  command->Number("--components", 1, &options->components, "number of components to take out");
  command->Text("--id", "NAME", &options->id, "column that names the rows; it takes no part");
  command->Text("--x", "FIRST..LAST", &options->x, "columns to filter (default: all others of numbers)");
  command->Names("--exclude", &options->exclude, "columns to leave out of X; not with --x");
  command->Exclude("--x", "--exclude");
  command->Scaling("--scale", &options->scaling, "scaling of X: uv (default), pareto, centre or none");
  command->Text("--save", "FILE", &options->save, "store the filter");
  command->Text("--model", "FILE", &options->model, "apply this stored filter instead of making one");
  for (const char* option : {"--y", "--components", "--id", "--x", "--exclude", "--scale", "--save"}) {
    command->Exclude("--model", option);
  }
  command->Flag("--json", &options->json, "print JSON");
  command->Examples(
      "Examples:\n"
      "  kalmia filter gasoline.csv --y octane --id sample --components 1 --out filtered.csv --save octane.filter\n"
      "  kalmia filter new.csv --model octane.filter --out filtered-new.csv");
}

void DeclarePreprocess(CommandOptions* command, PreprocessOptions* options) {
  command->File("TABLE", &options->table, "CSV table with a header; rows are signals, columns are channels");
  command->Text("--steps", "STEPS", &options->steps, "steps with commas between them; or --steps-file, one is needed");
  command->Text("--steps-file", "FILE", &options->stepsFile,
                "file with the steps, also one on each line; or what --save has written, to repeat it as it was");
  command->Exclude("--steps", "--steps-file");
  command->Text("--out", "FILE", &options->out, "the columns that stay, then what the steps make, always needed");
  command->Require("--out");
  command->Text("--id", "NAME", &options->id, "column that names the rows in messages; it stays as it is");
  command->Text("--x", "FIRST..LAST", &options->x, "columns to work on (default: all of numbers)");
  command->Names("--exclude", &options->exclude, "columns that stay as they are; not with --x");
  command->Exclude("--x", "--exclude");
  command->Text("--save", "FILE", &options->save, "store the steps with what they have learnt of this table");
  command->Flag("--restore", &options->restore,
                "signals again from the coefficients that the wavelet-compress at the end of saved steps has kept");
  for (const char* option : {"--steps", "--x", "--exclude", "--save"}) command->Exclude("--restore", option);
  command->Flag("--json", &options->json, "print JSON");
  command->Examples(StepsHelp() +
      "Examples:\n"
      "  kalmia preprocess gasoline.csv --steps snv,derivative:1:15:2 --id sample --exclude octane --out d1.csv\n"
      "  kalmia preprocess gasoline.csv --steps wavelet-compress:40 --id sample --exclude octane --out w.csv \\\n"
      "      --save forty.steps\n"
      "  kalmia preprocess new.csv --steps-file forty.steps --out new-w.csv\n"
      "  kalmia preprocess new-w.csv --steps-file forty.steps --restore --out back.csv");
}

void DeclareInfo(CommandOptions* command, InfoOptions* options) {
  command->File("MODEL", &options->model, "file that --save has written");
  command->Flag("--json", &options->json, "print JSON");
  command->Examples("Example:\n  kalmia info octane.model");
}

void DeclareDescribe(CommandOptions* command, DescribeOptions* options) {
  command->File("TABLE", &options->table, "CSV table with a header");
  command->Flag("--json", &options->json, "print JSON");
  command->Examples("Example:\n  kalmia describe gasoline.csv");
}

std::string FirstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

/// The program with its subcommands.
class Program {
 public:
  Program() : app_("Latent-variable models of tables with missing cells.", "kalmia") {
    app_.set_version_flag("--version", std::string("kalmia ") + kVersion, "print the version and end");
    app_.require_subcommand(0, 1);
    app_.footer(kMainFooter);
    app_.set_help_flag("-h,--help", "print this text and end");  // subcommands inherit it
    Add<PlsOptions>("pls", "Fit a PLS model and judge every component by cross-validation", DeclarePls);
    Add<PcaOptions>("pca", "Fit principal components and judge every one by cross-validation", DeclarePca);
    Add<OplsOptions>("opls", "Fit an OPLS model: what predicts Y, apart from what does not", DeclareOpls);
    Add<O2plsOptions>("o2pls", "Fit an O2PLS model: what two blocks share, and what is each one's own", DeclareO2pls);
    Add<PredictOptions>("predict",
                        "Predict new rows with a stored PLS, OPLS or O2PLS model, or place them in a PCA model",
                        DeclarePredict);
    Add<FillOptions>("fill", "Fill the missing cells of a table by PCA", DeclareFill);
    Add<FilterOptions>("filter", "Take out of X what has nothing to do with Y", DeclareFilter);
    Add<PreprocessOptions>("preprocess", "Transform, smooth, differentiate and compress the signals in a table",
                           DeclarePreprocess);
    Add<InfoOptions>("info", "Show what a stored model holds", DeclareInfo);
    Add<DescribeOptions>("describe", "Show counts, means and spread of the columns of a table", DeclareDescribe);
    Add<ClusterOptions>("cluster", "Build a cluster tree of the rows, cut it and draw it", DeclareCluster);
    Add<ChartOptions>("chart", "Draw a control chart of a column and find its signals", DeclareChart);
    Add<HistogramOptions>("histogram", "Sort the values of a column into bins", DeclareHistogram);
    Add<FisherOptions>("fisher", "Test rows and columns of a table of counts for independence", DeclareFisher);
    Add<SpectrumOptions>("spectrum", "Find what repeats in a column, and what follows what: correlations and power",
                         DeclareSpectrum);
    Add<QuantileOptions>("quantile", "Tell a quantile of Student's t or of F", DeclareQuantile);
  }

  Command Parse(int argc, const char* const* argv) {
    CheckFirstWord(argc, argv);
    for (const Subcommand& subcommand : subcommands_) {
      if (argc > 1 && subcommand.options->Name() == argv[1]) subcommand.options->CheckWords({argv + 2, argv + argc});
    }
    try {
      app_.parse(argc, argv);
    } catch (const CLI::ParseError& way) {
      if (way.get_exit_code() == 0) return AnswerOf(way);
      TakeValues();  // says it better, if it is something that the checks there know
      throw Failure(ExitCode::Usage, OneLine(FirstLine(way.what())) + "; see kalmia --help");
    }
    return TakeValues();
  }

 private:
  struct Subcommand {
    std::unique_ptr<CommandOptions> options;
    std::function<Command()> read;
  };

  template <class Options>
  void Add(const char* name, const char* whatItDoes, void (*declare)(CommandOptions*, Options*)) {
    auto values = std::make_shared<Options>();
    auto options = std::make_unique<CommandOptions>(&app_, name, whatItDoes);
    declare(options.get(), values.get());
    subcommands_.push_back({std::move(options), [values]() -> Command { return *values; }});
  }

  Command TakeValues() const {
    for (const Subcommand& subcommand : subcommands_) {
      if (!subcommand.options->IsCalled()) continue;
      subcommand.options->TakeValues();
      return subcommand.read();
    }
    throw Failure(ExitCode::Usage, "kalmia needs one of the commands " + CommandNames() + "; see kalmia --help");
  }

  std::string CommandNames() const {
    std::vector<std::string> names;
    for (const Subcommand& subcommand : subcommands_) names.push_back(subcommand.options->Name());
    return Listed(names);
  }

  void CheckFirstWord(int argc, const char* const* argv) const {
    if (argc < 2) return;
    const std::string word = argv[1];
    for (const Subcommand& subcommand : subcommands_) {
      if (subcommand.options->Name() == word) return;
    }
    for (const char* option : {"--help", "-h", "--version"}) {
      if (word == option) return;
    }
    throw Failure(ExitCode::Usage,
                  std::string(word.rfind('-', 0) == 0 ? "there is no option " : "there is no command ") + Quoted(word) +
                      "; kalmia takes one of the commands " + CommandNames() +
                      ", or --help, or --version; see kalmia --help");
  }

  /// What a way out of the parser that is no error prints: help or version.
  Answer AnswerOf(const CLI::ParseError& way) const {
    std::ostringstream out;
    std::ostringstream err;
    app_.exit(way, out, err);
    return {out.str()};
  }

  CLI::App app_;
  std::vector<Subcommand> subcommands_;
};

void RefuseStandardInputTwice(const Command& command) {
  const auto* predict = std::get_if<PredictOptions>(&command);
  if (predict == nullptr || predict->model != "-" || predict->table != "-") return;
  throw Failure(ExitCode::Usage, "only one of MODEL and TABLE can be -, standard input; see kalmia predict --help");
}

void CheckO2pls(const Command& command) {
  const auto* o2pls = std::get_if<O2plsOptions>(&command);
  if (o2pls == nullptr) return;
  const int numbers = static_cast<int>(o2pls->joint.has_value()) + static_cast<int>(o2pls->xUnique.has_value()) +
                      static_cast<int>(o2pls->yUnique.has_value());
  if (numbers != 0 && numbers != 3) {
    throw Failure(ExitCode::Usage,
                  "--joint, --x-unique and --y-unique go together: give all three numbers, or none for --auto; see "
                  "kalmia o2pls --help");
  }
  if (o2pls->table == "-" && o2pls->yTable == "-") {
    throw Failure(ExitCode::Usage, "only one of X and Y can be -, standard input; see kalmia o2pls --help");
  }
}

void CheckFilter(const Command& command) {
  const auto* filter = std::get_if<FilterOptions>(&command);
  if (filter == nullptr) return;
  if (filter->model.empty() && (filter->y.empty() || !filter->components)) {
    throw Failure(ExitCode::Usage,
                  "filter needs --y and --components to make a filter, or --model to apply one; see kalmia filter "
                  "--help");
  }
  if (filter->table == "-" && filter->model == "-") {
    throw Failure(ExitCode::Usage, "only one of TABLE and --model can be -, standard input; see kalmia filter --help");
  }
}

}  // namespace

Command ParseCommandLine(int argc, const char* const* argv) {
  Command command = Program().Parse(argc, argv);
  RefuseStandardInputTwice(command);
  CheckO2pls(command);
  CheckFilter(command);
  return command;
}

}  // namespace kalmia::app
