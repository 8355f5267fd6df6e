#include "TestTables.h"

#include <cstdlib>
#include <limits>
#include <random>
#include <sstream>

#include "testing/ScratchFolder.h"

namespace {

/// Numbers from -1 to 1 with three decimals. Only the generator is used: the standard's distributions differ between
/// machines.
class Noise {
 public:
  explicit Noise(unsigned seed) : generator_(seed) {}

  double Next() { return (static_cast<int>(generator_() % 2001U) - 1000) / 1000.0; }

 private:
  std::mt19937 generator_;
};

}  // namespace

std::string LinearTable(int rows, int columns, unsigned seed) {
  Noise noise(seed);
  std::ostringstream text;
  text << "name";
  for (int k = 1; k <= columns; ++k) text << ",x" << k;
  text << ",y\n";
  for (int i = 1; i <= rows; ++i) {
    text << "s" << i;
    double y = 10.0;
    for (int k = 1; k <= columns; ++k) {
      const double x = 5.0 * k + k * noise.Next();
      if (k <= 3) y += 2.0 * x / k;
      text << ',' << x;
    }
    text << ',' << y + 0.2 * noise.Next() << '\n';
  }
  return text.str();
}

std::string UnrelatedTable(int rows, int columns, int yColumns, unsigned seed) {
  Noise noise(seed);
  std::ostringstream text;
  for (int k = 1; k <= columns; ++k) text << "x" << k << ',';
  for (int j = 1; j <= yColumns; ++j) text << "y" << j << (j < yColumns ? "," : "\n");
  for (int i = 1; i <= rows; ++i) {
    for (int c = 1; c < columns + yColumns; ++c) text << noise.Next() << ',';
    text << noise.Next() << '\n';
  }
  return text.str();
}

std::string FadingTable(int rows, int columns, unsigned seed) {
  Noise noise(seed);
  std::ostringstream text;
  for (int k = 1; k <= columns; ++k) text << "x" << k << ',';
  text << "y\n";
  for (int i = 1; i <= rows; ++i) {
    double y = 0.0, size = 1.0;
    for (int k = 1; k <= columns; ++k) {
      const double share = noise.Next();
      y += share;
      text << size * share << ',';
      size *= 0.8;
    }
    text << y << '\n';
  }
  return text.str();
}

TwoBlocks SharedBlocks(int rows, unsigned seed) {
  constexpr double kCommonX[] = {1.0, 0.0, 0.8, 0.6, -0.7, -0.9}, kOwnX[] = {0.0, 1.0, -0.8, 0.6, -0.4, 0.7};
  constexpr double kCommonY[] = {1.0, 0.0, -0.8, 0.7}, kOwnY[] = {0.0, 1.0, 0.9, 0.6};
  Noise noise(seed);
  std::ostringstream x, y;
  x << "name,x1,x2,x3,x4,x5,x6\n";
  y << "name,y1,y2,y3,y4\n";
  for (int i = 1; i <= rows; ++i) {
    const double common = noise.Next(), ownX = noise.Next(), ownY = noise.Next();
    x << "s" << i;
    y << "s" << i;
    for (int k = 0; k < 6; ++k) x << ',' << 5.0 + 3.0 * (common * kCommonX[k] + ownX * kOwnX[k] + 0.1 * noise.Next());
    for (int j = 0; j < 4; ++j) y << ',' << 9.0 + common * kCommonY[j] + ownY * kOwnY[j] + 0.1 * noise.Next();
    x << '\n';
    y << '\n';
  }
  return {x.str(), y.str()};
}

std::string WithRowsReversed(const std::string& table) {
  std::istringstream lines(table);
  std::string header, line, rows;
  std::getline(lines, header);
  while (std::getline(lines, line)) rows = line + "\n" + rows;
  return header + "\n" + rows;
}

std::string WithHoles(const std::string& table, int every) {
  std::string holed;
  std::istringstream lines(table);
  std::string line;
  std::getline(lines, line);
  holed += line + "\n";
  int cell = 0;
  while (std::getline(lines, line)) {
    std::istringstream fields(line);
    std::string field;
    std::getline(fields, field, ',');
    holed += field;
    while (std::getline(fields, field, ',')) {
      const bool isLast = fields.eof();
      holed += "," + (!isLast && ++cell % every == 0 ? std::string() : field);
    }
    holed += "\n";
  }
  return holed;
}

std::vector<double> NumbersOf(const kalmia::analysis::Table& table, const std::string& column) {
  std::vector<double> numbers;
  const int c = table.Find(column);
  for (int row = 0; row < table.Rows(); ++row) {
    const std::string cell(table.Cell(row, c));
    numbers.push_back(cell.empty() ? std::numeric_limits<double>::quiet_NaN() : std::strtod(cell.c_str(), nullptr));
  }
  return numbers;
}

kalmia::analysis::Table CsvAt(const std::string& path) { return {ReadWholeFile(path), path}; }
