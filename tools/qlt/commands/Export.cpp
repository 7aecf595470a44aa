#include "commands/Commands.h"

#include <qltkit/Capture/JsonCaptureWriter.h>

#include "commands/CommandLine.h"
#include "output/CaptureTables.h"
#include "output/OutputFile.h"
#include "source/CaptureInput.h"
#include "source/RecordingInput.h"
#include "source/Replay.h"

#include <cstdio>
#include <memory>
#include <optional>
#include <stdexcept>

namespace
{

struct Options
{
    std::string capture;
    std::string csv;  // a folder; empty: no tables
    std::string mcap; // empty: no file
    std::string filter = "core";
};

/// The files that an export writes.
class Export
{
public:
    explicit Export(const Options& options)
        : mMcap(options.mcap)
    {
        if (!options.csv.empty())
        {
            mTables.emplace(options.csv);
        }
        if (!options.mcap.empty())
        {
            mJson.emplace([this](std::string_view bytes) { mMcap.Write(std::string(bytes)); });
        }
    }

    void Run(CaptureInput& input, const std::vector<qlt::Quaternion>& orientations)
    {
        std::size_t reports = 0;
        for (qltkit::CaptureItem item; input.Next(item);)
        {
            const bool isReport = item.kind == qltkit::CaptureItem::Kind::Report;
            const qlt::Quaternion q =
                isReport ? orientations.at(reports++) : qlt::Quaternion::Identity;
            const bool isKnown = item.kind != qltkit::CaptureItem::Kind::Other;
            (isKnown ? exported : foreign) += 1;
            if (mTables)
            {
                mTables->Add(item, q);
            }
            if (mJson)
            {
                mJson->Add(item, q);
            }
        }
        Close(input);
    }

    std::size_t exported = 0;
    std::size_t foreign = 0; // items of channels that this program does not know

private:
    void Close(const CaptureInput& input)
    {
        if (mTables)
        {
            mTables->Close();
        }
        if (mJson)
        {
            for (const auto& [name, entries] : input.GetMetadata())
            {
                mJson->AddMetadata(name, entries);
            }
            mJson->Close();
        }
        mMcap.Close();
    }

    OutputFile mMcap;
    std::optional<CaptureTables> mTables;
    std::optional<qltkit::JsonCaptureWriter> mJson;
};

int Run(const Options& options)
{
    Export files(options);
    bool whole = true;
    const qltkit::Recording recording = LoadInput(options.capture, whole);
    const Replayed replayed =
        options.filter == "kit" ? ReplayKit(recording) : ReplayCore(recording);
    {
        CaptureInput input(options.capture, recording);
        files.Run(input, replayed.orientations);
    }
    std::printf("%s: %zu messages exported\n", options.capture.c_str(), files.exported);
    if (files.foreign != 0)
    {
        std::fprintf(stderr, "qlt: %s: %zu messages of unknown channels are left out\n",
                     options.capture.c_str(), files.foreign);
    }
    return whole ? 0 : 1;
}

} // namespace

CommandBody AddExport(CommandLine line)
{
    auto options = std::make_shared<Options>();
    line.Describe("Write a capture as tables or as JSON messages for viewers");
    line.File("capture", options->capture,
              "The file: a capture (.mcap), a recording, or a headset script (.json)")
        .Required();
    line.File("--csv", options->csv, "Write one table for each channel into this folder");
    line.File("--mcap", options->mcap,
              "Write an MCAP file of JSON messages, whose head turns in a 3D panel of a viewer");
    line.Filter(options->filter);
    line.AfterParsing(
        [options]
        {
            Require(!options->csv.empty() || !options->mcap.empty(),
                    "one of --csv and --mcap is missing");
            RequireDistinct({options->capture}, {options->csv, options->mcap});
        });
    return [options] { return Run(*options); };
}
