// Captures for tests, and their contents.
#pragma once

#include <qltkit/Capture/CaptureReader.h>
#include <qltkit/Capture/CaptureWriter.h>
#include <qltkit/Headset/SoftwareHeadset.h>

#include "fakes/ManualClock.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

/// Moves the process to the build tree before its tests start, so that their files never come into
/// the folder in which somebody runs the program.
inline const bool IS_IN_BUILD_TREE = []
{
    std::filesystem::current_path(QLT_TEST_FOLDER);
    return true;
}();

inline std::string ReadBytes(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void WriteBytes(const std::filesystem::path& path, std::string_view bytes)
{
    std::ofstream(path, std::ios::binary)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

/// The contents that a reader gives, with copies of everything that it lends.
struct Contents
{
    explicit Contents(const std::filesystem::path& path)
    {
        qltkit::CaptureReader reader(path);
        qltkit::CaptureItem item;
        while (reader.Next(item))
        {
            data.emplace_back(item.data);
            pixels.emplace_back(item.frame.pixels);
            items.push_back(item);
            reports += item.kind == qltkit::CaptureItem::Kind::Report ? 1 : 0;
        }
        EXPECT_FALSE(reader.Next(item));
        EXPECT_EQ(reader.Position(), reader.Size());
        metadata = reader.Metadata();
        problems = reader.Problems();
        EXPECT_EQ(problems.size(), std::min<std::size_t>(100, reader.ProblemCount()));
    }

    std::string Problem() const { return problems.empty() ? "" : problems.front().text; }

    std::vector<qltkit::CaptureItem> items; // the views point to memory that the reader reuses
    std::vector<std::string> data;
    std::vector<std::string> pixels;
    std::size_t reports = 0;
    std::map<std::string, std::map<std::string, std::string>> metadata;
    std::vector<qltkit::CaptureProblem> problems;
};

/// Writes a capture with an event and then `reports` reports, one per millisecond, in chunks of
/// `chunk` reports.
inline void WriteCapture(const std::filesystem::path& path, std::size_t reports, std::size_t chunk)
{
    ManualClock clock;
    qltkit::CaptureOptions options;
    options.clock = &clock;
    options.wallTimeNs = 1700000000000000000;
    qltkit::CaptureWriter writer(path, options);
    qltkit::SoftwareHeadset headset(1, false);
    writer.AddEvent("connected");
    for (std::size_t i = 0; i < reports; ++i)
    {
        clock.nowNs += 1000000;
        writer.AddReport(headset.Next().report.data());
        if ((i + 1) % chunk == 0)
        {
            EXPECT_TRUE(writer.Flush());
        }
    }
    writer.Close();
    EXPECT_EQ(writer.WrittenReports(), reports);
}
