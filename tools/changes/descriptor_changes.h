#pragma once

#include "tools/changes/change.h"

namespace tevra::tools {

/**
 * How a loop of descriptors differs from the one before it: appends to `changes` what was added,
 * removed or changed, all of it `subject`'s. Of a descriptor whose values differ, but not which
 * values it has, each that differs is a change of its own.
 */
void appendDescriptorChanges(Changes& changes, const Subject& subject, const DescriptorLoop& from,
                             const DescriptorLoop& to);

}  // namespace tevra::tools
