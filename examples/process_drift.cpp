// A tool that wears: which control chart says so first? Limits come from the first 20 hours, when the process was under
// control; then every chart watches all 40.
//
//     process_drift examples/data/drift.csv
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include "kalmia/kalmia.h"

namespace {

constexpr int kPartsPerHour = 5;
constexpr int kHoursUnderControl = 20;

// The file has a header line; then, a line: part, hour, diameter. An empty field is a missing cell.
NCDataVector<float> ReadDiameters(const char* path) {
  NCDataVector<float> diameters;
  std::ifstream file(path);
  std::string line, field;
  std::getline(file, line);
  while (std::getline(file, line)) {
    std::istringstream fields(line);
    for (int column = 0; column < 3; ++column) {
      field.clear();
      std::getline(fields, field, ',');
    }
    diameters.push_back(field.empty() ? -99.0f : std::stof(field));
  }
  return diameters;
}

// The first hour with a cell beyond the limits; 0 if there is none. No cell of these series is missing.
int FirstBeyond(const NCDataVector<float>& series, double lower, double upper) {
  for (int hour = 1; hour <= series.Size(); ++hour)
    if (series[hour] < lower || series[hour] > upper) return hour;
  return 0;
}

// A chart of all diameters with the limits of those from before the wear.
ControlChart ChartWithEarlyLimits(ControlChart::ControlType type, const NCDataVector<float>& diameters) {
  NCDataVector<float> early;
  for (int i = 1; i <= kHoursUnderControl * kPartsPerHour; ++i) early.push_back(diameters[i]);
  const ControlChart reference(type, early, kPartsPerHour);
  reference.GetActionLimit();  // what is asked of a chart before, ImportLimits takes over
  reference.GetEWMAUCL();
  ControlChart chart(type, diameters, kPartsPerHour);
  chart.ImportLimits(reference);
  return chart;
}

void Tell(const char* chart, int hour) {
  if (hour == 0)
    std::printf("%-24s  no signal\n", chart);
  else
    std::printf("%-24s  first signal in hour %d\n", chart, hour);
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 2) {
    std::fprintf(stderr, "usage: process_drift drift.csv\n");
    return 2;
  }
  const NCDataVector<float> diameters = ReadDiameters(argv[1]);
  if (diameters.Size() <= kHoursUnderControl * kPartsPerHour) {
    std::fprintf(stderr, "process_drift: %s does not hold the 200 diameters\n", argv[1]);
    return 3;
  }

  const ControlChart means = ChartWithEarlyLimits(ControlChart::MeanRange, diameters);
  Tell("means", FirstBeyond(*means.GetMeanVector(), means.GetMeanLCL(), means.GetMeanUCL()));

  const ControlChart cuSum = ChartWithEarlyLimits(ControlChart::CuSum, diameters);
  Tell("CuSum", FirstBeyond(*cuSum.GetHighCuSum(), 0, cuSum.GetActionLimit()));

  const ControlChart ewma = ChartWithEarlyLimits(ControlChart::EWMA, diameters);
  Tell("moving average (EWMA)", FirstBeyond(*ewma.GetEWMA(), ewma.GetEWMALCL(), ewma.GetEWMAUCL()));
  return 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "process_drift: %s\n", error.what());
  return 1;
}
