// What the runtime needs of a graphics API: images that the program draws into, and the pass that
// puts its layers through the lenses onto the panel. There is one implementation for each API.
#pragma once

#include "Optics/Reprojection.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace qltxr
{

/// What is to be drawn: layers in order, over black.
struct Composition
{
    const Frame* frame = nullptr; // null or empty for black
    Viewer scanStart;             // when the panel shows its first row
    Viewer scanEnd;               // and its last
};

struct Picture
{
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<std::uint8_t> rgb; // from the upper left corner, as the panel shows it
};

/// What the user has done to the window.
struct WindowEvents
{
    bool closed = false;
    bool recentre = false;
};

/// Where the composed picture goes.
struct OutputSettings
{
    bool window = true;   // a desktop window when the headset's display is not there
    bool picture = false; // compose although nobody sees it
    std::uint32_t width = 1280;
    std::uint32_t height = 720;
};

class Graphics
{
public:
    virtual ~Graphics() = default;

    /// Any thread, before Enter, too: the formats of images, the best first.
    virtual std::vector<std::int64_t> Formats() const = 0;

    /// Any thread: of the display that shows the picture; 0 when it does not say.
    virtual XrDuration RefreshPeriod() const = 0;

    /// Any thread: false when a composed picture would go nowhere.
    virtual bool HasOutput() const = 0;

    /// Any thread, for people: where the picture goes.
    virtual std::string DescribeOutput() const = 0;

    /// The compositor's thread, before and after everything that follows.
    virtual void Enter() = 0;
    virtual void Leave() = 0;

    /// XR_ERROR_OUT_OF_MEMORY or XR_ERROR_FEATURE_UNSUPPORTED when the API refuses.
    virtual std::shared_ptr<ImageSet> CreateImages(const XrSwapchainCreateInfo& info,
                                                   std::uint32_t count) = 0;

    /// True when the program's drawing of all images of the frame has come to its end.
    virtual bool IsComplete(const Frame& frame) = 0;

    /// Draws and returns when no image of the frame is being read any more.
    virtual void Draw(const Composition& composition) = 0;

    /// Shows what was drawn. The time when the display took it; 0 when it does not say.
    virtual XrTime Present() = 0;

    virtual WindowEvents PollWindow() = 0;
    virtual Picture ReadPicture() = 0;

    /// The objects of the API that exist, for tests.
    virtual std::size_t CountObjects() const = 0;
};

} // namespace qltxr
