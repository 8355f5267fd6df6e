#include <cmath>

#include "kalmia/signal/NCTransform.h"

// A transformation as a formula that somebody can read.

namespace {

/// The text of the linear part: "2*x - 3", "x", "0 + 1".
CString LinearText(double a, double b) {
  CString text;
  if (a == 1)
    text = "x";
  else if (a == 0)
    text = "0";
  else
    text.Format("%g*x", a);
  const char* linear = text;
  if (b > 0) text.Format("%s + %g", linear, b);
  if (b < 0) text.Format("%s - %g", linear, std::abs(b));
  return text;
}

CString Wrapped(const char* before, const char* text, const char* after) {
  CString wrapped;
  wrapped.Format("%s%s%s", before, text, after);
  return wrapped;
}

/// In HTML a fraction, as a table of two rows.
CString LogitText(double a, double b, bool html) {
  CString text;
  if (html)
    text.Format(
        "<table style='display: inline; margin-top: 0pt; margin-bottom: 0pt; text-align: center; "
        "vertical-align: middle;' cellpadding='0' cellspacing='0'>"
        "<tr><td rowspan='2' nowrap='nowrap'>log<sub>10</sub></td><td nowrap='nowrap'>%g - x</td></tr>"
        "<tr><td style='border-top: 1px solid black;' nowrap='nowrap'>x - %g</td></tr></table>",
        b, a);
  else
    text.Format("10log((%g - x)/(x - %g))", b, a);
  return text;
}

CString PowerText(double a, double b, double c, bool html) {
  const CString linear = LinearText(a, b);
  if (c == 0) return "1";
  if (c == 1) return linear;
  const bool bare = html && a == 1 && b == 0;
  const CString base = bare ? linear : Wrapped("(", linear, ")");
  CString text;
  text.Format(html ? "%s<sup>%g</sup>" : "%s^%g", static_cast<const char*>(base), c);
  return text;
}

}  // namespace

CString TransformStruct::ToString(bool html) const {
  const CString linear = LinearText(A(), B());
  switch (type_) {
    case TransformE::TransformLinear: return linear;
    case TransformE::TransformLog: return Wrapped(html ? "log<sub>10</sub>(" : "10log(", linear, ")");
    case TransformE::TransformNegLog: return Wrapped(html ? "-log<sub>10</sub>(" : "-10log(", linear, ")");
    case TransformE::TransformLogit: return LogitText(A(), B(), html);
    case TransformE::TransformExp: return html ? Wrapped("e<sup>", linear, "</sup>") : Wrapped("e^(", linear, ")");
    case TransformE::TransformPower: return PowerText(A(), B(), C(), html);
    default: return "";
  }
}
