#pragma once

/// Marks what the shared libraries show: every class and function that a public header declares. All else is hidden in
/// them.
#define KALMIA_EXPORT __attribute__((visibility("default")))
