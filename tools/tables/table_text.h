#pragma once

#include <ostream>

#include "tools/tables/table_fields.h"

namespace tevra::tools {

/**
 * Prints a table for people: its header, then its loops, indented, an entry or descriptor a line.
 * Lines too long for a screen go on in the next; the fields of a descriptor that would need that
 * stand below its name, one a line. What is not decoded is dumped, 16 bytes a line, with its ASCII
 * characters.
 */
void printTable(std::ostream& out, const TableFields& table);

}  // namespace tevra::tools
