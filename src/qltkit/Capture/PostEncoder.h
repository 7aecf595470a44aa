#pragma once

#include <qltkit/Capture/McapWriter.h>

#include "Capture/PostList.h"

namespace qltkit
{

/// Turns events, texts and frames into JSON messages, which viewers know. A channel is added with
/// its first message. One thread at a time may use an object.
class PostEncoder
{
public:
    /// `mcap` must outlive this object.
    explicit PostEncoder(McapWriter& mcap)
        : mMcap(mcap)
    {
    }

    /// Writes a message. `pixels` are the pixels of a frame.
    void Write(const Post& post, std::string_view pixels, std::uint64_t logTimeNs);

private:
    void WriteJson(std::uint16_t& channel, const McapChannel& description, std::uint64_t logTimeNs);

    McapWriter& mMcap;
    std::uint16_t mEventChannel = 0; // 0 before the first message on the channel
    std::uint16_t mLogChannel = 0;
    std::uint16_t mImageChannel = 0;
    std::string mJson;
};

} // namespace qltkit
