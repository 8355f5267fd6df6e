#include "kalmia/kernels/simd/Lanes.h"
