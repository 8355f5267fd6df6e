#pragma once

#include <string>
#include <vector>

namespace kalmia::app {

/// A file that the command reads or writes.
struct FilePlace {
  std::string what;  ///< the option or the kind of file, for messages: "--save", "the table"
  std::string path;
  std::string folder = {};  ///< of an output, one that is made where it is missing; empty: there is none such
};

/// Those of the places that are given: an option that is not has no path.
std::vector<FilePlace> Given(std::vector<FilePlace> places);

/// What every command does with its places before any work: RefuseToOverwrite, then TryOutputs.
void CheckPlaces(const std::vector<FilePlace>& inputs, const std::vector<FilePlace>& outputs);

/// Throws BadRequest if a file to be written is also read, written twice, the folder of others, or the file that
/// standard output or standard error goes to, under whatever name. Standard input, "-", is no file; "-" as an output,
/// or as the folder of --csv, is refused, for it would be taken for standard output but be a file of that name.
void RefuseToOverwrite(const std::vector<FilePlace>& inputs, const std::vector<FilePlace>& outputs);

/// Tries whether the files can be written, before hours of work whose results would be lost, and leaves nothing behind.
/// Existing files stay as they are. A disk may still fill up meanwhile, and devices and pipes are not tried.
/// Throws BadFile that names the file or the folder.
void TryOutputs(const std::vector<FilePlace>& outputs);

std::vector<std::string> PathsOf(const std::vector<FilePlace>& places);

/// "Wrote ...", a line for each after an empty line; empty where there are none.
std::string WrittenText(const std::vector<FilePlace>& outputs);

/// The places of files in the folder of --csv; none where there is no such folder.
std::vector<FilePlace> PlacesInCsvFolder(const std::string& folder, const std::vector<std::string>& names);

/// The same of drawings in the folder of --svg: figures of these names.
std::vector<FilePlace> PlacesInSvgFolder(const std::string& folder, const std::vector<std::string>& figures);
/// The place of one of them.
std::string SvgPath(const std::string& folder, const std::string& figure);

}  // namespace kalmia::app
