#pragma once

/// Marks what the shared library shows: every class and function that a public header declares. All else is hidden in
/// it.
#define KALMIA_EXPORT __attribute__((visibility("default")))
