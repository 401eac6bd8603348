// Measures the works of this folder. Without an option of its own it is a Google Benchmark program.

#include <malloc.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <string>

#include <benchmark/benchmark.h>
#include <valgrind/callgrind.h>

#include "bench/send_tables.h"
#include "bench/temporary_root.h"
#include "bench/work.h"
#include "platform/module_utils.h"

namespace {

using tevra::bench::NamedWork;

constexpr int kLogNothing = 0;

int listWorks() {
  for (const NamedWork& work : tevra::bench::allWorks()) {
    std::cout << work.name << "\n";
  }
  return EXIT_SUCCESS;
}

/** That none rots: each is prepared and runs. */
int runEachOnce() {
  for (const NamedWork& named : tevra::bench::allWorks()) {
    const auto work = named.make();
    work->prepare();
    work->run();
  }
  return EXIT_SUCCESS;
}

/** For callgrind, started with --instr-atstart=no: what it counts is one run; and for strace, which
 * sees a run between the two lines. */
int count(const std::string& name) {
  const auto work = tevra::bench::findWork(name).make();
  work->prepare();
  std::cerr << "run\n";
  CALLGRIND_START_INSTRUMENTATION;
  work->run();
  CALLGRIND_STOP_INSTRUMENTATION;
  std::cerr << "ran\n";
  return EXIT_SUCCESS;
}

int64_t residentPages() {
  std::ifstream figures("/proc/self/statm");
  int64_t all = 0;
  int64_t resident = 0;
  figures >> all >> resident;
  return resident;
}

/** Prints by how many kB a run raises the resident memory. */
int measureMemory(const std::string& name) {
  const auto work = tevra::bench::findWork(name).make();
  work->prepare();
  (void)malloc_trim(0);  // what was freed before would hide what is taken now
  const int64_t before = residentPages();
  work->run();
  std::cout << (residentPages() - before) * sysconf(_SC_PAGESIZE) / 1024 << "\n";
  return EXIT_SUCCESS;
}

int runBenchmarks(int argc, char** argv) {
  for (const NamedWork& named : tevra::bench::allWorks()) {
    benchmark::RegisterBenchmark(named.name.c_str(), [make = named.make](benchmark::State& state) {
      const auto work = make();
      for ([[maybe_unused]] auto iteration : state) {
        state.PauseTiming();
        work->prepare();
        state.ResumeTiming();
        work->run();
      }
    });
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return EXIT_FAILURE;
  }
  benchmark::RunSpecifiedBenchmarks();
  return EXIT_SUCCESS;
}

int run(int argc, char** argv) {
  const std::string option = argc > 1 ? argv[1] : "";
  const std::string name = argc > 2 ? argv[2] : "";
  if (option == "--list") {
    return listWorks();
  }
  if (option == "--send") {
    return tevra::bench::sendTables(name);
  }
  const tevra::bench::TemporaryRoot root;
  log_setup(kLogNothing, kLogWithoutConsole);
  if (option == "--once") {
    return runEachOnce();
  }
  if (option == "--count") {
    return count(name);
  }
  if (option == "--memory") {
    return measureMemory(name);
  }
  return runBenchmarks(argc, argv);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "tornel_bench: " << error.what() << "\n";
  }
  return EXIT_FAILURE;
}
