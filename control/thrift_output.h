#pragma once

namespace tevra {

/**
 * Sends what Thrift's runtime would print on standard error to log_function at level 7: its callers
 * already log what matters. For the whole process; call before any other thread uses Thrift.
 */
void redirectThriftOutput();

}  // namespace tevra
