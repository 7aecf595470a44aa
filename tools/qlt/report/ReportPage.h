// The page of "qlt compare --html".
#pragma once

#include <qltkit/Tracking/Comparison.h>

#include <cstddef>
#include <string>

struct ReportNames
{
    std::string capture;
    std::string truth; // empty: none
};

/// One HTML file, which needs nothing from anywhere else.
std::string MakeReportPage(const qltkit::Comparison& comparison, const ReportNames& names,
                           std::size_t reports);
