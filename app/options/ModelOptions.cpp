#include "app/options/ModelOptions.h"

#include "app/options/CommandOptions.h"
#include "app/options/ValidationOptions.h"

namespace kalmia::app {

namespace {

const std::string kColumnsHelp = "names and ranges FIRST..LAST with commas between them";

/// Where the model goes, and what goes with it.
void DeclareSave(CommandOptions* command, const std::string& what, std::string* save, bool* noRows, bool* keepTable) {
  command->Text("--save", "FILE", save, "store the " + what);
  command->Flag("--no-rows", noRows, "leave names, scores and distances of the rows out of that file");
  command->Flag("--keep-table", keepTable,
                "put X and Y of the rows and the residuals into that file; left out otherwise");
  command->Check([=]() -> std::string {
    if (!save->empty() || (!*noRows && !*keepTable)) return "";
    return std::string(*noRows ? "--no-rows" : "--keep-table") + " says what a stored " + what +
           " holds: give --save too";
  });
}

/// `files` is what is written of what.
void DeclareResiduals(CommandOptions* command, const std::string& files, const std::string* csvFolder,
                      bool* residuals) {
  command->Flag("--residuals", residuals, "with --csv: write " + files + ", in scaled units");
  command->Check([=]() -> std::string {
    if (!*residuals || !csvFolder->empty()) return "";
    return "--residuals is for CSV that is written: give --csv too";
  });
}

/// What is told of single columns, in rows of the table that `rows` names.
void DeclareColumnsOfRows(CommandOptions* command, const std::string& rows, const std::string* csvFolder,
                          ColumnsOfRows* options) {
  command->Names("--contributions", &options->contributions,
                 "also tell each column's part of T2 and of the residual of this row of the " + rows +
                     ", by its name, or its number from 1; may be repeated",
                 "ROW");
  DeclareResiduals(command, "residuals.csv too, what the model leaves of X", csvFolder, &options->residuals);
}

/// The options of every command that fits a model. The table is declared before, so that it comes first in the help;
/// what declares the numbers of components declares how they are judged, too.
template <class DeclareComponents>
void DeclareFit(CommandOptions* command, FitOptions* options, FitRecipe* recipe,
                const DeclareComponents& declareComponents) {
  command->Text("--id", "NAME", &recipe->id, "column that names the rows");
  command->Names("--x", &recipe->x, "columns to model from, " + kColumnsHelp + " (default: all others of numbers)",
                 "COLUMNS");
  command->Names("--exclude", &recipe->exclude, "columns to leave out of X, named likewise; not with --x", "COLUMNS");
  command->Exclude("--x", "--exclude");
  command->Text(
      "--steps", "STEPS", &options->steps,
      "preprocess X by these steps, separated by commas; predict repeats them. wavelet-compress chooses from all rows; "
      "refits choose anew, a cross-validation by component does not; see kalmia preprocess --help");
  command->Input(
      "--steps-file", &options->stepsFile,
      "preprocess X by the steps in this file: a text, which may have a line for each, or a file that kalmia "
      "preprocess --save has written");
  command->Exclude("--steps", "--steps-file");
  command->Scaling("--scale", &recipe->scaling, "scaling of X: uv (default), pareto, centre or none");
  declareComponents();
  DeclareSave(command, "model", &options->save, &options->noRows, &options->keepTable);
  command->Flag("--json", &options->json, "print JSON");
}

/// What is modelled: columns of numbers or classes.
void DeclareY(CommandOptions* command, YRecipe* recipe) {
  command->Names("--y", &recipe->y,
                 "column to model, needed unless there are --classes; several: repeat, or put commas between. The "
                 "texts of a column of texts are classes");
  command->Text("--classes", "NAME", &recipe->classes,
                "column whose texts or numbers are the classes of the rows: the model tells them apart; in place of "
                "--y");
  command->Exclude("--y", "--classes");
  command->Priors("--priors", &recipe->priors,
                  "how likely classes are beforehand: equal (default), or data, as frequent as in the table; of "
                  "classes alone");
  command->Check([=]() -> std::string {
    return recipe->y.empty() && recipe->classes.empty() ? command->Name() + " needs --y NAME, or --classes NAME" : "";
  });
}

/// A cross-validation that is stored, or gone on from, is one by component.
void TakeStoredAsByComponent(CommandOptions* command, OPLSOptions* options) {
  command->Check([options]() -> std::string {
    if (options->saveCv.empty() && options->resume.empty()) return "";
    std::string& method = options->validation.method;
    if (method.empty()) method = WordOfValidationMethod(ValidationMethod::Component);
    if (method == WordOfValidationMethod(ValidationMethod::Component)) return "";
    return "--save-cv and --resume are of a cross-validation by component, not of --validation " + method;
  });
}

}  // namespace

void DeclarePLS(CommandOptions* command, PLSOptions* options) {
  command->File("TABLE", &options->table, "CSV table with a header, also as .gz");
  DeclareY(command, &options->recipe);
  DeclareFit(command, options, &options->recipe, [=] {
    command->NumberOrAuto("--components", 0, &options->recipe.components,
                          "number of components, 0 for the mean of Y; auto (default): the number that the validation "
                          "chooses");
    DeclareValidation(command, &options->validation, &options->recipe, "--components");
    DeclareNested(command, &options->validation, &options->recipe, "--components");
    DeclarePermutations(command, &options->validation);
  });
  DeclareColumnsOfRows(command, "table", &options->csvFolder, &options->columns);
  command->Text("--csv", "DIR", &options->csvFolder, "write scores, loadings, coefficients and more as CSV files");
  DeclareCsvMarks(command, &options->csvMarks, {{"--csv", &options->csvFolder}});
  DeclareFigures(command, &options->figures, &options->json);
  DeclareReport(command, &options->figures);
  DeclareReading(command, &options->reading);
  command->Examples(
      "Examples:\n"
      "  kalmia pls gasoline.csv --y octane --id sample --scale centre --save octane.model\n"
      "  kalmia pls oil.csv --y yellow --y green --id sample --x Acidity..DK --csv results\n"
      "  kalmia pls wine.csv --classes cultivar --id sample --permutations 999\n"
      "  kalmia pls gasoline.csv --y octane --id sample --folds random --groups 5 --repeats 10 --select min");
}

void DeclarePCA(CommandOptions* command, PCAOptions* options) {
  command->File("TABLE", &options->table, "CSV table with a header, also as .gz");
  DeclareFit(command, options, &options->recipe, [=] {
    command->NumberOrAuto("--components", 0, &options->recipe.components,
                          "number of components, 0 for the mean; auto (default): the number that the validation "
                          "chooses");
    DeclareValidation(command, &options->validation, &options->recipe, "--components");
  });
  DeclareColumnsOfRows(command, "table", &options->csvFolder, &options->columns);
  command->Text("--csv", "DIR", &options->csvFolder, "write scores, loadings and more as CSV files");
  DeclareCsvMarks(command, &options->csvMarks, {{"--csv", &options->csvFolder}});
  DeclareFigures(command, &options->figures, &options->json);
  DeclareReport(command, &options->figures);
  DeclareReading(command, &options->reading);
  command->Examples(
      "Examples:\n"
      "  kalmia pca wine.csv --id sample --exclude cultivar\n"
      "  kalmia pca gasoline.csv --id sample --exclude octane --scale centre --save spectra.model --csv results");
}

void DeclareOPLS(CommandOptions* command, OPLSOptions* options) {
  command->File("TABLE", &options->table, "CSV table with a header, also as .gz");
  DeclareY(command, &options->recipe);
  DeclareFit(command, options, &options->recipe, [=] {
    command->NumberOrAuto("--predictive", 1, &options->recipe.predictive,
                          "number of predictive components; auto (default): as many as stand out in Y'X");
    command->NumberOrAuto("--orthogonal", 0, &options->recipe.components,
                          "number of orthogonal components; auto (default): the number that the validation chooses");
    TakeStoredAsByComponent(command, options);
    DeclareValidation(command, &options->validation, &options->recipe, "--orthogonal");
    DeclareNested(command, &options->validation, &options->recipe, "--orthogonal");
    DeclarePermutations(command, &options->validation);
  });
  command->Text("--save-cv", "FILE", &options->saveCv,
                "store the cross-validation, for --resume; it is one by component");
  command->Input("--resume", &options->resume,
                 "go on from what --save-cv has stored of the same table and steps, by component");
  DeclareColumnsOfRows(command, "table", &options->csvFolder, &options->columns);
  command->Text("--csv", "DIR", &options->csvFolder, "write scores, loadings, coefficients and more as CSV files");
  DeclareCsvMarks(command, &options->csvMarks, {{"--csv", &options->csvFolder}});
  DeclareFigures(command, &options->figures, &options->json);
  DeclareReport(command, &options->figures);
  DeclareReading(command, &options->reading);
  command->Examples(
      "Examples:\n"
      "  kalmia opls gasoline.csv --y octane --id sample --scale centre --save octane.model\n"
      "  kalmia opls oliveoil.csv --y yellow,green --id sample --x Acidity..DK --predictive 1 --csv results\n"
      "  kalmia opls gasoline.csv --y octane --id sample --orthogonal 2 --save-cv octane.cv\n"
      "  kalmia opls gasoline.csv --y octane --id sample --orthogonal 5 --resume octane.cv");
}

void DeclareO2PLS(CommandOptions* command, O2PLSOptions* options) {
  command->File("X", &options->table, "CSV table with a header, also as .gz, the X block");
  command->File("Y", &options->yTable,
                "CSV table with a header, also as .gz, the Y block; it may be the same file, with --x and --y");
  command->Text("--id", "NAME", &options->recipe.id, "column of both tables that names the rows and matches them");
  command->Names("--x", &options->recipe.x,
                 "columns of the X block, " + kColumnsHelp + " (default: all of numbers)",
                 "COLUMNS");
  command->Names("--y", &options->recipe.y, "columns of the Y block, likewise", "COLUMNS");
  command->Scaling("--scale", &options->recipe.scaling, "scaling of both blocks: uv (default), pareto, centre or none");
  command->Number("--joint", 1, &options->joint, "number of components that the blocks share (predictive components)");
  command->Number("--x-unique", 0, &options->xUnique,
                  "number of components of X that have nothing to do with Y, the library's X side, which the progress "
                  "calls Y-orthogonal components: they lie in X and are orthogonal to Y");
  command->Number("--y-unique", 0, &options->yUnique,
                  "number of components of Y that have nothing to do with X, the library's Y side, which the progress "
                  "calls X-orthogonal components: they lie in Y and are orthogonal to X");
  command->Flag("--auto", &options->automatic,
                "let cross-validation find all three numbers (default); otherwise give all three");
  for (const char* number : {"--joint", "--x-unique", "--y-unique"}) command->Exclude("--auto", number);
  command->Check([options] {
    const bool isAll = options->joint && options->xUnique && options->yUnique;
    const bool isNone = !options->joint && !options->xUnique && !options->yUnique;
    if (isAll || isNone) return "";
    return "--joint, --x-unique and --y-unique go together: give all three numbers, or none for --auto";
  });
  command->Flag("--fill", &options->recipe.fill, "estimate missing cells of each block from the other first");
  DeclareValidation(command, &options->validation,
                    {&options->recipe.groups, &options->recipe.groupColumn,
                     [options] { return options->joint.has_value(); }, "--joint",
                     "--joint, --x-unique and --y-unique", /*isChosen=*/false});
  DeclareSave(command, "model", &options->save, &options->noRows, &options->keepTable);
  command->Flag("--json", &options->json, "print JSON");
  DeclareResiduals(command, "x-residuals.csv and y-residuals.csv too, what the model leaves of the blocks",
                   &options->csvFolder, &options->columns.residuals);
  command->Text("--csv", "DIR", &options->csvFolder, "write scores, loadings, weights and fitted values as CSV files");
  DeclareCsvMarks(command, &options->csvMarks, {{"--csv", &options->csvFolder}});
  DeclareFigures(command, &options->figures, &options->json);
  DeclareReport(command, &options->figures);
  DeclareReading(command, &options->reading);
  command->Examples(
      "Examples:\n"
      "  kalmia o2pls chemistry.csv panel.csv --id sample --save oils.model\n"
      "  kalmia o2pls oliveoil.csv oliveoil.csv --id sample --x Acidity..DK --y yellow..syrup --csv results\n"
      "  kalmia o2pls chemistry.csv panel.csv --id sample --joint 1 --x-unique 1 --y-unique 0");
}

void DeclarePredict(CommandOptions* command, PredictOptions* options) {
  command->File("MODEL", &options->model, "file that --save has written");
  command->File("TABLE", &options->table, "CSV table with columns named as the model's, also as .gz");
  command->Text("--id", "NAME", &options->id, "column that names the rows (default: the model's, if it is there)");
  command->Choice("--from", "x|y", {"x", "y"}, &options->from,
                  "block in the table: an O2PLS model predicts Y from X (x, the default) or X from Y (y)");
  DeclareColumnsOfRows(command, "new table", &options->csvFolder, &options->columns);
  command->Flag("--json", &options->json, "print JSON");
  command->Text("--csv", "DIR", &options->csvFolder, "write predictions.csv");
  DeclareCsvMarks(command, &options->csvMarks, {{"--csv", &options->csvFolder}});
  DeclareFigures(command, &options->figures, &options->json);
  DeclareReading(command, &options->reading);
  command->Examples("Example:\n  kalmia predict octane.model new.csv");
}

void DeclareFill(CommandOptions* command, FillOptions* options) {
  command->File("TABLE", &options->table, "CSV table with a header, also as .gz");
  command->Text("--out", "FILE", &options->out, "file for the filled table, always needed");
  command->Require("--out");
  command->Text("--id", "NAME", &options->recipe.id, "column that names the rows; it takes no part");
  command->Names("--exclude", &options->recipe.exclude,
                 "further columns that take no part and stay as they are, " + kColumnsHelp, "COLUMNS");
  command->NumberOrAuto(
      "--components", 0, &options->recipe.components,
      "number of components; auto (default): the number that restores hidden cells best; 0: fill in means");
  command->Flag("--check", &options->recipe.check,
                "also hide a tenth of the present cells, fill them, and report the errors");
  command->Flag("--report", &options->report, "the old name of --check");
  DeclareCsvMarks(command, &options->csvMarks);
  command->Flag("--json", &options->json, "print JSON");
  DeclareReading(command, &options->reading);
  command->Examples("Example:\n  kalmia fill wine.csv --out filled.csv --id sample --exclude cultivar --check");
}

void DeclareFilter(CommandOptions* command, FilterOptions* options) {
  command->File("TABLE", &options->table, "CSV table with a header, also as .gz");
  command->Text("--out", "FILE", &options->out, "file for the table with filtered X columns, always needed");
  command->Require("--out");
  command->Names(
      "--y", &options->recipe.y,
      "column of Y: the filter takes variation out of X that is unrelated to it; several: repeat, or put commas "
      "between");
  command->Number("--components", 1, &options->recipe.components, "number of components to take out");
  command->Text("--id", "NAME", &options->recipe.id, "column that names the rows; it takes no part");
  command->Names("--x", &options->recipe.x, "columns to filter, " + kColumnsHelp + " (default: all others of numbers)",
                 "COLUMNS");
  command->Names("--exclude", &options->recipe.exclude, "columns to leave out of X, named likewise; not with --x",
                 "COLUMNS");
  command->Exclude("--x", "--exclude");
  command->Scaling("--scale", &options->recipe.scaling, "scaling of X: uv (default), pareto, centre or none");
  DeclareSave(command, "filter", &options->save, &options->noRows, &options->keepTable);
  DeclareCsvMarks(command, &options->csvMarks);
  command->Input("--model", &options->model, "apply this stored filter instead of making one");
  for (const char* option : {"--y", "--components", "--id", "--x", "--exclude", "--scale", "--save",
                             "--no-rows", "--keep-table"}) {
    command->Exclude("--model", option);
  }
  command->Check([options] {
    const bool isMade = !options->recipe.y.empty() && options->recipe.components;
    return isMade || !options->model.empty()
               ? ""
               : "filter needs --y and --components to make a filter, or --model to apply one";
  });
  command->Flag("--json", &options->json, "print JSON");
  DeclareReading(command, &options->reading);
  command->Examples(
      "Examples:\n"
      "  kalmia filter gasoline.csv --y octane --id sample --components 1 --out filtered.csv --save octane.filter\n"
      "  kalmia filter new.csv --model octane.filter --out filtered-new.csv");
}

}  // namespace kalmia::app
