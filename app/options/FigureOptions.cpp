#include "app/options/FigureOptions.h"

#include <charconv>
#include <optional>
#include <utility>

#include "app/options/CommandOptions.h"
#include "kalmia/analysis/text/DisplayText.h"

namespace kalmia::app {

namespace {

/// Two whole numbers with a mark between them; nothing for another text.
std::optional<std::pair<int, int>> TwoNumbers(const std::string& text, char mark) {
  const char* const end = text.data() + text.size();
  std::pair<int, int> numbers;
  const auto first = std::from_chars(text.data(), end, numbers.first);
  if (first.ec != std::errc() || first.ptr == end || *first.ptr != mark) return std::nullopt;
  const auto second = std::from_chars(first.ptr + 1, end, numbers.second);
  if (second.ec != std::errc() || second.ptr != end) return std::nullopt;
  return numbers;
}

std::string FaultOfAxes(const std::string& axes) {
  if (axes.empty()) return "";
  const auto numbers = TwoNumbers(axes, ',');
  if (numbers && numbers->first >= 1 && numbers->second >= 1 && numbers->first != numbers->second) return "";
  return "--axes takes two numbers of components, from 1, with a comma between them, such as 2,3; not " + Quoted(axes);
}

std::string FaultOfSize(const std::string& size) {
  if (size.empty()) return "";
  const auto numbers = TwoNumbers(size, 'x');
  const auto isGood = [](int side) { return side >= kSmallestPicture && side <= kLargestPicture; };
  if (numbers && isGood(numbers->first) && isGood(numbers->second)) return "";
  return "--size takes width and height in pixels, 240 to 4000, with an x between them, such as 720x480; not " +
         Quoted(size);
}

}  // namespace

void DeclareFigures(CommandOptions* command, FigureOptions* options, const bool* json) {
  command->Text("--svg", "DIR", &options->folder, "draw the figures, each as an SVG file of its name in that folder");
  command->Text("--axes", "A,B", &options->axes,
                "components that figures show across and up (default: the first two; of opls the first predictive and "
                "the first orthogonal one)");
  command->Text("--size", "WxH", &options->size, "width and height of each drawing in pixels, 240 to 4000");
  command->Text("--title", "TEXT", &options->title, "what titles of figures begin with (default: model and table)");
  command->Flag("--figures", &options->inJson, "with --json: add the figures as data");
  command->Check([=]() -> std::string {
    if (options->inJson && !*json) return "--figures adds figures to JSON: give --json too";
    for (const char* option : {"--axes", "--title"}) {
      if (command->IsGiven(option) && !options->AreAsked() && options->report.empty()) {
        return std::string(option) + " is of figures: give --svg DIR, --report FILE, or --json --figures";
      }
    }
    if (!options->size.empty() && options->folder.empty()) return "--size is of drawings: give --svg DIR";
    const std::string fault = FaultOfAxes(options->axes);
    return fault.empty() ? FaultOfSize(options->size) : fault;
  });
}

void DeclareReport(CommandOptions* command, FigureOptions* options) {
  command->Text("--report", "FILE.html", &options->report,
                "write a page that shows the model, for a browser: one file that needs no network");
}

void DeclareSize(CommandOptions* command, std::string* size, const std::string* svg) {
  command->Text("--size", "WxH", size, "width and height of the drawing in pixels, 240 to 4000");
  command->Check([=]() -> std::string {
    if (!size->empty() && svg->empty()) return "--size is of a drawing: give --svg FILE";
    return FaultOfSize(*size);
  });
}

FigureRecipe RecipeOf(const FigureOptions& options) { return {TwoNumbers(options.axes, ','), options.title}; }

SvgOptions SizeOf(const std::string& size) {
  const auto numbers = TwoNumbers(size, 'x');
  if (!numbers) return {};
  return {static_cast<double>(numbers->first), static_cast<double>(numbers->second)};
}

}  // namespace kalmia::app
