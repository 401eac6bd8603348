#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/report/page/markup.h"

namespace tevra::tools::report {

/** The head of a table; columns of figures are set flush right. */
void headRow(const std::vector<const char*>& columns, Markup& markup);

///@{
/** A cell of text, of a figure, and of how often something went wrong. */
void cell(Markup& markup, const std::string& text);
void figureCell(Markup& markup, const std::string& text);
void faultCell(Markup& markup, uint64_t count);
///@}

}  // namespace tevra::tools::report
