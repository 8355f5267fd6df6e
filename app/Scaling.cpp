#include "app/Scaling.h"

#include "app/DisplayText.h"
#include "app/Failure.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::app {

std::unique_ptr<NCScale> ScaleColumns(NCScale::Scaling type, const std::vector<std::string>& names,
                                      NCDataMatrix<float>* matrix) {
  auto scale = std::make_unique<NCScale>(matrix->SizeColumns());
  for (int c = 1; c <= matrix->SizeColumns(); ++c) scale->SetType(c, type);
  try {
    scale->ScaleMatrix(matrix, /*newModel=*/true);
  } catch (const NCScaleError& error) {
    const std::string& name = names[static_cast<std::size_t>(error.Column - 1)];
    throw Failure(ExitCode::BadData, "column " + Quoted(name) +
                                         " cannot be scaled: " + OneLine(static_cast<const char*>(error.GetMessage())));
  }
  return scale;
}

NCScale::Scaling ScalingOfY(NCScale::Scaling scalingOfX) {
  return scalingOfX == NCScale::ScalingUnitVariance ? NCScale::ScalingUnitVariance : NCScale::ScalingCentre;
}

double CentreOf(const NCScale& scale, int variable) {
  const double centre = (*scale.GetCentres())[variable];
  return centre == kMissing ? 0.0 : centre;
}

double FactorOf(const NCScale& scale, int variable) {
  const double factor = (*scale.GetScales())[variable];
  return factor == kMissing ? 1.0 : factor;
}

}  // namespace kalmia::app
