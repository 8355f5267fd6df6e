#pragma once

namespace kalmia {

/// The sides in NCO2PLSDimensionalityException::Type.
constexpr int kXSide = 1;
constexpr int kYSide = 2;

}  // namespace kalmia
