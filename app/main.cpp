#include "app/start_up.h"

int main(int argc, char** argv) {
  return tevra::runTornel(argc, argv);
}
