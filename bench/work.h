#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tevra::bench {

/** One piece of work to measure. Made once, then prepared and run any number of times. */
class Work {
 public:
  Work() = default;
  virtual ~Work() = default;
  Work(const Work&) = delete;
  Work& operator=(const Work&) = delete;

  /** What a run needs to find. Not measured. */
  virtual void prepare() {}

  /** What is measured. */
  virtual void run() = 0;
};

struct NamedWork {
  std::string name;  ///< "what/how many/whose": floors end in "/floor"
  std::function<std::unique_ptr<Work>()> make;
};

using Works = std::vector<NamedWork>;

// Each appends the works of one kind.
void addOutputWorks(Works& works);
void addRoundTripWorks(Works& works);
void addTableWorks(Works& works);
void addStoredWorks(Works& works);

/** Every work. */
[[nodiscard]] Works allWorks();

/** The work of that name; raises std::invalid_argument when there is none. */
[[nodiscard]] NamedWork findWork(const std::string& name);

}  // namespace tevra::bench
