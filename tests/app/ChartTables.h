#pragma once

#include <string>
#include <vector>

/// Twelve values; as single values mean 6 and no point beyond three standard deviations.
inline constexpr auto kTwelve = "x\n2\n4\n6\n8\n3\n5\n7\n5\n1\n9\n4\n18\n";

/// A table of so many values about 7 in the column `ph`, which drift by so much a row from one row on.
std::string Series(int size, double driftFrom, double driftStep);

/// The words that draw a chart of that column.
std::vector<std::string> ChartOf(const std::string& table, const std::string& type, std::vector<std::string> more = {});

/// How often the part occurs in the text.
int CountOf(const std::string& text, const std::string& part);
