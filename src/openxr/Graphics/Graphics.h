// The operations of a graphics API that the runtime needs. It makes the images into which the
// program draws, and it draws the program's layers through the lenses onto the panel. Each API has
// one implementation.
#pragma once

#include "Optics/Reprojection.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace qltxr
{

/// The layers to draw, in their order, on a black background.
struct Composition
{
    const Frame* frame = nullptr; // null or an empty frame gives black
    Viewer scanStart;             // the viewer when the panel shows its first row
    Viewer scanEnd;               // the viewer when the panel shows its last row
};

struct Picture
{
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<std::uint8_t> rgb; // the pixels as the panel shows them, from the upper left corner
};

/// The user's actions on the window.
struct WindowEvents
{
    bool closed = false;
    bool recentre = false;
};

/// The outputs of the composed picture.
struct OutputSettings
{
    bool window = true;   // opens a desktop window when the headset's display is missing
    bool picture = false; // composes pictures even when no output shows them
    std::uint32_t width = 1280;
    std::uint32_t height = 720;
};

class Graphics
{
public:
    virtual ~Graphics() = default;

    /// The formats of images, the best first. Any thread, also before Enter.
    virtual std::vector<std::int64_t> Formats() const = 0;

    /// The refresh period of the display that shows the picture. 0 when the display does not report
    /// it. Any thread.
    virtual XrDuration RefreshPeriod() const = 0;

    /// Returns the time that the headset's panel needs from its first row to its last. Returns 0 on
    /// another display. Any thread.
    virtual XrDuration ScanTime() const = 0;

    /// Returns false when no output takes a composed picture. Any thread.
    virtual bool HasOutput() const = 0;

    /// Describes the output to a person. Any thread.
    virtual std::string DescribeOutput() const = 0;

    /// The compositor's thread calls Enter before the operations below and Leave after them.
    virtual void Enter() = 0;
    virtual void Leave() = 0;

    /// Makes images. Throws XR_ERROR_OUT_OF_MEMORY or XR_ERROR_FEATURE_UNSUPPORTED when the API
    /// refuses.
    virtual std::shared_ptr<ImageSet> CreateImages(const XrSwapchainCreateInfo& info,
                                                   std::uint32_t count) = 0;

    /// Returns true when the program's drawing into all images of the frame is complete.
    virtual bool IsComplete(const Frame& frame) = 0;

    /// Draws, and returns when no image of the frame is read any more.
    virtual void Draw(const Composition& composition) = 0;

    /// Shows the drawn picture. Returns the time at which the display took it, or 0 when the
    /// display does not report it.
    virtual XrTime Present() = 0;

    virtual WindowEvents PollWindow() = 0;
    virtual Picture ReadPicture() = 0;

    /// The number of objects of the API that exist. The tests call it.
    virtual std::size_t CountObjects() const = 0;
};

} // namespace qltxr
