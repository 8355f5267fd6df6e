#include "kalmia/pcapls/Model.h"

constexpr float kHole = -99.0F;
