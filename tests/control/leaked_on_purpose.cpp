// The handler never releases its conflict-free database, which on a device lives as long as the
// process.
extern "C" const char*
__lsan_default_suppressions();  // NOLINT(bugprone-reserved-identifier): the sanitizer's hook

extern "C" const char* __lsan_default_suppressions() {
  return "leak:tevra::SIControlSrvHandler::SIControlSrvHandler";
}
