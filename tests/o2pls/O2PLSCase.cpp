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
  const auto of = plain::TableOf;
  return {of(m.GetT()),  of(m.GetU()),  of(m.GetP()),  of(m.GetW()),  of(m.GetC()), of(m.GetQ()), of(m.GetTo()),
          of(m.GetWo()), of(m.GetPo()), of(m.GetUo()), of(m.GetCo()), of(m.GetQo()), of(m.GetR()), of(m.GetS()),
          of(m.GetLambda()), of(m.GetXLambda())};
}
