#include "tools/tables/table_printer.h"

#include "tools/tables/table_fields.h"
#include "tools/tables/table_json.h"
#include "tools/tables/table_text.h"

namespace tevra::tools {

void TablePrinter::print(const SiTable& table) {
  if (json_) {
    out_ << (printed_ == 0 ? "[\n" : ",\n") << tableJson(tableFields(table));
  } else {
    out_ << (printed_ == 0 ? "" : "\n");
    printTable(out_, tableFields(table));
  }
  out_ << std::flush;
  ++printed_;
}

void TablePrinter::finish() {
  if (json_) {
    out_ << (printed_ == 0 ? "[]\n" : "\n]\n");
  }
}

}  // namespace tevra::tools
