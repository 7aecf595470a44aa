// Reads the items of a capture for commands that need all of them.
#pragma once

#include <qltkit/Capture/CaptureReader.h>
#include <qltkit/Capture/Recording.h>

#include "output/Progress.h"

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

/// Gives the items of a capture one after another and shows the progress. For a file that contains
/// only reports, the items are these reports with the times of the headset's clock.
class CaptureInput
{
public:
    using Metadata = std::map<std::string, std::map<std::string, std::string>>;

    /// Throws std::runtime_error with one sentence when the file cannot be read.
    explicit CaptureInput(const std::string& path);

    /// Takes the items from `recording`, which must outlive this object, unless the file is a
    /// capture.
    CaptureInput(const std::string& path, const qltkit::Recording& recording);

    ~CaptureInput();

    /// Reads the next item. Its views are valid until the next call. Returns false at the end.
    bool Next(qltkit::CaptureItem& item);

    /// The metadata of the capture that has been read so far.
    const Metadata& GetMetadata() const;

    /// The faults of the file so far, at most a hundred of them.
    const std::vector<qltkit::CaptureProblem>& Problems() const;

private:
    Progress mProgress;
    std::unique_ptr<qltkit::CaptureReader> mReader; // the reader of a capture
    std::unique_ptr<const qltkit::Recording> mOwn;
    const qltkit::Recording* mRecording = nullptr; // the recording of another file
    std::size_t mNext = 0;
    Metadata mNone;
};
