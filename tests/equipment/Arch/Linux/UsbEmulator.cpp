#include "UsbEmulator.h"

#include "Sensors/HostService/HostService.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>
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

using Lock = std::lock_guard<std::mutex>;

constexpr std::uint32_t CAPABILITIES = USBDEVFS_CAP_ZERO_PACKET | USBDEVFS_CAP_BULK_SCATTER_GATHER |
                                       USBDEVFS_CAP_NO_PACKET_SIZE_LIM |
                                       USBDEVFS_CAP_REAP_AFTER_DISCONNECT;

/// The descriptors: the device before and after its identifiers, one configuration, one interface,
/// endpoint 0x81 of 64 bytes and endpoint 0x82 of 512 bytes.
constexpr const char* DEVICE_HEAD = "12010002ffffff40";
constexpr const char* DEVICE_TAIL = "000100000001";
constexpr const char* CONFIGURATION = "09022000010100807d"
                                      "0904000002ff000000"
                                      "07058103400001"
                                      "07058202000200";

// Read and write the memory of the callers as the kernel does. The thread sanitizer would take
// ordinary accesses for races, because it does not see how a request gets here and back. `copy` is
// process_vm_readv or process_vm_writev.
template <typename Copy>
void Transport(const Copy& copy, void* mine, void* theirs, std::size_t bytes)
{
    const iovec local{mine, bytes};
    const iovec remote{theirs, bytes};
    copy(getpid(), &local, 1, &remote, 1, 0);
}

template <typename... Values>
std::string Format(const char* format, Values... values)
{
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), format, values...);
    return text.data();
}

/// The text in the form that umockdev reads.
std::string Describe(int number, std::uint16_t vendorId, std::uint16_t productId)
{
    const std::string node = Format("bus/usb/001/%03d", number);
    return Format("P: /devices/usb1/1-%d\n", number) + "N: " + node + "\nE: DEVNAME=/dev/" + node +
           "\nE: SUBSYSTEM=usb\nE: DRIVER=usb\nE: DEVTYPE=usb_device\nE: BUSNUM=001\n" +
           Format("E: DEVNUM=%03d\n", number) +
           "A: bConfigurationValue=1\\n\nA: busnum=1\\n\nA: speed=480\\n\n" +
           Format("A: devnum=%d\\n\n", number) + "H: descriptors=" + DEVICE_HEAD +
           Format("%04x%04x", __builtin_bswap16(vendorId), __builtin_bswap16(productId)) +
           DEVICE_TAIL + CONFIGURATION + "\n";
}

} // namespace

UsbEmulator::UsbEmulator()
    : mTestbed(umockdev_testbed_new())
    , mIoctls(umockdev_ioctl_base_new())
{
    g_signal_connect_after(mIoctls, "handle-ioctl", reinterpret_cast<GCallback>(OnIoctl), this);
    g_signal_connect_after(mIoctls, "client-vanished", reinterpret_cast<GCallback>(OnClosed), this);
    // umockdev calls the linker at every open, and the thread sanitizer opens files when it looks
    // for suppressions. The linker's error text about the missing service library would then be
    // freed by the wrong allocator. The second call of dlerror frees it here.
    qlt::HostService::System();
    dlerror();
    dlerror();
}

UsbEmulator::~UsbEmulator()
{
    Unplug();
    g_object_unref(mTestbed);
    g_object_unref(mIoctls);
}

void UsbEmulator::Plug(std::uint16_t vendorId, std::uint16_t productId)
{
    // Each plugged device gets a new number, as from the kernel.
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
    // Announce the removal first, because umockdev ends the process when a listener leaves at that
    // moment.
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
        for (Request& request : mRequests)
        {
            if (!request.hasEnded)
            {
                request.End(-ESHUTDOWN, 0);
            }
        }
    }
    for (const auto& [node, sysPath] : plugged)
    {
        umockdev_testbed_detach_ioctl(mTestbed, node.c_str(), nullptr);
        umockdev_testbed_remove_device(mTestbed, sysPath.c_str());
    }
}

void UsbEmulator::Push(std::uint8_t endPoint, const Bytes& bytes, bool succeeds)
{
    const Lock lock(mMutex);
    mAnswers[endPoint].push_back({bytes, succeeds});
    EndAnswered(endPoint);
}

std::size_t UsbEmulator::Pending(std::uint8_t endPoint)
{
    const Lock lock(mMutex);
    const auto isPending = [endPoint](const Request& request)
    { return request.endPoint == endPoint && !request.hasEnded; };
    return static_cast<std::size_t>(std::count_if(mRequests.begin(), mRequests.end(), isPending));
}

std::set<std::string> UsbEmulator::Touched()
{
    const Lock lock(mMutex);
    return mTouched;
}

void UsbEmulator::ClaimElsewhere()
{
    const Lock lock(mMutex);
    for (const auto& [node, sysPath] : mPlugged)
    {
        mClaims[node] = nullptr; // it is no client
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
    // A capability lets root ignore the mode of a file. A thread may drop the capability.
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> sets{};
    syscall(SYS_capget, &header, sets.data());
    sets[0].effective &= ~(1U << CAP_DAC_OVERRIDE);
    syscall(SYS_capset, &header, sets.data());
}

gboolean UsbEmulator::OnIoctl(UMockdevIoctlBase*, UMockdevIoctlClient* client, UsbEmulator* self)
{
    // The caller is this process, so its pointers are valid here.
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
    self->mRequests.remove_if([client](const Request& other) { return other.client == client; });
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
    const std::string node = umockdev_ioctl_client_get_devnode(client);
    mTouched.insert(node.substr(node.size() - std::strlen("001/002")));
    if (!IsPlugged(client))
    {
        return ENODEV;
    }
    switch (request)
    {
    case USBDEVFS_GET_CAPABILITIES:
    {
        std::uint32_t capabilities = CAPABILITIES;
        Transport(process_vm_writev, &capabilities, argument, sizeof capabilities);
        return 0;
    }
    case USBDEVFS_DISCONNECT_CLAIM:
        mClaims.emplace(node, client);
        return mClaims[node] == client ? 0 : EBUSY;
    case USBDEVFS_RELEASEINTERFACE:
        mClaims.erase(node);
        return 0;
    case USBDEVFS_SUBMITURB:
        return Submit(client, argument);
    case USBDEVFS_DISCARDURB:
        for (Request& other : mRequests)
        {
            if (other.address == argument && !other.hasEnded)
            {
                other.End(-ENOENT, 0);
                return 0;
            }
        }
        return EINVAL;
    default:
        return ENODATA; // there is no kernel driver to disconnect or connect
    }
}

int UsbEmulator::Submit(UMockdevIoctlClient* client, void* address)
{
    usbdevfs_urb urb{};
    Transport(process_vm_readv, &urb, address, sizeof urb);
    const int type = urb.endpoint == REPORTS ? USBDEVFS_URB_TYPE_INTERRUPT : USBDEVFS_URB_TYPE_BULK;
    const auto claim = mClaims.find(umockdev_ioctl_client_get_devnode(client));
    if (urb.type != type || claim == mClaims.end() || claim->second != client)
    {
        return EINVAL;
    }
    auto bytes = static_cast<std::size_t>(urb.buffer_length);
    for (const Request& other : mRequests)
    {
        bytes += static_cast<std::size_t>(other.size);
    }
    if (bytes > mByteLimit)
    {
        return ENOMEM;
    }
    mRequests.push_back({client, address, urb.endpoint, urb.buffer, urb.buffer_length});
    EndAnswered(urb.endpoint);
    return 0;
}

int UsbEmulator::Reap(UMockdevIoctlClient* client, void* place)
{
    const auto ended = std::find_if(mRequests.begin(), mRequests.end(),
                                    [client](const Request& other)
                                    { return other.client == client && other.hasEnded; });
    if (ended == mRequests.end())
    {
        return IsPlugged(client) ? EAGAIN : ENODEV;
    }
    usbdevfs_urb urb{};
    Transport(process_vm_readv, &urb, ended->address, sizeof urb);
    urb.status = ended->status;
    urb.actual_length = ended->length;
    Transport(process_vm_writev, &urb, ended->address, sizeof urb);
    Transport(process_vm_writev, &ended->address, place, sizeof ended->address);
    mRequests.erase(ended);
    return 0;
}

void UsbEmulator::EndAnswered(std::uint8_t endPoint)
{
    std::deque<Answer>& answers = mAnswers[endPoint];
    for (Request& request : mRequests)
    {
        if (request.endPoint == endPoint && !request.hasEnded && !answers.empty())
        {
            Bytes& bytes = answers.front().bytes;
            const int length = std::min(static_cast<int>(bytes.size()), request.size);
            Transport(process_vm_writev, bytes.data(), request.buffer,
                      static_cast<std::size_t>(length));
            request.End(answers.front().succeeds ? 0 : -EPROTO, length);
            answers.pop_front();
        }
    }
}

bool UsbEmulator::IsPlugged(UMockdevIoctlClient* client) const
{
    return mPlugged.count(umockdev_ioctl_client_get_devnode(client)) != 0;
}

std::unique_ptr<EmulatedBus> MakeEmulatedBus() { return std::make_unique<UsbEmulator>(); }
