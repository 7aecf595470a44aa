#include "qltkit_c_api/Handles.h"

#include <qltkit/Error.h>

#include <utility>

namespace
{

using qltkit::Guarded;
using qltkit::Required;

qltkit::CaptureWriter& Writer(const qltkit_CaptureWriter* writer)
{
    return *Required(writer, "the writer is null").writer;
}

std::int64_t TimeOf(std::int64_t hostTimeNs)
{
    return hostTimeNs == QLTKIT_NOW ? qlt::Clock::System().NowNs() : hostTimeNs;
}

} // namespace

qltkit_Result qltkit_CaptureWriter_Open(const char* file, const char* const* metadata,
                                        qltkit_CaptureWriter** writer)
{
    return Guarded(
        [&]
        {
            auto& result = Required(writer, "the place for the writer is null");
            qltkit::CaptureOptions options;
            for (; metadata != nullptr && metadata[0] != nullptr; metadata += 2)
            {
                options.metadata[metadata[0]] = &Required(metadata[1], "a key has no value");
            }
            result = new qltkit_CaptureWriter{
                std::make_shared<qltkit::CaptureWriter>(qltkit::PathOf(file), options)};
        });
}

qltkit_Result qltkit_CaptureWriter_AddReport(qltkit_CaptureWriter* writer, const uint8_t* report,
                                             int64_t hostTimeNs)
{
    return Guarded(
        [&]
        { Writer(writer).AddReport(&Required(report, "the report is null"), TimeOf(hostTimeNs)); });
}

qltkit_Result qltkit_CaptureWriter_AddEvent(qltkit_CaptureWriter* writer, const char* name,
                                            const char* detail, int64_t hostTimeNs)
{
    return Guarded(
        [&]
        {
            Writer(writer).AddEvent(&Required(name, "the name of the event is null"),
                                    detail != nullptr ? detail : "", TimeOf(hostTimeNs));
        });
}

qltkit_Result qltkit_CaptureWriter_AddText(qltkit_CaptureWriter* writer, int32_t level,
                                           const char* text, int64_t hostTimeNs)
{
    return Guarded(
        [&]
        {
            qltkit::Require(level >= 0 && level <= 5, "the level is not in 0 .. 5");
            Writer(writer).AddText(static_cast<qltkit::CaptureLevel>(level),
                                   &Required(text, "the text is null"), TimeOf(hostTimeNs));
        });
}

qltkit_Result qltkit_CaptureWriter_AddFrame(qltkit_CaptureWriter* writer, const qltkit_Frame* frame,
                                            int64_t hostTimeNs)
{
    return Guarded(
        [&]
        {
            const qltkit_Frame& given = Required(frame, "the frame is null");
            const auto* pixels = reinterpret_cast<const char*>(
                &Required(given.pixels, "the pixels of the frame are null"));
            Writer(writer).AddFrame({given.width,
                                     given.height,
                                     given.step,
                                     &Required(given.encoding, "the encoding of the frame is null"),
                                     {pixels, given.size}},
                                    TimeOf(hostTimeNs));
        });
}

qltkit_Result qltkit_CaptureWriter_Status(const qltkit_CaptureWriter* writer,
                                          qltkit_CaptureStatus* status)
{
    return Guarded(
        [&]
        {
            const qltkit::CaptureWriter& asked = Writer(writer);
            Required(status, "the place for the status is null") = {
                asked.Reports(), asked.WrittenReports(), asked.DroppedReports(),
                asked.DroppedOthers()};
        });
}

qltkit_Result qltkit_CaptureWriter_Flush(qltkit_CaptureWriter* writer)
{
    return Guarded(
        [&]
        {
            if (!Writer(writer).Flush())
            {
                throw qltkit::Error("the system does not take the capture: " +
                                    Writer(writer).Failure());
            }
        });
}

qltkit_Result qltkit_CaptureWriter_Close(qltkit_CaptureWriter* writer)
{
    return Guarded([&] { Writer(writer).Close(); });
}

void qltkit_CaptureWriter_Delete(qltkit_CaptureWriter* writer) { delete writer; }
