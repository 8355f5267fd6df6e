// The main of a harness without libFuzzer: takes every file that is named, and every file in the folders that are named,
// once. Options, which begin with a minus, are libFuzzer's and passed over.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

namespace {

namespace fs = std::filesystem;

void Take(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

}  // namespace

int main(int argc, char** argv) {
  std::size_t files = 0;
  for (const std::string& name : std::vector<std::string>(argv + 1, argv + argc)) {
    if (name.front() == '-') continue;
    if (fs::is_regular_file(name)) {
      Take(name);
      ++files;
    }
    if (!fs::is_directory(name)) continue;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(name)) {
      if (!entry.is_regular_file()) continue;
      Take(entry.path());
      ++files;
    }
  }
  std::cout << "files: " << files << " ; taken once each" << std::endl;
  return files > 0 ? 0 : 1;
}
