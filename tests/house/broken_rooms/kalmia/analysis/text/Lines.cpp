#include "kalmia/analysis/text/Words.h"
