// own_network COMMAND [ARGUMENT...]: becomes the command, in a network of its own.
#include <unistd.h>

#include <cstdio>

#include "tests/support/own_network.h"

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fputs("Usage: own_network COMMAND [ARGUMENT...]\n", stderr);
    return 2;
  }
  tevra::test::enterOwnNetwork();
  execvp(argv[1], argv + 1);
  std::perror(argv[1]);
  return 127;
}
