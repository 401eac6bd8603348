#include "tools/fields/fields_equal.h"

#include <algorithm>

namespace tevra::tools {
namespace {

/** Compares values of the same type. */
struct SameValue {
  bool operator()(const Number& a, const Number& b) const { return a.value == b.value; }
  bool operator()(const Flag& a, const Flag& b) const { return a.value == b.value; }
  bool operator()(const Text& a, const Text& b) const { return a.utf8 == b.utf8; }
  bool operator()(const Bytes& a, const Bytes& b) const { return a.data == b.data; }
  bool operator()(const List& a, const List& b) const {
    return std::equal(a.entries.begin(), a.entries.end(), b.entries.begin(), b.entries.end(),
                      [](const Fields& x, const Fields& y) { return isSame(x, y); });
  }
  bool operator()(const DescriptorLoop& a, const DescriptorLoop& b) const {
    return std::equal(
        a.entries.begin(), a.entries.end(), b.entries.begin(), b.entries.end(),
        [](const DescriptorFields& x, const DescriptorFields& y) { return isSame(x, y); });
  }
  template <class A, class B>
  bool operator()(const A& /*a*/, const B& /*b*/) const {
    return false;
  }
};

}  // namespace

bool isSame(const Field& a, const Field& b) {
  return a.name == b.name && std::visit(SameValue(), a.value, b.value);
}

bool isSame(const Fields& a, const Fields& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](const Field& x, const Field& y) { return isSame(x, y); });
}

bool isSame(const DescriptorFields& a, const DescriptorFields& b) {
  return a.tag == b.tag && a.payload == b.payload;
}

}  // namespace tevra::tools
