#include "tests/tools/support/run_tornelctl.h"

#include <sstream>

#include "tools/cli/cli.h"

namespace tevra::tools::test {

Result run(const std::vector<std::string>& arguments) {
  std::vector<const char*> argv = {"tornelctl"};
  for (const std::string& argument : arguments) {
    argv.push_back(argument.c_str());
  }
  std::ostringstream out;
  std::ostringstream err;
  const int status = runTornelctl(static_cast<int>(argv.size()), argv.data(), out, err);
  return {status, out.str(), err.str()};
}

Result WithFakeDaemon::runWithDaemon(std::vector<std::string> arguments) const {
  arguments.emplace_back("--port");
  arguments.push_back(std::to_string(server_.port()));
  return run(arguments);
}

}  // namespace tevra::tools::test
