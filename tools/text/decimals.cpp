#include "tools/text/decimals.h"

#include <iomanip>
#include <sstream>

namespace tevra::tools {

std::string scaledText(int64_t value, int decimals, const std::string& unit) {
  const auto places = static_cast<size_t>(decimals);
  std::string digits = std::to_string(value);
  if (digits.size() <= places) {
    digits.insert(0, places + 1 - digits.size(), '0');
  }
  const std::string whole = digits.substr(0, digits.size() - places);
  std::string fraction = digits.substr(digits.size() - places);
  fraction.erase(fraction.find_last_not_of('0') + 1);
  return whole + (fraction.empty() ? "" : "." + fraction) + " " + unit;
}

std::string fixedText(double value, int decimals) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(decimals) << value;
  return text.str();
}

}  // namespace tevra::tools
