#include <iostream>

#include "tools/cli/cli.h"

int main(int argc, char** argv) {
  return tevra::tools::runTornelctl(argc, argv, std::cout, std::cerr);
}
