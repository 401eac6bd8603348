// Runs a target over files instead of under a fuzzer: replay [--mutations N] PATH...
//
// Every file of every PATH (a file or a directory, which may be missing as long as there is any
// input) is one input, and then as many changed copies of it as --mutations says, the same in every
// run. A fault ends the program as it would end the daemon.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "fuzz/target.h"

namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<uint8_t>;

std::vector<fs::path> filesIn(const std::vector<fs::path>& paths) {
  std::vector<fs::path> files;
  for (const fs::path& path : paths) {
    if (!fs::is_directory(path)) {
      files.push_back(path);
      continue;
    }
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(path)) {
      if (entry.is_regular_file()) {
        files.push_back(entry.path());
      }
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

Bytes contentOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    throw std::runtime_error("cannot read " + path.string());
  }
  return {std::istreambuf_iterator<char>(file), {}};
}

/** One of the changes that fuzzers begin with. */
void mutate(Bytes& bytes, std::minstd_rand& random) {
  const auto position = bytes.begin() + static_cast<std::ptrdiff_t>(random() % bytes.size());
  const auto byte = static_cast<uint8_t>(random());
  switch (random() % 5) {
    case 0:
      *position ^= static_cast<uint8_t>(1U << (byte & 7));
      break;
    case 1:
      *position = byte;
      break;
    case 2:
      bytes.insert(position, byte);
      break;
    case 3:
      bytes.erase(position,
                  position + std::min<std::ptrdiff_t>(1 + byte / 16, bytes.end() - position));
      break;
    default:
      *position = (byte & 1) != 0 ? 0xFF : 0;
  }
}

void run(const Bytes& bytes) {
  // A copy of exactly this size, for a sanitizer to see what reads beyond.
  const std::unique_ptr<uint8_t[]> copy(new uint8_t[bytes.size()]);
  std::copy(bytes.begin(), bytes.end(), copy.get());
  (void)LLVMFuzzerTestOneInput(copy.get(), bytes.size());
}

size_t replay(const fs::path& path, int mutations) {
  const Bytes original = contentOf(path);
  run(original);
  std::minstd_rand random;
  for (int count = 0; count < mutations && !original.empty(); ++count) {
    Bytes changed = original;
    for (auto changes = 1 + random() % 4; changes > 0 && !changed.empty(); --changes) {
      mutate(changed, random);
    }
    run(changed);
  }
  return 1 + static_cast<size_t>(original.empty() ? 0 : mutations);
}

}  // namespace

int main(int argc, char** argv) {
  LLVMFuzzerInitialize(&argc, &argv);
  std::vector<fs::path> paths;
  int mutations = 0;
  for (int index = 1; index < argc; ++index) {
    if (std::strcmp(argv[index], "--mutations") == 0 && index + 1 < argc) {
      mutations = std::atoi(argv[++index]);
    } else if (fs::exists(argv[index])) {
      paths.emplace_back(argv[index]);
    }
  }
  const std::vector<fs::path> files = filesIn(paths);
  size_t inputs = 0;
  for (const fs::path& file : files) {
    inputs += replay(file, mutations);
  }
  std::printf("%zu inputs from %zu files\n", inputs, files.size());
  if (files.empty()) {
    std::fprintf(stderr, "No input was found: nothing has been tested.\n");
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}
