#pragma once

/// A yardstick for arithmetic: so many products and sums of doubles by one thread, each on numbers in registers.
constexpr double kOperations = 2.0 * 64 * 1000000;
void DoOperations();
