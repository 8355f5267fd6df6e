#include "app/options/Options.h"

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>
#include <sstream>
#include <type_traits>
#include <utility>

#include "app/options/CommandLine.h"
#include "app/options/CommandOptions.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/NearestName.h"
#include "kalmia/analysis/text/Version.h"

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
    "130 stopped with Ctrl-C (143, 129 by other signals). 'kalmia COMMAND --help' tells more.";

void DeclareInfo(CommandOptions* command, InfoOptions* options) {
  command->File("MODEL", &options->model, "file that --save or --save-cv has written");
  command->Flag("--digest", &options->digest, "print nothing but the SHA-256 of what predicts");
  command->Flag("--json", &options->json, "print JSON");
  command->Exclude("--digest", "--json");
  command->Examples("Examples:\n  kalmia info octane.model\n  kalmia info octane.model --digest");
}

void DeclareDescribe(CommandOptions* command, DescribeOptions* options) {
  command->File("TABLE", &options->table, "CSV table with a header, also as .gz");
  command->Flag("--json", &options->json, "print JSON");
  DeclareReading(command, &options->reading);
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
    Add<PLSOptions>("pls", "Fit a PLS model of as many components as rows that were left out can be predicted with",
                    DeclarePLS);
    Add<PCAOptions>("pca", "Fit principal components and judge every one by cross-validation", DeclarePCA);
    Add<OPLSOptions>("opls", "Fit an OPLS model: variation of X that predicts Y apart from variation that does not",
                     DeclareOPLS);
    Add<O2PLSOptions>("o2pls", "Fit an O2PLS model: variation that two blocks share, and variation of each block alone",
                      DeclareO2PLS);
    Add<PredictOptions>("predict",
                        "Predict new rows with a stored PLS, OPLS or O2PLS model, or place them in a PCA model",
                        DeclarePredict);
    Add<CompareOptions>("compare", "Compare PLS and OPLS models by the errors of rows that were left out",
                        DeclareCompare);
    Add<FillOptions>("fill", "Fill the missing cells of a table by PCA", DeclareFill);
    Add<FilterOptions>("filter", "Take variation out of X that has nothing to do with Y", DeclareFilter);
    Add<PreprocessOptions>("preprocess", "Transform, smooth, differentiate and compress the signals in a table",
                           DeclarePreprocess);
    Add<InfoOptions>("info", "Show what a stored model holds", DeclareInfo);
    Add<DescribeOptions>("describe", "Show counts, means and spread of the columns of a table", DeclareDescribe);
    Add<ClusterOptions>("cluster", "Build a cluster tree of the rows, cut it and draw it", DeclareCluster);
    Add<ChartOptions>("chart", "Draw a control chart of a column and find its signals", DeclareChart);
    Add<HistogramOptions>("histogram", "Sort the values of a column into bins", DeclareHistogram);
    Add<FisherOptions>("fisher", "Test rows and columns of a table of counts for independence", DeclareFisher);
    Add<SpectrumOptions>("spectrum", "Compute correlations and power spectra of a column, or of two",
                         DeclareSpectrum);
    Add<QuantileOptions>("quantile", "Compute a quantile of Student's t, F, chi-square or the normal distribution",
                         DeclareQuantile);
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
      throw BadRequest(OneLine(FirstLine(way.what())) + "; see kalmia --help");
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
    throw BadRequest("kalmia needs one of the commands " + Listed(Names()) + "; see kalmia --help");
  }

  /// Of the commands.
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const Subcommand& subcommand : subcommands_) names.push_back(subcommand.options->Name());
    return names;
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
    const std::string nearest = NearestWord(word, Names());
    throw BadRequest(std::string(word.rfind('-', 0) == 0 ? "there is no option " : "there is no command ") +
                     Quoted(word) + (nearest.empty() ? "" : " (did you mean " + Quoted(nearest) + "?)") +
                     "; kalmia takes one of the commands " + Listed(Names()) +
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

}  // namespace

Command ParseCommandLine(int argc, const char* const* argv) {
  Command command = Program().Parse(argc, argv);
  std::visit(
      [argc, argv](auto& options) {
        if constexpr (std::is_base_of_v<FitOptions, std::decay_t<decltype(options)>>) {
          options.commandLine = CommandLine(argc, argv);
        }
      },
      command);
  return command;
}

}  // namespace kalmia::app
