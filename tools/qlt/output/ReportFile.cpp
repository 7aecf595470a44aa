#include "output/ReportFile.h"

#include <qltkit/Headset/CaptureRecorder.h>
#include <qltkit/Headset/ReportRecorder.h>

#include <filesystem>

namespace
{

std::string Summary(const std::string& path, std::uint64_t reports)
{
    return path + ": " + std::to_string(reports) + " reports";
}

class PlainFile final : public ReportFile
{
public:
    explicit PlainFile(const std::string& path)
        : mPath(path)
        , mRecorder(path)
    {
    }

    qltkit::ReportSink& Sink() override { return mRecorder; }
    std::uint64_t Reports() const override { return mRecorder.Reports(); }
    bool HasFailed() const override { return mRecorder.Failed(); }

    std::string Close() override
    {
        mRecorder.Close();
        return Summary(mPath, Reports());
    }

private:
    const std::string mPath;
    qltkit::ReportRecorder mRecorder;
};

class CaptureFile final : public ReportFile
{
public:
    CaptureFile(const std::string& path, const qltkit::CaptureOptions& options)
        : mPath(path)
        , mWriter(path, options)
        , mRecorder(mWriter)
    {
    }

    ~CaptureFile() override { mWriter.Discard(); }

    qltkit::ReportSink& Sink() override { return mRecorder; }
    std::uint64_t Reports() const override { return mWriter.Reports(); }
    bool HasFailed() const override { return false; }
    std::string Trouble() const override { return mWriter.Failure(); }
    void EndReads() override { mRecorder.Close(); }
    qltkit::CaptureWriter* Capture() override { return &mWriter; }

    std::string Close() override
    {
        mWriter.Close();
        std::string text = Summary(mPath, Reports());
        if (mWriter.DroppedReports() + mWriter.DroppedOthers() != 0)
        {
            text += "; dropped for lack of room: " + std::to_string(mWriter.DroppedReports()) +
                    " reports, " + std::to_string(mWriter.DroppedOthers()) +
                    " events, texts and frames";
        }
        return text;
    }

private:
    const std::string mPath;
    qltkit::CaptureWriter mWriter;
    qltkit::CaptureRecorder mRecorder;
};

} // namespace

bool IsCaptureName(const std::string& path)
{
    return std::filesystem::path(path).extension() == ".mcap";
}

std::string RefuseReportFile(const std::string& path)
{
    return IsCaptureName(path) || std::filesystem::path(path).extension() == ".bin"
               ? ""
               : '"' + path + "\" ends neither in .mcap, for a capture, nor in .bin, for nothing " +
                     "but reports";
}

std::unique_ptr<ReportFile> CreateReportFile(const std::string& path,
                                             const qltkit::CaptureOptions& options)
{
    if (IsCaptureName(path))
    {
        return std::make_unique<CaptureFile>(path, options);
    }
    return std::make_unique<PlainFile>(path);
}
