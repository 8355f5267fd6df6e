// The JSON outputs keep to the schemas in docs/schema, and name no field that these do not.

#include <gtest/gtest.h>

#include <algorithm>

#include "CommandRun.h"
#include "TestTables.h"
#include "figure/FigureExamples.h"
#include "kalmia/analysis/figure/FigureJson.h"

namespace {

using nlohmann::json;

/// Checks what the schemas use of JSON Schema: type, const, enum, required, properties, items and $ref to a definition.
/// A field that `properties` does not name is an error here: everything is to be documented.
class Validator {
 public:
  explicit Validator(const std::string& name)
      : schema_(json::parse(ReadWholeFile(std::string(KALMIA_SCHEMA_DIR) + "/" + name + ".schema.json"))) {}

  std::vector<std::string> Errors(const json& document) {
    errors_.clear();
    Check(document, schema_, "");
    return errors_;
  }

 private:
  static bool HasType(const json& value, const std::string& type) {
    if (type == "object") return value.is_object();
    if (type == "array") return value.is_array();
    if (type == "string") return value.is_string();
    if (type == "integer") return value.is_number_integer();
    if (type == "number") return value.is_number();
    if (type == "boolean") return value.is_boolean();
    return type == "null" && value.is_null();
  }

  static bool HasOneType(const json& value, const json& types) {
    if (types.is_string()) return HasType(value, types);
    return std::any_of(types.begin(), types.end(), [&](const json& type) { return HasType(value, type); });
  }

  void Require(bool good, const std::string& path, const std::string& what) {
    if (!good) errors_.push_back((path.empty() ? "/" : path) + ": " + what);
  }

  void Check(const json& value, const json& schema, const std::string& path) {
    if (schema.contains("$ref")) {
      const std::string reference = schema["$ref"];
      Check(value, schema_.at(json::json_pointer(reference.substr(1))), path);
      return;
    }
    if (schema.contains("const")) Require(value == schema["const"], path, "is not " + schema["const"].dump());
    if (schema.contains("enum")) {
      Require(std::find(schema["enum"].begin(), schema["enum"].end(), value) != schema["enum"].end(), path,
              "is none of the values");
    }
    if (schema.contains("type")) Require(HasOneType(value, schema["type"]), path, "is no " + schema["type"].dump());
    if (schema.contains("required") && value.is_object()) {
      for (const json& name : schema["required"]) Require(value.contains(name), path, "lacks " + name.dump());
    }
    if (schema.contains("properties") && value.is_object()) {
      for (const auto& [name, field] : value.items()) {
        const bool known = schema["properties"].contains(name);
        Require(known, path, "has the unknown field " + name);
        if (known) Check(field, schema["properties"][name], path + "/" + name);
      }
    }
    if (schema.contains("items") && value.is_array()) {
      for (std::size_t i = 0; i < value.size(); ++i) Check(value[i], schema["items"], path + "/" + std::to_string(i));
    }
  }

  json schema_;
  std::vector<std::string> errors_;
};

void ExpectValid(const std::string& schema, const json& document) {
  EXPECT_EQ(Validator(schema).Errors(document), std::vector<std::string>()) << document.dump(1);
}

TEST(JsonSchema, HoldsForEveryOutput) {
  const ScratchFolder folder;
  const std::string table =
      folder.Write("t.csv",
                   "k,e,s,a,b,y1,y2,g\n"
                   "7,,x,1,5,1,2,u\n7,,y,2,3,2,2.5,v\n7,,z,3,1,4,3,u\n7,,w,5,2,4.5,NA,v\n,,q,,,1,1,u\n");
  const std::string model = folder.Path("m");
  ExpectValid("kalmia-pls", RunKalmia({"pls", table, "--y", "y1,y2", "--id", "s", "--group-column", "g", "--components",
                                       "2", "--json", "--save", model, "--csv", folder.Path("d"), "--contributions",
                                       "1", "--residuals"})
                                .Json());
  for (const char* method : {"refit", "component", "none"}) {
    ExpectValid("kalmia-pls", RunKalmia({"pls", "-", "--y", "y", "--components", "2", "--validation", method, "--json"},
                                        LinearTable(20, 4, 1))
                                  .Json());
  }
  ExpectValid("kalmia-pls", RunKalmia({"pls", "-", "--y", "y1", "--json"}, UnrelatedTable(30, 6, 1, 5)).Json());
  const std::string large = folder.Path("large");  // more components than the rounds can have
  for (const std::vector<std::string>& fit : {std::vector<std::string>{"pls", "--y", "y", "--components", "4"},
                                              {"opls", "--y", "y", "--orthogonal", "3"},
                                              {"pca", "--x", "x1..x3,y", "--components", "4"}}) {
    std::vector<std::string> words = fit;
    words.insert(words.end(), {"--id", "name", "--json", "--save", large, "--seed", "18446744073709551615", "-"});
    ExpectValid("kalmia-" + fit.front(), RunKalmia(words, LinearTable(5, 8, 4)).Json());
    ExpectValid(fit.front() == "pls" ? "kalmia-info" : "kalmia-info-" + fit.front(),
                RunKalmia({"info", large, "--json"}).Json());
  }
  ExpectValid("kalmia-compare", RunKalmia({"compare", "-", "pls", "pls --components 1", "--y", "y", "--json"},
                                          LinearTable(20, 4, 1))
                                    .Json());
  ExpectValid("kalmia-info", RunKalmia({"info", model, "--json"}).Json());
  ExpectValid("kalmia-predict", RunKalmia({"predict", model, table, "--json", "--csv", folder.Path("d")}).Json());
  ExpectValid("kalmia-predict", RunKalmia({"predict", model, table, "--json", "--contributions", "1"}).Json());
  ExpectValid("kalmia-predict", RunKalmia({"predict", model, "-", "--json"}, "a\n1\nNA\n").Json());
  ExpectValid("kalmia-compare", RunKalmia({"compare", ExampleTable("wine.csv"), "pls", "pls --components 1", "--classes",
                                           "cultivar", "--json"})
                                    .Json());
  ExpectValid("kalmia-pls", RunKalmia({"pls", ExampleTable("wine.csv"), "--classes", "cultivar", "--nested", "--json"})
                                .Json());
  ExpectValid("kalmia-opls", RunKalmia({"opls", ExampleTable("wine.csv"), "--classes", "cultivar", "--nested", "--json"})
                                 .Json());
  ExpectValid("kalmia-pls", RunKalmia({"pls", "-", "--y", "c", "--components", "1", "--json", "--save", model},
                                      "c,x,z\np,1,2\nq,2,5\np,1,3\nq,3,4\np,2,1\nq,3,6\n")
                                .Json());
  ExpectValid("kalmia-info", RunKalmia({"info", model, "--json"}).Json());
  ExpectValid("kalmia-predict", RunKalmia({"predict", model, "-", "--json"}, "x,z,c\n1,2,p\n99,-99.5,\n,,r\n").Json());
  const std::string filled = folder.Path("filled.csv");
  ExpectValid("kalmia-fill", RunKalmia({"fill", table, "--out", filled, "--json", "--check"}).Json());
  ExpectValid("kalmia-fill",
              RunKalmia({"fill", "-", "--out", filled, "--json", "--check"}, WithHoles(LinearTable(30, 6, 2), 7))
                  .Json());
  ExpectValid("kalmia-describe", RunKalmia({"describe", table, "--json"}).Json());
  const std::string pca = folder.Path("pca");
  ExpectValid("kalmia-pca", RunKalmia({"pca", table, "--id", "s", "--group-column", "g", "--components", "2", "--json",
                                       "--save", pca, "--csv", folder.Path("d"), "--contributions", "x"})
                                .Json());
  ExpectValid("kalmia-pca", RunKalmia({"pca", "-", "--json"}, UnrelatedTable(30, 6, 1, 5)).Json());
  ExpectValid("kalmia-info-pca", RunKalmia({"info", pca, "--json"}).Json());
  ExpectValid("kalmia-predict-pca", RunKalmia({"predict", pca, table, "--json", "--csv", folder.Path("d")}).Json());
  ExpectValid("kalmia-predict-pca",
              RunKalmia({"predict", pca, "-", "--json", "--contributions", "2"}, "a\n1\nNA\n").Json());
  const std::string opls = folder.Path("opls");
  ExpectValid("kalmia-opls", RunKalmia({"opls", table, "--y", "y1,y2", "--id", "s", "--orthogonal", "1", "--predictive",
                                        "1", "--groups", "4", "--json", "--save", opls, "--csv", folder.Path("d"),
                                        "--contributions", "1"})
                                 .Json());
  ExpectValid("kalmia-opls", RunKalmia({"opls", "-", "--y", "y1", "--json"}, UnrelatedTable(30, 6, 1, 5)).Json());
  ExpectValid("kalmia-info-opls", RunKalmia({"info", opls, "--json"}).Json());
  const std::string cv = folder.Path("cv");
  ASSERT_EQ(RunKalmia({"opls", table, "--y", "y1", "--save-cv", cv}).exitCode, 0);
  ExpectValid("kalmia-info-crossvalidation", RunKalmia({"info", cv, "--json"}).Json());
  ExpectValid("kalmia-predict", RunKalmia({"predict", opls, table, "--json", "--csv", folder.Path("d")}).Json());
  ExpectValid("kalmia-pls", RunKalmia({"pls", "-", "--y", "y1", "--json"}, UnrelatedTable(30, 6, 1, 5)).Json());
  ExpectValid("kalmia-spectrum", RunKalmia({"spectrum", table, "--column", "a", "--with", "b", "--json"}).Json());
  ExpectValid("kalmia-spectrum", RunKalmia({"spectrum", table, "--column", "y1", "--json"}).Json());
  const std::string line = "x\n1\n2\n3\n";
  ExpectValid("kalmia-spectrum",
              RunKalmia({"spectrum", "-", "--column", "x", "--detrend", "linear", "--json"}, line).Json());
  ExpectValid("kalmia-cluster", RunKalmia({"cluster", "-", "--method", "ward", "--cut", "2", "--json", "--svg",
                                           folder.Path("svg")},
                                          "s,k,e,x\na,1,,2\nb,1,,3\nc,1,,7\n")
                                    .Json());
  ExpectValid("kalmia-cluster",
              RunKalmia({"cluster", "-", "--method", "single", "--scale", "none", "--json"}, "x\n1\n1\n").Json());
}

TEST(JsonSchema, HoldsForEveryOutputOfO2PLS) {
  const ScratchFolder folder;
  const TwoBlocks blocks = SharedBlocks(40, 1);
  const std::string x = folder.Write("x.csv", WithHoles(blocks.x, 31)), y = folder.Write("y.csv", blocks.y);
  const std::string model = folder.Path("m"), csv = folder.Path("d");
  ExpectValid("kalmia-o2pls", RunKalmia({"o2pls", x, y, "--id", "name", "--fill", "--json", "--save", model, "--csv",
                                         csv})
                                  .Json());
  const std::string unrelated = folder.Write("u.csv", UnrelatedTable(30, 6, 1, 5));
  const json none = RunKalmia({"o2pls", unrelated, unrelated, "--x", "x1..x6", "--y", "y1..y1", "--json"}).Json();
  EXPECT_EQ(none["joint"], 0);
  ExpectValid("kalmia-o2pls", none);
  ExpectValid("kalmia-info-o2pls", RunKalmia({"info", model, "--json"}).Json());
  ExpectValid("kalmia-predict-o2pls", RunKalmia({"predict", model, x, "--json", "--csv", csv}).Json());
  ExpectValid("kalmia-predict-o2pls", RunKalmia({"predict", model, y, "--from", "y", "--json"}).Json());
}

TEST(JsonSchema, HoldsForEveryOutputOfFilter) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", LinearTable(30, 6, 2)), model = folder.Path("m");
  ExpectValid("kalmia-filter", RunKalmia({"filter", table, "--y", "y", "--id", "name", "--components", "2", "--out",
                                          folder.Path("o"), "--save", model, "--json"})
                                   .Json());
  ExpectValid("kalmia-filter", RunKalmia({"filter", "-", "--model", model, "--out", folder.Path("o"), "--json"},
                                         "x1,x2\n1,2\n3,4\n")
                                   .Json());
  ExpectValid("kalmia-info-filter", RunKalmia({"info", model, "--json"}).Json());
}

TEST(JsonSchema, HoldsForEveryOutputOfStatistics) {
  const std::string series = "x\n1\n2\n3\nNA\n5\n6\n7\n8\n9\n10\n11\n12\n40\n";
  for (const char* type : {"individual", "cusum", "ewma", "ewma-sd"}) {
    ExpectValid("kalmia-chart", RunKalmia({"chart", "-", "--column", "x", "--type", type, "--json"}, series).Json());
  }
  const ScratchFolder folder;
  for (const char* type : {"mean-range", "mean-sd"}) {
    const std::string limits = folder.Path("limits");
    ExpectValid("kalmia-chart", RunKalmia({"chart", "-", "--column", "x", "--type", type, "--subgroup", "2", "--rules",
                                           "nelson", "--save-limits", limits, "--json"},
                                          series)
                                    .Json());
    ExpectValid("kalmia-chart",
                RunKalmia({"chart", "-", "--column", "x", "--type", type, "--limits-from", limits, "--json"}, series)
                    .Json());
  }
  const json signals = RunKalmia({"chart", "-", "--column", "x", "--type", "individual", "--rules", "nelson", "--sigma",
                                  "1", "--json"},
                                 series)
                           .Json();
  EXPECT_GT(signals["signals"].size(), 3U);
  ExpectValid("kalmia-chart", signals);
  ExpectValid("kalmia-histogram", RunKalmia({"histogram", "-", "--column", "x", "--json"}, series).Json());
  ExpectValid("kalmia-fisher", RunKalmia({"fisher", "-", "--json"}, "s,a,b\nu,1,2\nv,3,4\n").Json());
  ExpectValid("kalmia-fisher", RunKalmia({"fisher", "-", "--hybrid", "--json"}, "a,b,c\n9,8,7\n8,7,9\n").Json());
  ExpectValid("kalmia-quantile", RunKalmia({"quantile", "normal", "--probability", "0.9", "--json"}).Json());
  ExpectValid("kalmia-quantile",
              RunKalmia({"quantile", "f", "--probability", "0.1", "--df", "2", "--df2", "3", "--json"}).Json());
}

TEST(JsonSchema, HoldsForPreprocessingAndForModelsWithIt) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", LinearTable(12, 9, 3));
  const std::string saved = folder.Path("saved"), out = folder.Path("out.csv"), model = folder.Path("model");
  const std::vector<std::string> learn = {"--steps", "derivative:1:3,wavelet-compress:4:daubechies:4", "--id", "name",
                                          "--exclude", "y", "--save", saved};
  std::vector<std::string> preprocess = {"preprocess", table, "--out", out, "--json"};
  preprocess.insert(preprocess.end(), learn.begin(), learn.end());
  ExpectValid("kalmia-preprocess", RunKalmia(preprocess).Json());
  ExpectValid("kalmia-preprocess", RunKalmia({"preprocess", out, "--steps-file", saved, "--restore", "--out",
                                              folder.Path("back.csv"), "--json"}).Json());
  ExpectValid("kalmia-info-steps", RunKalmia({"info", saved, "--json"}).Json());
  for (const char* command : {"pls", "opls"}) {
    ExpectValid("kalmia-" + std::string(command),
                RunKalmia({command, table, "--y", "y", "--id", "name", "--steps-file", saved, "--json"}).Json());
  }
  ExpectValid("kalmia-pca",
              RunKalmia({"pca", table, "--exclude", "y", "--id", "name", "--steps-file", saved, "--json"}).Json());
  ASSERT_EQ(RunKalmia({"pls", table, "--y", "y", "--id", "name", "--components", "1", "--steps-file", saved, "--save",
                       model}).exitCode, 0);
  const json info = RunKalmia({"info", model, "--json"}).Json();
  ExpectValid("kalmia-info", info);
  EXPECT_EQ(info["preprocessing"].size(), 2U);
}

TEST(JsonSchema, HoldsForFiguresOfEveryKind) {
  using namespace kalmia::analysis;
  for (const Figure::Kind kind :
       {Figure::Kind::Rows, Figure::Kind::Columns, Figure::Kind::Components, Figure::Kind::Other}) {
    Figure figure = FigureOfAllMarks();
    figure.kind = kind;
    figure.panels[0].x.ticks = {{1.5, "one and a half"}};
    figure.panels[0].x.whole = true;
    ExpectValid("kalmia-figure", json::parse(FigureJson({figure, figure})));
  }
  ExpectValid("kalmia-figure", json::parse(FigureJson({})));
}

TEST(JsonSchema, HoldsForTheFiguresOfModels) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", LinearTable(20, 4, 1));
  for (const std::vector<std::string>& fit : {std::vector<std::string>{"pls", "--y", "y", "--permutations", "9"},
                                              {"pca", "--exclude", "y"}}) {
    std::vector<std::string> words = fit;
    words.insert(words.end(), {"--id", "name", "--json", "--figures", "--svg", folder.Path("svg"), table});
    const json output = RunKalmia(words).Json();
    ExpectValid("kalmia-" + fit.front(), output);
    ExpectValid("kalmia-figure", output["figures"]);
    EXPECT_GE(output["figures"]["figures"].size(), 3U);
  }
  const std::string model = folder.Path("model");
  const json opls = RunKalmia({"opls", table, "--y", "y", "--id", "name", "--json", "--figures", "--svg",
                               folder.Path("svg"), "--save", model})
                        .Json();
  ExpectValid("kalmia-opls", opls);
  ExpectValid("kalmia-figure", opls["figures"]);
  const json predicted =
      RunKalmia({"predict", model, table, "--json", "--figures", "--svg", folder.Path("svg")}).Json();
  ExpectValid("kalmia-predict", predicted);
  ExpectValid("kalmia-figure", predicted["figures"]);
  const TwoBlocks blocks = SharedBlocks(40, 1);
  const std::string x = folder.Write("x.csv", blocks.x), y = folder.Write("y.csv", blocks.y);
  const json o2pls =
      RunKalmia({"o2pls", x, y, "--id", "name", "--json", "--figures", "--svg", folder.Path("svg")}).Json();
  ExpectValid("kalmia-o2pls", o2pls);
  ExpectValid("kalmia-figure", o2pls["figures"]);
}

TEST(JsonSchema, NoticesAFieldThatIsWrongMissingOrUnknown) {
  json good = RunKalmia({"describe", "-", "--json"}, "a\n1\n2\n").Json();
  json wrong = good;
  wrong["columns"][0]["n"] = "two";
  json missing = good;
  missing["columns"][0].erase("mean");
  json unknown = good;
  unknown["surprise"] = 1;
  json newer = good;
  newer["formatVersion"] = 2;
  for (const json& bad : {wrong, missing, unknown, newer}) {
    EXPECT_EQ(Validator("kalmia-describe").Errors(bad).size(), 1U) << bad.dump();
  }
}

}  // namespace
