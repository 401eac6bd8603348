#include "tools/text_table.h"

#include <algorithm>
#include <iomanip>
#include <sstream>
#include <utility>

namespace tevra::tools {
namespace {

constexpr size_t kColumnGap = 2;

}  // namespace

TextTable::TextTable(std::vector<std::string> heading) {
  rows_.push_back(std::move(heading));
}

void TextTable::addRow(std::vector<std::string> cells) {
  cells.resize(rows_.front().size());
  rows_.push_back(std::move(cells));
}

void TextTable::print(std::ostream& out, size_t indent) const {
  std::vector<size_t> widths(rows_.front().size());
  for (const auto& row : rows_) {
    for (size_t i = 0; i < row.size(); ++i) {
      widths[i] = std::max(widths[i], displayWidth(row[i]));
    }
  }
  for (const auto& row : rows_) {
    std::string line(indent, ' ');
    for (size_t i = 0; i < row.size(); ++i) {
      line += row[i] + std::string(widths[i] - displayWidth(row[i]) + kColumnGap, ' ');
    }
    const size_t end = line.find_last_not_of(' ');
    out << line.substr(0, end == std::string::npos ? 0 : end + 1) << "\n";
  }
}

size_t displayWidth(const std::string& utf8) {
  // Continuation bytes count with the byte they follow.
  return static_cast<size_t>(std::count_if(utf8.begin(), utf8.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  }));
}

std::string counted(unsigned long long count, const std::string& noun) {
  return counted(count, noun, noun + "s");
}

std::string counted(unsigned long long count, const std::string& noun, const std::string& plural) {
  return std::to_string(count) + " " + (count == 1 ? noun : plural);
}

std::string hex(int64_t value, int digits) {
  std::ostringstream text;
  text << "0x" << std::hex << std::uppercase << std::setfill('0') << std::setw(digits) << value;
  return text.str();
}

std::string oneLine(std::string text) {
  std::replace_if(
      text.begin(), text.end(),
      [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; }, ' ');
  return text;
}

std::string joined(const std::vector<std::string>& parts, const std::string& separator) {
  std::string text;
  for (const std::string& part : parts) {
    text += (text.empty() ? "" : separator) + part;
  }
  return text;
}

}  // namespace tevra::tools
