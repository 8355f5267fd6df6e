#include "kalmia/cluster/CommonColumnsError.h"

namespace DendroGram {

CommonColumnsError::CommonColumnsError(int first, int second, int common)
    : NCError(CString("Cluster analysis can not be performed on data where two rows have less than\nthe square root of "
                      "the number of columns common non-missing elements.")),
      firstRow(first),
      secondRow(second),
      commonColumns(common) {}

}  // namespace DendroGram
