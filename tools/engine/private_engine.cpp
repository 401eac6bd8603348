#include "tools/engine/private_engine.h"

#include <optional>

#include "control/si_control_handler.h"
#include "platform/configuration_root.h"
#include "platform/module_utils.h"
#include "tools/engine/state_directory.h"

namespace tevra::tools {
namespace {

/** Below it no file can be made, by nobody: what the engine would save is not. */
constexpr const char* kNowhere = "/dev/null";

/** Where the engine has its files, while it lives. */
class ConfigurationRoot {
 public:
  explicit ConfigurationRoot(const std::string& directory) : former_(configurationRoot()) {
    setConfigurationRoot(directory);
  }
  ~ConfigurationRoot() { setConfigurationRoot(former_); }
  ConfigurationRoot(const ConfigurationRoot&) = delete;
  ConfigurationRoot& operator=(const ConfigurationRoot&) = delete;

 private:
  const std::string former_;
};

/** Tells nobody, and ends with its databases. */
class Engine : public SIControlSrvHandler {
 public:
  Engine() : SIControlSrvHandler(kFirstMpts, kNoMainTask) {}
  ~Engine() override { delete conflictFreeDatabase(); }
  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;

  void getSrvOutputData(std::map<int32_t, SPTSConfiguration>& answer,
                        const SrvOutputRequest& request) override {
    SIControlSrvHandler::getSrvOutputData(answer, request);
    hasAnswered_ = hasAnswered_ || !answer.empty();
  }

  /** Whether there are versions to save. */
  [[nodiscard]] bool hasAnswered() const { return hasAnswered_; }

 private:
  static constexpr int32_t kFirstMpts = 0;
  static constexpr uint16_t kNoMainTask = 0;

  bool hasAnswered_ = false;
};

void logNothing() {
  constexpr int kBelowEveryLevel = 0;
  log_setup(kBelowEveryLevel, kLogWithoutConsole);
}

}  // namespace

void withPrivateEngine(
    const std::string& stateDirectory,
    const std::function<void(thrift::in_module::im_SIControlSrvIf& engine)>& calls) {
  logNothing();
  std::optional<StateDirectory> state;
  if (!stateDirectory.empty()) {
    state.emplace(stateDirectory);
  }
  const ConfigurationRoot root(state ? stateDirectory : kNowhere);
  Engine engine;
  calls(engine);
  if (state && engine.hasAnswered()) {
    state->requireSaved();
  }
}

}  // namespace tevra::tools
