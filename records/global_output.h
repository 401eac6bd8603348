#pragma once

#include <thrift/Thrift.h>

namespace tevra {

/** Where Thrift's runtime sends its own lines: standard error, until told otherwise. */
apache::thrift::TOutput& globalOutput();

}  // namespace tevra
