#include "kalmia/containers/internal/OldLayout.h"

#include "kalmia/support/VexStream.h"

bool kalmia::BeginOldLayout(std::istream& stream, short version) {
  CString dropped;
  return version == 1 || (version == 2 && ReadBinaryString(dropped, stream)) || version == 3;
}
