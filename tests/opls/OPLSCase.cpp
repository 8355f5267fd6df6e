#include "OPLSCase.h"

#include <gtest/gtest.h>

#include <sstream>
#include <vector>

#include "pcapls/PlainPLS.h"
#include "testing/StreamAttacks.h"

NCOPLS FittedOPLS(const Tables& tables, int predictive, int orthogonal, int maxIterations) {
  NCOPLS model(&tables.X, &tables.Y, predictive, maxIterations);
  for (int o = 0; o <= orthogonal; ++o) model.NextComponent(nullptr);
  return model;
}

NCOPLSPred PredictedBy(NCOPLS* model, const NCDataMatrix<float>& X) {
  NCOPLSPred prediction(&X, model);
  while (prediction.SizeOComps() < prediction.GetMaxComp()) prediction.CalcNextComponent();
  return prediction;
}

OPLSCrossValidation Validated(const Tables& tables, int predictive, int rounds, int orthogonal,
                              NCIntegralVector<int, -99>* groups) {
  OPLSCrossValidation validation(&tables.X, &tables.Y, predictive, rounds, nullptr, groups);
  for (int o = 0; o < orthogonal; ++o) validation.NextComponent(nullptr);
  return validation;
}

NCDataMatrix<float> PartOf(const NCDataMatrix<float>& T, const NCDataMatrix<float>& P) {
  NCDataMatrix<float> part(T.SizeColumns(), P.SizeColumns(), 0.0F);
  for (int a = 1; a <= T.SizeRows(); ++a) part.AddVprimV(T[a], P[a], 1.0F);
  return part;
}

std::string StreamOfEach(const std::vector<NCDataMatrix<float>>& matrices) {
  std::string all;
  for (const NCDataMatrix<float>& matrix : matrices) all += StreamOf(matrix);
  return all;
}

std::string Everything(const NCOPLS& model) {
  std::string all;
  for (const auto* matrix : {model.GetTprim(), model.GetUprim(), model.GetTOprim(), model.GetPOprim(),
                             model.GetCOprim(), model.GetWOprim(), model.GetUOprim()})
    all += StreamOf(*matrix);
  for (const auto* matrices : {model.GetWMatrices(), model.GetPMatrices(), model.GetCMatrices()})
    all += StreamOfEach(*matrices);
  return all + StreamOf(model.GetXResiduals()) + StreamOf(model.GetYResiduals());
}

std::string Everything(NCOPLSPred& prediction) {
  return StreamOf(prediction.GetXOrthoResiduals()) + StreamOf(*prediction.GetYPred()) +
         StreamOf(*prediction.GetTPred()) + StreamOf(*prediction.GetTOPred());
}

std::string Everything(const OPLSCrossvalidationData& data) {
  std::ostringstream stream;
  EXPECT_TRUE(data.WriteObject(stream));
  return stream.str();
}

std::string EverythingButTrainingSS(OPLSCrossValidation& validation) {
  std::ostringstream numbers;
  numbers << validation.SizeCVRounds() << ' ' << validation.SizeOComponents() << ' ' << std::hexfloat
          << validation.GetQ2TotCum();
  std::string all = numbers.str() + Everything(*validation.GetData()) + StreamOfEach(*validation.GetTSets());
  for (const auto* vector : {validation.GetQ2YVarCum(), validation.GetSSYcv(), validation.GetToPred()})
    all += StreamOf(*vector);
  for (const auto* matrix : {validation.GetToSet(), validation.GetYPred(), validation.GetTPred()})
    all += StreamOf(*matrix);
  return all;
}

std::string Everything(OPLSCrossValidation& validation) {
  return EverythingButTrainingSS(validation) + StreamOf(*validation.GetSSYcvOriginal());
}

double RelativeGapOf(const NCDataMatrix<float>& a, const NCDataMatrix<float>& b) {
  plain::Vector aCells, bCells;
  for (const plain::Vector& row : plain::TableOf(a)) aCells.insert(aCells.end(), row.begin(), row.end());
  for (const plain::Vector& row : plain::TableOf(b)) bCells.insert(bCells.end(), row.begin(), row.end());
  EXPECT_EQ(aCells.size(), bCells.size());
  return plain::RelativeGap(aCells, bCells);
}
