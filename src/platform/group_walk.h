#pragma once
#include <cstddef>
#include <cstdint>
#include <functional>

namespace corvan {

// The fixed group record IsAdmin copies a token's groups into: a count and
// room for 101 pairs.
inline constexpr size_t kGroupRoom = 101;

// IsAdmin's walk over the group record, apart from the token it came from:
// `isAdministrators(index)` says whether group `index` is the built-in
// Administrators group. The walk goes one pair past the count, by design;
// that pair holds no group. A token with more groups than the record has
// room for fails with 9 "Subscript out of range" instead of being read past
// the record's end, unless an Administrators group comes first.
bool AnyGroupIsAdministrators(uint32_t groupCount, const std::function<bool(size_t index)>& isAdministrators);

}  // namespace corvan
