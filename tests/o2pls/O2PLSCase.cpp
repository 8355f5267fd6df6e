#include "O2PLSCase.h"

#include "testing/RandomTables.h"

FloatBlocks MakeFloatBlocks(const plain::BlocksShape& shape, double noise, unsigned seed) {
  const plain::Blocks blocks = plain::MakeBlocks(shape, noise, seed);
  return {plain::ToFloat(blocks.X), plain::ToFloat(blocks.Y)};
}

std::vector<std::vector<std::vector<float>>> Everything(const NCO2PLS& model) {
  std::vector<std::vector<std::vector<float>>> all;
  for (const NCDataMatrix<float>& matrix :
       {model.GetT(), model.GetU(), model.GetP(), model.GetW(), model.GetC(), model.GetQ(), model.GetTo(),
        model.GetUo(), model.GetPo(), model.GetWo(), model.GetCo(), model.GetQo(), model.GetLambda(),
        model.GetXLambda(), model.GetR(), model.GetS()})
    all.push_back(CellsOf(matrix));
  return all;
}

plain::O2PLS PlainOf(const NCO2PLS& m) {
  using plain::Of;
  return {Of(m.GetT()),  Of(m.GetU()),  Of(m.GetP()),  Of(m.GetW()),  Of(m.GetC()), Of(m.GetQ()), Of(m.GetTo()),
          Of(m.GetWo()), Of(m.GetPo()), Of(m.GetUo()), Of(m.GetCo()), Of(m.GetQo()), Of(m.GetR()), Of(m.GetS()),
          Of(m.GetLambda()), Of(m.GetXLambda())};
}
