#pragma once

/** The style sheet and the script of the page, from report.css and report.js at build time. */
namespace tevra::tools::report {

extern const char* const kStyleSheet;
extern const char* const kScript;

}  // namespace tevra::tools::report
