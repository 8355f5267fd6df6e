#include "kalmia/analysis/text/Lines.h"
