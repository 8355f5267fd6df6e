#include "ChartTables.h"

#include <algorithm>
#include <cmath>

std::string Series(int size, double driftFrom, double driftStep) {
  std::string text = "name,ph\n";
  for (int i = 1; i <= size; ++i) {
    const double noise = std::sin(12.9898 * i) * 0.3 + std::sin(78.233 * i) * 0.2;
    const double drift = std::max(0.0, i - driftFrom) * driftStep;
    text += "r" + std::to_string(i) + "," + std::to_string(7.0 + noise + drift) + "\n";
  }
  return text;
}

std::vector<std::string> ChartOf(const std::string& table, const std::string& type,
                                 std::vector<std::string> more) {
  more.insert(more.begin(), {"chart", table, "--column", "ph", "--type", type});
  return more;
}

int CountOf(const std::string& text, const std::string& part) {
  int count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}
