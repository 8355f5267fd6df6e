#include "kalmia/pcapls/internal/ConvergenceBar.h"

#include <cmath>

#include "kalmia/support/CString.h"
#include "kalmia/support/LanguageString.h"

namespace kalmia {

double MeasureOfChange(double change) { return (std::log10(change) + 10.0) * 10.0; }

void ConvergenceBar::Open(unsigned title, int component, float measure) {
  CString text;
  text.Format(LanguageString::Get(title), component);
  own_ = std::make_unique<NCProgress>(text, -measure, 0.0F, false, false, true, nullptr);
  bar_ = own_.get();
}

}  // namespace kalmia
