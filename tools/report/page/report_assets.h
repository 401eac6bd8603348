#pragma once

namespace tevra::tools::report {

///@{
/** The page's style sheet and script: report.css and report.js as they are at build time, UTF-8. */
extern const char* const kStyleSheet;
extern const char* const kScript;
///@}

}  // namespace tevra::tools::report
