#include "kalmia/containers/internal/Cells.h"
