#pragma once

#include <istream>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace kalmia::analysis {

// The parts of binary files. Readers return false, and never throw, where the bytes hold something else.

void WriteInteger(int value, std::ostream& stream);
void WriteDoubles(const std::vector<double>& values, std::ostream& stream);
void WriteNames(const std::vector<std::string>& names, std::ostream& stream);
bool ReadInteger(int* value, std::istream& stream);
bool ReadDouble(double* value, std::istream& stream);
bool ReadText(std::string* text, std::istream& stream);
/// A count, then as many names.
bool ReadNames(std::istream& stream, std::vector<std::string>* names);

/// The MD5 of the bytes, 32 lower-case hexadecimals.
std::string Checksum(std::string_view bytes);

/// Throws BadFile: the parts of the file do not belong together. `name` is how messages call it.
[[noreturn]] void RefuseParts(const std::string& name);

}  // namespace kalmia::analysis
