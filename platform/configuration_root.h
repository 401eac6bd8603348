#pragma once

#include <string>

namespace tevra {

/**
 * Directory that holds every file of the task, without a trailing slash: "/etc/tevra/conf" on a
 * device. Fixed for the life of the process.
 */
const std::string& configurationRoot();

}  // namespace tevra
