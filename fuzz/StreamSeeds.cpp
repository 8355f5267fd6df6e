// Writes the streams that the fuzzer starts from into a folder, a file for each class and version:
//   StreamSeeds FOLDER
#include <cstdio>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>

#include "cluster/Trees.h"
#include "kalmia/kalmia.h"
#include "testing/RandomTables.h"
#include "testing/StreamAttacks.h"

namespace {

using IntVector = NCIntegralVector<int, -99>;

/// The fields of a class straight behind its record, as old versions have them; version 2 of a container has a text in
/// front.
std::string OldStream(const char* magic, short version, bool text, const std::function<void(std::ostream&)>& fields) {
  std::ostringstream stream;
  VexStreamableData(version, magic).Write(stream);
  if (text) WriteBinaryString("text", stream);
  fields(stream);
  return stream.str();
}

void WriteNumbers(std::ostream& stream, const std::vector<int>& numbers) {
  WriteFourBytes(numbers.data(), static_cast<int>(numbers.size()), stream);
}

/// The same objects in the layouts before directories.
class OldSeeds {
 public:
  explicit OldSeeds(short version) : version_(version), text_(version == 2) {}

  std::string Vector(const NCDataVector<float>& v) const {
    return OldStream("NCDV", version_, text_, [&v](std::ostream& stream) {
      WriteNumbers(stream, {v.Size(), v.GetNumMisVal()});
      WriteArray(v.begin(), v.Size(), sizeof(float), stream);
    });
  }
  std::string Numbers(const IntVector& v) const {
    return OldStream("NCIV", version_, text_, [&v](std::ostream& stream) {
      WriteNumbers(stream, {v.Size()});
      WriteArray(v.begin(), v.Size(), sizeof(int), stream);
    });
  }
  std::string Matrix(const NCDataMatrix<float>& m) const {
    return OldStream("NCDM", version_, text_, [&](std::ostream& stream) {
      WriteNumbers(stream, {m.SizeRows(), m.SizeColumns(), m.GetNumMisVal()});
      for (const NCDataVector<float>& row : m) stream << Vector(row);
      IntVector counts;
      for (int c = 1; c <= m.SizeColumns(); ++c) counts.push_back(m.GetColumnMisVal(c));
      stream << Numbers(counts);
    });
  }

 private:
  short version_;
  bool text_;
};

const NCDataMatrix<float>& Table() {
  static const NCDataMatrix<float> table = RandomMatrix<float>(4, 3, 0.2, 1);
  return table;
}

NCStringVector Names() { return NCStringVector({"octane", "", "1100 nm"}); }

NCScale FittedScale() {
  NCScale scale(3);
  for (int k = 1; k <= 3; ++k) scale.SetType(k, NCScale::ScalingUnitVariance);
  NCDataMatrix<float> table = RandomMatrix<float>(6, 3, 0, 2);
  scale.ScaleWithNewModel(&table);
  return scale;
}

std::string VersionOneScale() {
  return OldStream("NCS", 1, /*text=*/false, [](std::ostream& stream) {
    stream << *FittedScale().GetCentres() << *FittedScale().GetScales();
    WriteNumbers(stream, {4, 4, 4});
  });
}

NCTransform Transforms() {
  NCTransform transforms(2);
  transforms[1].SetTransform(TransformE::TransformLog);
  transforms[2].SetTransform(TransformE::TransformPower);
  return transforms;
}

std::string VersionOneTransforms() {
  return OldStream("NCT", 1, /*text=*/false, [](std::ostream& stream) {
    WriteNumbers(stream, {2});
    for (int c = 1; c <= 2; ++c) {
      WriteNumbers(stream, {Transforms()[c].GetTransform()});
      WriteFourBytes(Transforms()[c].GetConstants(), TransformStruct::kConstants, stream);
    }
  });
}

std::string FittedPLS() {
  const NCDataMatrix<float> x = RandomMatrix<float>(5, 3, 0, 3), y = RandomMatrix<float>(5, 2, 0, 4);
  NCPLS model(&x, &y, /*maxIterations=*/50);
  model.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true);
  return StreamOf(model);
}

/// A model that was restored without the scores of Y.
std::string PLSWithoutU() {
  const NCDataMatrix<float> x = RandomMatrix<float>(5, 3, 0.1, 3), y = RandomMatrix<float>(5, 2, 0.1, 4);
  NCPLS fitted(&x, &y, /*maxIterations=*/50);
  for (int a = 0; a < 2; ++a) {
    fitted.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true);
    fitted.CalculateResiduals();
  }
  const NCDataMatrix<float> none;
  return StreamOf(NCPLS(fitted.GetXResiduals(), fitted.GetYResiduals(), fitted.GetCprim(), fitted.GetPprim(),
                        fitted.GetWprim(), &none, fitted.GetTprim(), /*maxIterations=*/50));
}

/// Loadings and scores alone.
std::string PCAWithoutX() {
  const NCDataMatrix<float> none, P = RandomMatrix<float>(2, 3, 0, 5), T = RandomMatrix<float>(2, 4, 0.1, 6);
  return StreamOf(NCPCA(&none, &P, &T, /*maxIterations=*/50));
}

std::string FittedPCA() {
  NCPCA model(&Table(), /*maxIterations=*/50);
  model.NextComponent(nullptr, nullptr, 0, nullptr);
  return StreamOf(model);
}

/// One component, or none yet: then there are no scores of Y on the stream.
std::string Filter(int components) {
  const NCDataMatrix<float> x = RandomMatrix<float>(5, 3, 0, 3), y = RandomMatrix<float>(5, 1, 0, 4);
  NCYOrthogonalPLS model(&x, &y, /*maxIterations=*/50, /*maxPLSComponents=*/0);
  for (int a = 0; a < components; ++a) model.NextComponent(/*showProgress=*/false);
  return StreamOf(model);
}

std::string VersionOneFilter() {
  return OldStream("YOPLS", 1, /*text=*/false, [](std::ostream& stream) {
    const int shapes[][2] = {{1, 3}, {1, 3}, {1, 4}, {4, 3}};  // P', W', T', X
    for (const auto& shape : shapes) stream << RandomMatrix<float>(shape[0], shape[1], 0.1, 5);
    for (const int rows : {4, 1}) {  // the scores of Y and the inverse of their products, with a flag before each
      const short isThere = 1;
      WriteTwoBytes(&isThere, 1, stream);
      stream << RandomMatrix<float>(rows, 1, 0, 6);
    }
    WriteNumbers(stream, {1, 50});
  });
}

std::string ValidatedOPLS() {
  const NCDataMatrix<float> x = RandomMatrix<float>(4, 2, 0, 8), y = RandomMatrix<float>(4, 1, 0, 9);
  OPLSCrossValidation validation(&x, &y, /*predictiveComponents=*/1, /*rounds=*/2, nullptr, nullptr);
  validation.NextComponent(nullptr);
  std::ostringstream stream;
  validation.GetData()->WriteObject(stream);
  return stream.str();
}

std::string VersionOnePLS() {
  return OldStream("NCPLS", 1, /*text=*/false, [](std::ostream& stream) {
    const int shapes[][2] = {{1, 2}, {1, 3}, {1, 3}, {1, 4}, {1, 4}, {4, 3}, {4, 2}};  // C', P', W', U', T', X, Y
    for (const auto& shape : shapes) stream << RandomMatrix<float>(shape[0], shape[1], 0.1, 5);
    WriteNumbers(stream, {50, 7});
  });
}

std::string VersionOneFlags() {
  return OldStream("BoolVector", 1, /*text=*/false, [](std::ostream& stream) {
    WriteNumbers(stream, {3});
    WriteBytes("\0\1\2", 3, stream);
  });
}

std::string VersionOneNames() {
  return OldStream("NCSV", 1, /*text=*/false, [](std::ostream& stream) {
    WriteNumbers(stream, {2});
    WriteBinaryString("octane", stream);
    WriteBinaryString("", stream);
  });
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "StreamSeeds FOLDER\n");
    return 2;
  }
  const std::string folder = argv[1];
  bool good = true;
  const auto write = [&](const std::string& name, const std::string& bytes) {
    good = good && std::ofstream(folder + "/" + name, std::ios::binary) << bytes;
  };
  write("vector-float", StreamOf(Table()[1]));
  write("vector-double", StreamOf(RandomVector<double>(3, 0.3, 6)));
  write("vector-empty", StreamOf(NCDataVector<float>()));
  write("matrix-float", StreamOf(Table()));
  write("matrix-double", StreamOf(RandomMatrix<double>(2, 2, 0.3, 7)));
  write("matrix-without-rows", StreamOf(NCDataMatrix<float>(0, 3)));
  write("numbers", StreamOf(IntVector(3, 5)));
  write("long-numbers", StreamOf(NCIntegralVector<unsigned long, 0>(3, 5)));
  write("flags", StreamOf(BoolVector(3, true)));
  write("flags-1", VersionOneFlags());
  write("names", StreamOf(Names()));
  write("names-1", VersionOneNames());
  write("scale", StreamOf(FittedScale()));
  write("scale-1", VersionOneScale());
  write("transform", StreamOf(Transforms()[1]));
  write("transforms", StreamOf(Transforms()));
  write("transforms-1", VersionOneTransforms());
  write("pca", FittedPCA());
  write("pls", FittedPLS());
  write("pls-without-u", PLSWithoutU());
  write("pca-without-x", PCAWithoutX());
  write("pls-1", VersionOnePLS());
  write("filter", Filter(1));
  write("filter-without-components", Filter(0));
  write("filter-1", VersionOneFilter());
  write("opls-validation", ValidatedOPLS());
  write("tree", StreamOf(*RandomTree(6, 1)));
  write("tree-of-several-items", StreamOf(*Merge(0.5F, Leaf({3}), Leaf({4, 2}))));
  for (const short version : {1, 2, 3}) {
    const OldSeeds old(version);
    const std::string ending = "-" + std::to_string(version);
    write("vector" + ending, old.Vector(Table()[1]));
    write("matrix" + ending, old.Matrix(Table()));
    write("numbers" + ending, old.Numbers(IntVector(3, 5)));
  }
  if (!good) std::fprintf(stderr, "cannot write into %s\n", folder.c_str());
  return good ? 0 : 1;
}
