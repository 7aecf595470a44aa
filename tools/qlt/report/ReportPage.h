// Makes the page of "qlt compare --html".
#pragma once

#include <qltkit/Tracking/Comparison.h>

#include <cstddef>
#include <string>

struct ReportNames
{
    std::string capture;
    std::string truth; // empty: no truth
};

/// Returns one HTML file. It needs no other file and no network.
std::string MakeReportPage(const qltkit::Comparison& comparison, const ReportNames& names,
                           std::size_t reports);
