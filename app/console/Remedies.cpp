#include "app/console/Remedies.h"

#include <cstddef>

namespace kalmia::app {

namespace {

const char* TextOf(Remedy remedy) {
  switch (remedy) {
    case Remedy::NameMissingWords: return " (--na WORD adds to these)";
    case Remedy::LeaveOutLinesAbove: return ", leave them out by --skip-lines or --comment";
    case Remedy::NameRows: return ": give --id to match rows by name";
    case Remedy::ChooseColumnsOrNameRows: return "; choose other columns by --x and --y, or name the rows by --id";
    case Remedy::FillHoles: return ", and --fill estimates what is missing";
    case Remedy::TakeSingleLinkage: return "; --method single can use the disk";
    case Remedy::GiveMemory: return "; give more --memory";
    case Remedy::GiveMemoryOrFolder: return ": name another folder with --temp, or give more --memory";
    case Remedy::TakeSpreadOfValues: return ": give --sigma-from values";
    case Remedy::NameClasses: return ": name the column by --classes, in place of --y";
    case Remedy::ChooseOtherwise:
      return ": --select min, q2 or randomisation may keep some, --components N (of opls --orthogonal N) does";
    case Remedy::LeaveOutColumn: return ": --exclude leaves it out";
    case Remedy::NameGroups: return ": --group-column does it";
    case Remedy::None: break;
  }
  return "";
}

/// The option for a member of a recipe: --sigma-from for sigmaFrom.
std::string OptionOf(const std::string& setting) {
  std::string option = "--";
  for (const char c : setting) {
    const bool isCapital = c >= 'A' && c <= 'Z';
    option += isCapital ? std::string("-") + static_cast<char>(c - 'A' + 'a') : std::string(1, c);
  }
  return option;
}

}  // namespace

std::string MessageOf(const Failure& failure, const std::string& command) {
  const std::string message = std::string(failure.what()) + TextOf(failure.WhatHelps());
  const std::string& setting = failure.Place().setting;
  if (setting.empty()) return message;
  const bool isRequest = dynamic_cast<const BadRequest*>(&failure) != nullptr;
  return message + " (" + OptionOf(setting) + ")" + (isRequest ? "; see kalmia " + command + " --help" : "");
}

Notes WithRemedies(const Notes& notes) {
  Notes said;
  for (std::size_t i = 0; i < notes.Lines().size(); ++i) said.Add(notes.Lines()[i] + TextOf(notes.Remedies()[i]));
  return said;
}

}  // namespace kalmia::app
