#include "bench/work.h"

#include <algorithm>
#include <stdexcept>

namespace tevra::bench {

Works allWorks() {
  Works works;
  addOutputWorks(works);
  addRoundTripWorks(works);
  addTableWorks(works);
  addStoredWorks(works);  // the last of which starts a server that stays
  return works;
}

NamedWork findWork(const std::string& name) {
  const Works works = allWorks();
  const auto found = std::find_if(works.begin(), works.end(),
                                  [&](const NamedWork& work) { return work.name == name; });
  if (found == works.end()) {
    throw std::invalid_argument("no work is called " + name);
  }
  return *found;
}

}  // namespace tevra::bench
