// Runs a target over files instead of under a fuzzer: replay ([--mutations N] PATH...)...
//
// Every file of every PATH (a file or a directory, which may be missing as long as there is any
// input) is one input, and then as many changed copies of it as the --mutations before it says, the
// same in every run. A fault ends the program as it would end the daemon.

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

struct Input {
  fs::path path;
  int mutations;
};

/** The files at `path` or below, in an order that is always the same. */
std::vector<fs::path> filesAt(const fs::path& path) {
  if (!fs::is_directory(path)) {
    return fs::exists(path) ? std::vector<fs::path>{path} : std::vector<fs::path>();
  }
  std::vector<fs::path> files;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(path)) {
    if (entry.is_regular_file()) {
      files.push_back(entry.path());
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

std::vector<Input> inputsOf(int argc, char** argv) {
  std::vector<Input> inputs;
  int mutations = 0;
  for (int index = 1; index < argc; ++index) {
    if (std::strcmp(argv[index], "--mutations") == 0 && index + 1 < argc) {
      mutations = std::atoi(argv[++index]);
      continue;
    }
    for (const fs::path& file : filesAt(argv[index])) {
      inputs.push_back({file, mutations});
    }
  }
  return inputs;
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

size_t replay(const Input& input) {
  const Bytes original = contentOf(input.path);
  run(original);
  std::minstd_rand random;
  for (int count = 0; count < input.mutations && !original.empty(); ++count) {
    Bytes changed = original;
    for (auto changes = 1 + random() % 4; changes > 0 && !changed.empty(); --changes) {
      mutate(changed, random);
    }
    run(changed);
  }
  return 1 + static_cast<size_t>(original.empty() ? 0 : input.mutations);
}

}  // namespace

int main(int argc, char** argv) {
  LLVMFuzzerInitialize(&argc, &argv);
  const std::vector<Input> inputs = inputsOf(argc, argv);
  size_t runs = 0;
  for (const Input& input : inputs) {
    runs += replay(input);
  }
  std::printf("%zu runs of %zu files\n", runs, inputs.size());
  if (inputs.empty()) {
    std::fprintf(stderr, "No input was found: nothing has been tested.\n");
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}
