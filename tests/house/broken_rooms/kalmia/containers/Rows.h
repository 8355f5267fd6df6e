#include "kalmia/kernels/simd/Lanes.h"

class Rows {
};
