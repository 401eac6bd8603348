#pragma once

#include <string>

namespace tevra {

/**
 * Directory that holds every file of the task, without a trailing slash: "/etc/tevra/conf" on a
 * device. Fixed for the life of the process, unless that names another.
 */
const std::string& configurationRoot();

/**
 * Names another directory, for what is made from now on: for a program that has a task of its own
 * beside that of the machine. No other thread may ask for it meanwhile.
 */
void setConfigurationRoot(const std::string& directory);

}  // namespace tevra
