#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tevra::tools::report {

/**
 * `utf8` fit for an element or a quoted attribute of HTML and SVG. What is not valid UTF-8, control
 * characters, noncharacters and the characters that reorder text (Unicode bidirectional embeddings,
 * overrides and isolates) become U+FFFD; line breaks stay.
 */
[[nodiscard]] std::string escaped(std::string_view utf8);

/** Name and value; values are escaped when they are written. */
using Attributes = std::vector<std::pair<std::string_view, std::string>>;

/** Writes the elements of a page; what is opened is closed by the one who opened it. */
class Markup {
 public:
  /** Open while it lives. */
  class Element {
   public:
    /** For open(), which writes what begins the element. `markup` must outlive it. */
    Element(Markup& markup, std::string_view name) : markup_(markup), name_(name) {}
    ~Element() { markup_.end(name_); }
    Element(const Element&) = delete;
    Element& operator=(const Element&) = delete;

   private:
    Markup& markup_;
    std::string name_;
  };

  /**
   * Begins an element, which ends with the returned object; those opened in it must go first. Names
   * of elements and attributes, here and below, are written as they are.
   */
  [[nodiscard]] Element open(std::string_view name, const Attributes& attributes = {});
  /** A part of the page that scrolls sideways where the page is too narrow for it. */
  [[nodiscard]] Element scroller(const std::string& label);
  /** An element with nothing but text, escaped. */
  void leaf(std::string_view name, const Attributes& attributes, std::string_view text);
  /** An element without content: void in HTML, empty in SVG. */
  void mark(std::string_view name, const Attributes& attributes);
  /** Within the element that is open, escaped. */
  void text(std::string_view utf8);
  /** As it is: for this program's own text alone, never the stream's. */
  void raw(std::string_view trusted) { out_ += trusted; }

  /** All that was written. Comes last, when every element has ended: nothing can follow. */
  [[nodiscard]] std::string take() { return std::move(out_); }

 private:
  void begin(std::string_view name, const Attributes& attributes);
  void end(std::string_view name);

  std::string out_;
};

}  // namespace tevra::tools::report
