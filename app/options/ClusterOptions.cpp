#include "app/options/ClusterOptions.h"

#include "app/options/CommandOptions.h"

namespace kalmia::app {

namespace {

bool IsHeight(double value) { return value >= 0.0; }

}  // namespace

void DeclareCluster(CommandOptions* command, ClusterOptions* options) {
  command->File("TABLE", &options->table, "CSV table with a header, also as .gz");
  command->Choice("--method", "METHOD", {"ward", "single"}, &options->recipe.method,
                  "always needed: ward (least increase in the sum of squares within clusters) or single (nearest rows "
                  "of two clusters)");
  command->Require("--method");
  command->Text("--id", "NAME", &options->recipe.id, "column that names the rows");
  command->Names(
      "--x", &options->recipe.x,
      "columns to cluster by, names and ranges FIRST..LAST with commas between them (default: all of numbers)",
      "COLUMNS");
  command->Names("--exclude", &options->recipe.exclude, "columns to leave out, named likewise; not with --x",
                 "COLUMNS");
  command->Exclude("--x", "--exclude");
  command->Scaling("--scale", &options->recipe.scaling, "scaling of the columns: uv (default), pareto, centre or none");
  command->Number("--cut", 1, &options->recipe.cut, "cut the tree into so many clusters");
  command->Real("--height", &options->recipe.height, "a number from 0 on", IsHeight,
                "undo all merges above this height; not with --cut");
  command->Exclude("--cut", "--height");
  command->Text("--svg", "FILE", &options->svg, "draw the tree");
  command->Text("--merges", "FILE", &options->merges, "write the merges as CSV, in the columns of a linkage matrix");
  command->Text("--newick", "FILE", &options->newick, "write the tree in the Newick format");
  command->Text("--csv", "FILE", &options->csv, "write the cluster of each row as CSV; with --cut or --height");
  DeclareCsvMarks(command, &options->csvMarks, {{"--csv", &options->csv}, {"--merges", &options->merges}});
  command->Size("--memory", &options->recipe.memory,
                "memory for the distances, such as 500M or 4G: 12 bytes for each pair of rows with either method "
                "(default: the memory that is free)");
  command->Text("--temp", "DIR", &options->recipe.temporaryFolder,
                "folder for distances that find no room in memory, with --method single (default: TMPDIR, or /tmp)");
  command->Flag("--json", &options->json, "print JSON");
  DeclareReading(command, &options->reading);
  command->Examples(
      "Examples:\n"
      "  kalmia cluster wine.csv --method ward --id sample --exclude cultivar --cut 3 --svg tree.svg\n"
      "  kalmia cluster large.csv --method single --height 2.5 --memory 2G --temp /scratch --merges merges.csv");
}

}  // namespace kalmia::app
