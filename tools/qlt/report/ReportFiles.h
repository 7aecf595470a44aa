// The parts of the page of "qlt compare --html" that are files of the source tree. The build
// generates a C++ source from them.
#pragma once

#include <string_view>

extern const std::string_view REPORT_HTML;
extern const std::string_view REPORT_CSS;
extern const std::string_view REPORT_JS;
extern const std::string_view UPLOT_JS;
extern const std::string_view UPLOT_CSS;
extern const std::string_view UPLOT_LICENSE;
