#include "UsbEmulator.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <linux/capability.h>
#include <linux/usbdevice_fs.h>
#include <stdexcept>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>
#include <utility>

namespace
{

using Lock = std::unique_lock<std::mutex>;

constexpr std::uint32_t CAPABILITIES = USBDEVFS_CAP_ZERO_PACKET | USBDEVFS_CAP_BULK_SCATTER_GATHER |
                                       USBDEVFS_CAP_NO_PACKET_SIZE_LIM |
                                       USBDEVFS_CAP_REAP_AFTER_DISCONNECT;

/// The descriptors: the device up to and from its identifiers on, one configuration, one interface,
/// endpoint 0x81 of 64 bytes and endpoint 0x82 of 512.
constexpr const char* DEVICE_HEAD = "12010002ffffff40";
constexpr const char* DEVICE_TAIL = "000100000001";
constexpr const char* CONFIGURATION = "09022000010100807d"
                                      "0904000002ff000000"
                                      "07058103400001"
                                      "07058202000200";

// Memory of the callers is read and written as the kernel does. Accesses of the program's own would
// be races for the thread sanitizer, which does not see the way of a request to here and back.
void Fetch(void* to, void* from, std::size_t bytes)
{
    const iovec local{to, bytes};
    const iovec theirs{from, bytes};
    process_vm_readv(getpid(), &local, 1, &theirs, 1, 0);
}

void Store(void* to, void* from, std::size_t bytes)
{
    const iovec local{from, bytes};
    const iovec theirs{to, bytes};
    process_vm_writev(getpid(), &local, 1, &theirs, 1, 0);
}

template <typename... Values>
std::string Format(const char* format, Values... values)
{
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), format, values...);
    return text.data();
}

std::string LittleEndian(std::uint16_t value)
{
    return Format("%02x%02x", value & 0xFFU, static_cast<unsigned>(value >> 8U));
}

/// As umockdev reads it.
std::string Describe(int number, std::uint16_t vendorId, std::uint16_t productId)
{
    const std::string node = Format("bus/usb/001/%03d", number);
    return Format("P: /devices/usb1/1-%d\n", number) + "N: " + node + "\nE: DEVNAME=/dev/" + node +
           "\nE: SUBSYSTEM=usb\nE: DRIVER=usb\nE: DEVTYPE=usb_device\nE: BUSNUM=001\n" +
           Format("E: DEVNUM=%03d\n", number) +
           "A: bConfigurationValue=1\\n\nA: busnum=1\\n\nA: speed=480\\n\n" +
           Format("A: devnum=%d\\n\n", number) + "H: descriptors=" + DEVICE_HEAD +
           LittleEndian(vendorId) + LittleEndian(productId) + DEVICE_TAIL + CONFIGURATION + "\n";
}

} // namespace

UsbEmulator::UsbEmulator()
    : mTestbed(umockdev_testbed_new())
    , mIoctls(umockdev_ioctl_base_new())
{
    g_signal_connect_after(mIoctls, "handle-ioctl", reinterpret_cast<GCallback>(OnIoctl), this);
    g_signal_connect_after(mIoctls, "client-vanished", reinterpret_cast<GCallback>(OnClosed), this);
}

UsbEmulator::~UsbEmulator()
{
    Unplug();
    g_object_unref(mTestbed);
    g_object_unref(mIoctls);
}

void UsbEmulator::Plug(std::uint16_t vendorId, std::uint16_t productId)
{
    // As the kernel does, a new number for each plug.
    const int number = ++mPlugs;
    const std::string node = Format("/dev/bus/usb/001/%03d", number);
    {
        const Lock lock(mMutex);
        mPlugged[node] = Format("/sys/devices/usb1/1-%d", number);
    }
    umockdev_testbed_attach_ioctl(mTestbed, node.c_str(), mIoctls, nullptr);
    const std::string description = Describe(number, vendorId, productId);
    if (umockdev_testbed_add_from_string(mTestbed, description.c_str(), nullptr) == FALSE)
    {
        throw std::runtime_error("umockdev does not accept " + description);
    }
}

void UsbEmulator::Unplug()
{
    // First the news, because umockdev ends the process when a listener leaves just then.
    for (const auto& [node, sysPath] : mPlugged)
    {
        umockdev_testbed_uevent(mTestbed, sysPath.c_str(), "remove");
    }
    std::map<std::string, std::string> plugged;
    {
        const Lock lock(mMutex);
        plugged.swap(mPlugged);
        mClaims.clear();
        mAnswers.clear();
        while (!mInFlight.empty())
        {
            End(mInFlight.begin(), -ESHUTDOWN, 0);
        }
    }
    for (const auto& [node, sysPath] : plugged)
    {
        umockdev_testbed_detach_ioctl(mTestbed, node.c_str(), nullptr);
        umockdev_testbed_remove_device(mTestbed, sysPath.c_str());
    }
}

void UsbEmulator::Push(std::uint8_t endPoint, std::vector<std::uint8_t> data, int status)
{
    const Lock lock(mMutex);
    mAnswers[endPoint].push_back({std::move(data), status});
    EndAnswered(endPoint);
}

void UsbEmulator::WaitForInFlight(std::uint8_t endPoint, std::size_t count)
{
    Lock lock(mMutex);
    mChanged.wait(lock, [&] { return CountInFlight(endPoint) == count; });
}

std::size_t UsbEmulator::InFlight(std::uint8_t endPoint)
{
    const Lock lock(mMutex);
    return CountInFlight(endPoint);
}

void UsbEmulator::LimitBytes(std::size_t bytes)
{
    const Lock lock(mMutex);
    mByteLimit = bytes;
}

void UsbEmulator::ClaimElsewhere()
{
    const Lock lock(mMutex);
    for (const auto& [node, sysPath] : mPlugged)
    {
        mClaims[node] = nullptr; // which is no client
    }
}

void UsbEmulator::ForbidOpening()
{
    gchar* root = umockdev_testbed_get_root_dir(mTestbed);
    for (const auto& [node, sysPath] : mPlugged)
    {
        chmod((root + node).c_str(), 0);
    }
    g_free(root);
    // Root passes over the mode of a file by virtue of a capability, which a thread may drop.
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> sets{};
    syscall(SYS_capget, &header, sets.data());
    sets[0].effective &= ~(1U << CAP_DAC_OVERRIDE);
    syscall(SYS_capset, &header, sets.data());
}

gboolean UsbEmulator::OnIoctl(UMockdevIoctlBase*, UMockdevIoctlClient* client, UsbEmulator* self)
{
    // The caller is this process, so that its pointers are good here.
    void* argument = nullptr;
    std::memcpy(&argument, umockdev_ioctl_client_get_arg(client)->data, sizeof argument);
    int error = 0;
    {
        const Lock lock(self->mMutex);
        error = self->Handle(client, umockdev_ioctl_client_get_request(client), argument);
    }
    umockdev_ioctl_client_complete(client, error == 0 ? 0 : -1, error);
    return TRUE;
}

void UsbEmulator::OnClosed(UMockdevIoctlBase*, UMockdevIoctlClient* client, UsbEmulator* self)
{
    const Lock lock(self->mMutex);
    const auto isClients = [client](const Request& request) { return request.client == client; };
    self->mInFlight.remove_if(isClients);
    self->mEnded.remove_if(isClients);
    const auto claim = self->mClaims.find(umockdev_ioctl_client_get_devnode(client));
    if (claim != self->mClaims.end() && claim->second == client)
    {
        self->mClaims.erase(claim);
    }
}

int UsbEmulator::Handle(UMockdevIoctlClient* client, unsigned long request, void* argument)
{
    if (request == USBDEVFS_REAPURB || request == USBDEVFS_REAPURBNDELAY)
    {
        return Reap(client, argument);
    }
    if (!IsPlugged(client))
    {
        return ENODEV;
    }
    switch (request)
    {
    case USBDEVFS_GET_CAPABILITIES:
    {
        std::uint32_t capabilities = CAPABILITIES;
        Store(argument, &capabilities, sizeof capabilities);
        return 0;
    }
    case USBDEVFS_DISCONNECT_CLAIM:
        return Claim(client);
    case USBDEVFS_RELEASEINTERFACE:
        mClaims.erase(umockdev_ioctl_client_get_devnode(client));
        return 0;
    case USBDEVFS_SUBMITURB:
        return Submit(client, argument);
    case USBDEVFS_DISCARDURB:
        return Discard(argument);
    default:
        return ENODATA; // no driver of the kernel's to disconnect or connect
    }
}

int UsbEmulator::Claim(UMockdevIoctlClient* client)
{
    const auto [claim, isNew] = mClaims.emplace(umockdev_ioctl_client_get_devnode(client), client);
    return isNew || claim->second == client ? 0 : EBUSY;
}

int UsbEmulator::Submit(UMockdevIoctlClient* client, void* address)
{
    usbdevfs_urb urb{};
    Fetch(&urb, address, sizeof urb);
    auto bytes = static_cast<std::size_t>(urb.buffer_length);
    for (const Requests* requests : {&mInFlight, &mEnded})
    {
        for (const Request& other : *requests)
        {
            bytes += static_cast<std::size_t>(other.size);
        }
    }
    if (bytes > mByteLimit)
    {
        return ENOMEM;
    }
    mInFlight.push_back({client, address, urb.endpoint, urb.buffer, urb.buffer_length, 0, 0});
    mChanged.notify_all();
    EndAnswered(urb.endpoint);
    return 0;
}

int UsbEmulator::Reap(UMockdevIoctlClient* client, void* place)
{
    const auto ended =
        std::find_if(mEnded.begin(), mEnded.end(),
                     [client](const Request& request) { return request.client == client; });
    if (ended == mEnded.end())
    {
        return IsPlugged(client) ? EAGAIN : ENODEV;
    }
    usbdevfs_urb urb{};
    Fetch(&urb, ended->address, sizeof urb);
    urb.status = ended->status;
    urb.actual_length = ended->length;
    Store(ended->address, &urb, sizeof urb);
    Store(place, &ended->address, sizeof ended->address);
    mEnded.erase(ended);
    return 0;
}

int UsbEmulator::Discard(void* address)
{
    const auto request =
        std::find_if(mInFlight.begin(), mInFlight.end(),
                     [address](const Request& other) { return other.address == address; });
    if (request == mInFlight.end())
    {
        return EINVAL;
    }
    End(request, -ENOENT, 0);
    return 0;
}

void UsbEmulator::EndAnswered(std::uint8_t endPoint)
{
    std::deque<Answer>& answers = mAnswers[endPoint];
    for (auto request = mInFlight.begin(); request != mInFlight.end() && !answers.empty();)
    {
        if (request->endPoint != endPoint)
        {
            ++request;
            continue;
        }
        Answer& answer = answers.front();
        const auto length = std::min(static_cast<int>(answer.data.size()), //
                                     request->size);
        Store(request->buffer, answer.data.data(), static_cast<std::size_t>(length));
        request = End(request, answer.status, length);
        answers.pop_front();
    }
}

UsbEmulator::Requests::iterator UsbEmulator::End(Requests::iterator request, int status, int length)
{
    request->status = status;
    request->length = length;
    mEnded.push_back(*request);
    mChanged.notify_all();
    return mInFlight.erase(request);
}

bool UsbEmulator::IsPlugged(UMockdevIoctlClient* client) const
{
    return mPlugged.count(umockdev_ioctl_client_get_devnode(client)) != 0;
}

std::size_t UsbEmulator::CountInFlight(std::uint8_t endPoint) const
{
    return static_cast<std::size_t>(std::count_if(mInFlight.begin(), mInFlight.end(),
                                                  [endPoint](const Request& request)
                                                  { return request.endPoint == endPoint; }));
}
