#pragma once

#include "app/Analysis.h"
#include "kalmia/analysis/report/HtmlReport.h"

namespace kalmia::app {

/// What pages are drawn with, from share/kalmia/report beside the folder that the running program lies in: so it stands
/// in an installation and in a build folder, wherever they are moved. Throws BadFile that says what is missing.
ReportAssets ReadReportAssets();

}  // namespace kalmia::app
