#include <cstdio>
#include <cstdlib>

#include "platform/host/environment.h"
#include "platform/module_utils.h"

extern "C" {

int get_module_id(int* id) {
  const int type = tevra::host::environmentNumber("TEVRA_MODULE_TYPE", kModuleTypeFourMpts);
  if (id != nullptr) {
    *id = type;
  }
  return type;
}

int get_module_slot(void) {
  constexpr int kFirstInputModule = 3;
  return tevra::host::environmentNumber("TEVRA_MODULE_SLOT", kFirstInputModule);
}

void ShowVersionExitl(int /*unused*/, const char* version) {
  std::puts(version);
  std::exit(EXIT_SUCCESS);
}

}  // extern "C"
