// The functions of swapchains.
#include "Api/Functions.h"
#include "Api/Runtime.h"
#include "State/Structures.h"

#include <algorithm>

namespace qltxr
{

namespace
{

// One hour, because a wait without a limit is not possible.
constexpr XrDuration LONGEST_WAIT = 3600000000000;

const std::vector<std::int64_t>& FormatsOf(const Session& session)
{
    static const std::vector<std::int64_t> NONE;
    return session.compositor == nullptr ? NONE : session.compositor->Formats();
}

} // namespace

XrResult XRAPI_CALL EnumerateSwapchainFormats(XrSession handle, std::uint32_t capacity,
                                              std::uint32_t* count, std::int64_t* formats)
{
    const Lock lock = LockRuntime();
    const std::vector<std::int64_t>& all = FormatsOf(Get<Session>(handle));
    return AnswerValues(capacity, count, formats, all.data(), all.size());
}

XrResult XRAPI_CALL CreateSwapchain(XrSession handle, const XrSwapchainCreateInfo* info,
                                    XrSwapchain* swapchain)
{
    Lock lock = LockRuntime();
    const Session& session = Get<Session>(handle);
    RequireType(info, XR_TYPE_SWAPCHAIN_CREATE_INFO);
    RequirePointer(swapchain);
    RequireCreateInfo(*info, FormatsOf(session));
    const std::shared_ptr<Compositor> compositor = session.compositor;
    lock.unlock(); // the compositor's thread makes the images
    std::shared_ptr<ImageSet> images = compositor->CreateImages(*info, ImageCount(*info));
    lock.lock();
    Session& owner = Get<Session>(handle);
    *swapchain =
        owner.swapchains.emplace_back(TheRuntime().handles, *info, std::move(images), handle)
            .handle.Get();
    return XR_SUCCESS;
}

XrResult XRAPI_CALL DestroySwapchain(XrSwapchain handle)
{
    const Lock lock = LockRuntime();
    const Swapchain& swapchain = Get<Swapchain>(handle);
    Get<Session>(swapchain.session)
        .swapchains.remove_if([&swapchain](const Swapchain& one) { return &one == &swapchain; });
    return XR_SUCCESS;
}

XrResult XRAPI_CALL EnumerateSwapchainImages(XrSwapchain handle, std::uint32_t capacity,
                                             std::uint32_t* count,
                                             XrSwapchainImageBaseHeader* images)
{
    const Lock lock = LockRuntime();
    const Swapchain& swapchain = Get<Swapchain>(handle);
    if (AnswerCount(capacity, count, images, swapchain.images.Count()))
    {
        swapchain.imageSet->Enumerate(images);
    }
    return XR_SUCCESS;
}

XrResult XRAPI_CALL AcquireSwapchainImage(XrSwapchain handle,
                                          const XrSwapchainImageAcquireInfo* info,
                                          std::uint32_t* index)
{
    const Lock lock = LockRuntime();
    Swapchain& swapchain = Get<Swapchain>(handle);
    RequireTypeIfAny(info, XR_TYPE_SWAPCHAIN_IMAGE_ACQUIRE_INFO);
    RequirePointer(index);
    *index = swapchain.images.Acquire();
    return XR_SUCCESS;
}

XrResult XRAPI_CALL WaitSwapchainImage(XrSwapchain handle, const XrSwapchainImageWaitInfo* info)
{
    Lock lock = LockRuntime();
    const Swapchain& before = Get<Swapchain>(handle);
    RequireType(info, XR_TYPE_SWAPCHAIN_IMAGE_WAIT_INFO);
    const std::uint32_t image = before.images.NextToWait();
    const std::shared_ptr<Compositor> compositor = Get<Session>(before.session).compositor;
    const std::shared_ptr<ImageSet> images = before.imageSet;
    const XrDuration timeout = std::clamp<XrDuration>(info->timeout, 0, LONGEST_WAIT);
    lock.unlock();
    const bool isFree = compositor->WaitUntilUnread(*images, image, Now() + timeout);
    lock.lock();
    Swapchain& after = Get<Swapchain>(handle);
    // Another thread may have waited for this image.
    Require(after.images.NextToWait() == image, XR_ERROR_CALL_ORDER_INVALID);
    if (!isFree)
    {
        return XR_TIMEOUT_EXPIRED;
    }
    after.images.Waited();
    return XR_SUCCESS;
}

XrResult XRAPI_CALL ReleaseSwapchainImage(XrSwapchain handle,
                                          const XrSwapchainImageReleaseInfo* info)
{
    Lock lock = LockRuntime();
    Swapchain& swapchain = Get<Swapchain>(handle);
    RequireTypeIfAny(info, XR_TYPE_SWAPCHAIN_IMAGE_RELEASE_INFO);
    const std::uint32_t image = swapchain.images.NextToRelease();
    const std::shared_ptr<ImageSet> images = swapchain.imageSet;
    swapchain.images.Release();
    lock.unlock(); // Released calls the graphics driver
    images->Released(image);
    return XR_SUCCESS;
}

} // namespace qltxr
