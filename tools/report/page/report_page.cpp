#include "tools/report/page/report_page.h"

#include "tools/report/page/markup.h"
#include "tools/report/page/page_sections.h"
#include "tools/report/page/page_words.h"
#include "tools/report/page/report_assets.h"

namespace tevra::tools::report {
namespace {

/** Nothing may be loaded, whatever a stream smuggles into the page. */
constexpr const char* kPolicy =
    "default-src 'none'; style-src 'unsafe-inline'; script-src 'unsafe-inline'; img-src data:";

void head(const std::string& title, Markup& markup) {
  const auto element = markup.open("head");
  markup.raw("<meta charset=\"utf-8\">\n");
  markup.mark("meta", {{"http-equiv", "Content-Security-Policy"}, {"content", kPolicy}});
  markup.mark("meta", {{"name", "viewport"}, {"content", "width=device-width, initial-scale=1"}});
  markup.mark("meta", {{"name", "color-scheme"}, {"content", "light dark"}});
  markup.mark("link", {{"rel", "icon"}, {"href", "data:,"}});
  markup.leaf("title", {}, title);
  markup.raw("<style>\n");
  markup.raw(kStyleSheet);
  markup.raw("</style>\n");
}

}  // namespace

std::string reportPage(const Report& report) {
  const std::string title = titleOf(report);
  Markup markup;
  markup.raw("<!DOCTYPE html>\n");
  {
    const auto page = markup.open("html", {{"lang", "en"}});
    head(title, markup);
    const auto body = markup.open("body");
    {
      const auto main = markup.open("main");
      summarySection(report, title, markup);
      multiplexSection(report, markup);
      checksSection(report, markup);
      tablesSection(report, markup);
      scheduleSection(report, markup);
      markup.leaf("footer", {}, "tornelctl " TORNEL_VERSION " report");
    }
    markup.leaf("div", {{"id", "tip"}, {"role", "tooltip"}, {"hidden", ""}}, "");
    markup.raw("<script>\n");
    markup.raw(kScript);
    markup.raw("</script>\n");
  }
  return markup.take();
}

}  // namespace tevra::tools::report
