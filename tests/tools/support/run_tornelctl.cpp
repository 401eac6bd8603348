#include "tests/tools/support/run_tornelctl.h"

#include <sstream>

#include "tools/cli/cli.h"

namespace tevra::tools::test {

Result run(const std::vector<std::string>& arguments) {
  std::ostringstream out;
  std::ostringstream err;
  const int status = run(arguments, out, err);
  return {status, out.str(), err.str()};
}

int run(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) {
  std::vector<const char*> argv = {"tornelctl"};
  for (const std::string& argument : arguments) {
    argv.push_back(argument.c_str());
  }
  return runTornelctl(static_cast<int>(argv.size()), argv.data(), out, err);
}

Result WithFakeDaemon::runWithDaemon(std::vector<std::string> arguments) const {
  arguments.emplace_back("--port");
  arguments.push_back(std::to_string(server_.port()));
  return run(arguments);
}

std::string WithFakeDaemon::replacing(const std::string& file) const {
  return "tornelctl: what " + file + " holds will replace the tables of the daemon at 127.0.0.1:" +
         std::to_string(server_.port()) +
         "; if its transport stream was another, its PIDs begin anew\n";
}

}  // namespace tevra::tools::test
