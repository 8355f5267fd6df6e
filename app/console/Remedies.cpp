#include "app/console/Remedies.h"

namespace kalmia::app {

using namespace analysis;

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
    case Remedy::None: break;
  }
  return "";
}

}  // namespace

std::string MessageOf(const Failure& failure) { return std::string(failure.what()) + TextOf(failure.WhatHelps()); }

}  // namespace kalmia::app
