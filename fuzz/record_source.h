#pragma once

#include <vector>

#include "fuzz/byte_source.h"
#include "records/records.h"

/** Records with whatever content `source` decides. */
namespace tevra::fuzz {

/** Up to `maximum` of them; CA, language and codec descriptors are frequent, long ones occur. */
[[nodiscard]] std::vector<Descriptor> makeDescriptors(ByteSource& source, size_t maximum = 8);

[[nodiscard]] PAT makePat(ByteSource& source);
[[nodiscard]] PMT makePmt(ByteSource& source);
[[nodiscard]] SDT makeSdt(ByteSource& source);
[[nodiscard]] CAT makeCat(ByteSource& source);
[[nodiscard]] NIT makeNit(ByteSource& source);
[[nodiscard]] BAT makeBat(ByteSource& source);
[[nodiscard]] TOT makeTot(ByteSource& source);
[[nodiscard]] EITMap makeEits(ByteSource& source);
[[nodiscard]] LastNodeSettings makeLastNode(ByteSource& source);
[[nodiscard]] SrvOutputRequest makeRequest(ByteSource& source);

}  // namespace tevra::fuzz
