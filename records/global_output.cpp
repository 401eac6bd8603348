#include "records/global_output.h"

// Declared once more: the library has it up to 0.22, and a function of its class since 0.23.
namespace apache::thrift {
extern TOutput GlobalOutput;  // NOLINT(readability-redundant-declaration)
}

namespace tevra {
namespace {

template <class Output>
auto globalOutputOf(int /*preferred*/) -> decltype(Output::instance()) {
  return Output::instance();
}

template <class Output>
Output& globalOutputOf(...) {
  return apache::thrift::GlobalOutput;
}

}  // namespace

apache::thrift::TOutput& globalOutput() {
  return globalOutputOf<apache::thrift::TOutput>(0);
}

}  // namespace tevra
