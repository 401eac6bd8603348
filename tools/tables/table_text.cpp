#include "tools/tables/table_text.h"

#include <algorithm>
#include <string>
#include <vector>

#include "tools/fields/field_text.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

constexpr size_t kIndent = 2;
constexpr size_t kScreenWidth = 100;
constexpr size_t kBytesPerLine = 16;

void dump(std::ostream& out, size_t indent, const std::string& bytes) {
  for (size_t start = 0; start < bytes.size(); start += kBytesPerLine) {
    const std::string line = bytes.substr(start, kBytesPerLine);
    std::string characters = line;
    std::replace_if(
        characters.begin(), characters.end(), [](char c) { return c < 0x20 || c > 0x7E; }, '.');
    std::string digits = spacedDigits(line);
    digits.resize(std::max(digits.size(), 3 * std::min(bytes.size(), kBytesPerLine) - 1), ' ');
    out << std::string(indent, ' ') << digits << "  |" << characters << "|\n";
  }
}

void printLoops(std::ostream& out, size_t indent, const Fields& fields);

/** The parts with commas between, in as many lines as the screen's width demands. */
void printWrapped(std::ostream& out, size_t indent, const std::string& title,
                  const std::vector<std::string>& parts) {
  std::string line = std::string(indent, ' ') + title;
  bool isFirst = true;
  for (const std::string& part : parts) {
    if (!isFirst && displayWidth(line) + displayWidth(part) + 3 > kScreenWidth) {
      out << line << ",\n";
      line = std::string(indent + 2 * kIndent, ' ') + part;
    } else {
      line += (isFirst ? "" : ", ") + part;
    }
    isFirst = false;
  }
  out << line << "\n";
}

/** A descriptor in a line, or its fields below its name, one a line; then its loops. */
void printDecoded(std::ostream& out, size_t indent, const std::string& title,
                  const Fields& fields) {
  const std::vector<std::string> parts = inLineParts(fields);
  const std::string line = joined(parts, ", ");
  const bool fits = indent + title.size() + 2 + displayWidth(line) <= kScreenWidth;
  out << std::string(indent, ' ') << title;
  if (parts.size() <= 1 || fits) {
    out << (line.empty() ? "" : ": ") << line << "\n";
  } else {
    out << "\n";
    for (const std::string& part : parts) {
      out << std::string(indent + kIndent, ' ') << part << "\n";
    }
  }
  printLoops(out, indent + kIndent, fields);
}

void printDescriptor(std::ostream& out, size_t indent, const DescriptorFields& descriptor) {
  std::string title = descriptor.name + " (" + hex(descriptor.tag, 2) + ")";
  if (descriptor.isDecoded) {
    printDecoded(out, indent, title, descriptor.fields);
    return;
  }
  if (!descriptor.problem.empty()) {
    title += " " + descriptor.problem;
  }
  out << std::string(indent, ' ') << title << ", " << counted(descriptor.payload.size(), "byte")
      << "\n";
  dump(out, indent + kIndent, descriptor.payload);
}

void printLoops(std::ostream& out, size_t indent, const Fields& fields) {
  for (const Field& field : fields) {
    if (const List* list = std::get_if<List>(&field.value)) {
      for (const Fields& entry : list->entries) {
        printWrapped(out, indent, "", inLineParts(entry));
        printLoops(out, indent + kIndent, entry);
      }
    } else if (const auto* loop = std::get_if<DescriptorLoop>(&field.value)) {
      for (const DescriptorFields& descriptor : loop->entries) {
        printDescriptor(out, indent, descriptor);
      }
    } else if (const Bytes* bytes = std::get_if<Bytes>(&field.value); !isInLine(field)) {
      out << std::string(indent, ' ') << labelOf(field.name) << ", "
          << counted(bytes->data.size(), "byte") << "\n";
      dump(out, indent + kIndent, bytes->data);
    }
  }
}

}  // namespace

void printTable(std::ostream& out, const TableFields& table) {
  printWrapped(out, 0, table.name + ": ", inLineParts(table.fields));
  printLoops(out, kIndent, table.fields);
}

}  // namespace tevra::tools
