/// @file NumberRules.h
/// Which numbers a population can hold.
#pragma once

#include <cstdint>
#include <string>

namespace velmar {

/// Instance numbers end here, at 2^30 - 1. They begin at 1.
constexpr std::int64_t kGreatestInstance = 1073741823;

/// What becomes of a real number that does not fit 64 bits: "infinite", or "0" though it is not zero; empty where it fits. `real`
/// is written as ISO 10303-21 has it.
std::string BeyondRange(const std::string& real);

}  // namespace velmar
