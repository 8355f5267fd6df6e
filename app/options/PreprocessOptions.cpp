#include "app/options/PreprocessOptions.h"

#include "app/options/CommandOptions.h"
#include "kalmia/analysis/steps/Steps.h"

namespace kalmia::app {

void DeclarePreprocess(CommandOptions* command, PreprocessOptions* options) {
  command->File("TABLE", &options->table,
                "CSV table with a header, also as .gz; rows are signals, columns are channels");
  command->Text("--steps", "STEPS", &options->steps, "steps with commas between them; or --steps-file, one is needed");
  command->Input("--steps-file", &options->stepsFile,
                 "file with the steps, also one on each line; or what --save has written, to repeat it as it was");
  command->Exclude("--steps", "--steps-file");
  command->Text("--out", "FILE", &options->out, "the columns that stay, then what the steps make, always needed");
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
                "signals again from the coefficients that the wavelet-compress at the end of saved steps has kept");
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
