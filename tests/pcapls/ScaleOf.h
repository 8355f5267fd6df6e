#pragma once

#include <initializer_list>

#include "kalmia/pcapls/NCScale.h"

/// A scaling of variables of these types, not fitted.
NCScale ScaleOf(std::initializer_list<NCScale::Scaling> types);
/// The same with one type for all.
NCScale ScaleOfAll(int variables, NCScale::Scaling type);
