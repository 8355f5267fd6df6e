#pragma once

#include <istream>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace kalmia::analysis {

// What the content of binary files is made of. Reading is false, and never throws, on bytes that do not hold what it
// reads.

void WriteInteger(int value, std::ostream& stream);
void WriteDoubles(const std::vector<double>& values, std::ostream& stream);
void WriteNames(const std::vector<std::string>& names, std::ostream& stream);
bool ReadInteger(int* value, std::istream& stream);
bool ReadDouble(double* value, std::istream& stream);
bool ReadText(std::string* text, std::istream& stream);
/// Names behind their count.
bool ReadNames(std::istream& stream, std::vector<std::string>* names);

/// The MD5 of the bytes, 32 lower-case hexadecimals.
std::string Checksum(std::string_view bytes);

/// Throws BadFile for content that no writing has made; `name` is how messages call the file.
[[noreturn]] void RefuseParts(const std::string& name);

}  // namespace kalmia::analysis
