#include "app/options/PreprocessOptions.h"

#include "app/options/CommandOptions.h"
#include "kalmia/analysis/steps/Steps.h"

namespace kalmia::app {

void DeclarePreprocess(CommandOptions* command, PreprocessOptions* options) {
  command->File("TABLE", &options->table,
                "CSV table with a header, also as .gz; rows are signals, columns are channels");
  command->Text("--steps", "STEPS", &options->steps, "steps, separated by commas; this or --steps-file is needed");
  command->Input(
      "--steps-file", &options->stepsFile,
      "file with the steps, which may have a line for each; or a file that --save has written, to repeat its steps");
  command->Exclude("--steps", "--steps-file");
  command->Text("--out", "FILE", &options->out,
                "file for the columns that stay, then the results of the steps, always needed");
  command->Require("--out");
  DeclareCsvMarks(command, &options->csvMarks);
  command->Text("--id", "NAME", &options->recipe.id, "column that names the rows in messages; it stays as it is");
  command->Names("--x", &options->recipe.x,
                 "columns to work on, names and ranges FIRST..LAST with commas between them (default: all others of "
                 "numbers, one of sample numbers too)",
                 "COLUMNS");
  command->Names("--exclude", &options->recipe.exclude, "columns that stay as they are, named likewise; not with --x",
                 "COLUMNS");
  command->Exclude("--x", "--exclude");
  command->Text("--save", "FILE", &options->save, "store the steps with what they have learnt of this table");
  command->Flag("--restore", &options->recipe.restore,
                "turn coefficients back into signals, where saved steps end with wavelet-compress");
  for (const char* option : {"--steps", "--x", "--exclude", "--save"}) command->Exclude("--restore", option);
  command->Flag("--json", &options->json, "print JSON");
  command->Check([options] {
    return options->steps.empty() && options->stepsFile.empty() ? "preprocess needs --steps or --steps-file" : "";
  });
  DeclareReading(command, &options->reading);
  command->Examples(StepsHelp() +
      "Examples:\n"
      "  kalmia preprocess gasoline.csv --steps snv,derivative:1:15:2 --id sample --exclude octane --out d1.csv\n"
      "  kalmia preprocess gasoline.csv --steps wavelet-compress:51 --id sample --exclude octane --out w.csv \\\n"
      "      --save tenth.steps\n"
      "  kalmia preprocess new.csv --steps-file tenth.steps --out new-w.csv\n"
      "  kalmia preprocess new-w.csv --steps-file tenth.steps --restore --out back.csv");
}

}  // namespace kalmia::app
