// Tests of USB on this system only: permissions, other programs, and the kernel's memory for
// requests.
#include "UsbEmulator.h"

#include "equipment/UsbHostFixture.h"
#include "fakes/AllocationCounter.h"

#include <dlfcn.h>
#include <libusb.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

int gClaimError = LIBUSB_SUCCESS;
int gSearchError = LIBUSB_SUCCESS;
int gTransfersMade = 0;

class LibusbHostTest : public UsbHostFixture
{
protected:
    UsbEmulator& emulator = static_cast<UsbEmulator&>(*bus);
};

} // namespace

// These functions replace those of libusb, because no emulated device can cause some of its errors.
int LIBUSB_CALL libusb_claim_interface(libusb_device_handle* device, int interface)
{
    static const auto claim = reinterpret_cast<decltype(&libusb_claim_interface)>(
        dlsym(RTLD_NEXT, "libusb_claim_interface"));
    return gClaimError != LIBUSB_SUCCESS ? gClaimError : claim(device, interface);
}

ssize_t LIBUSB_CALL libusb_get_device_list(libusb_context* context, libusb_device*** list)
{
    static const auto get = reinterpret_cast<decltype(&libusb_get_device_list)>(
        dlsym(RTLD_NEXT, "libusb_get_device_list"));
    return gSearchError != LIBUSB_SUCCESS ? gSearchError : get(context, list);
}

libusb_transfer* LIBUSB_CALL libusb_alloc_transfer(int packets)
{
    static const auto allocate = reinterpret_cast<decltype(&libusb_alloc_transfer)>(
        dlsym(RTLD_NEXT, "libusb_alloc_transfer"));
    ++gTransfersMade;
    return allocate(packets);
}

TEST_F(LibusbHostTest, AReportIsReadWithoutAnAllocation)
{
    Open();
    Bytes report(64);
    long allocations = 0;
    int transfers = 0;
    for (int i = 0; i < 200; ++i)
    {
        bus->Push(REPORTS, Bytes(64, static_cast<std::uint8_t>(i)));
        const long allocationsBefore = ThreadAllocationCount();
        const int transfersBefore = gTransfersMade;
        std::uint32_t length = 64;
        ASSERT_TRUE(device->EndPoint(1).TransferData(report.data(), length));
        EXPECT_EQ(report[63], static_cast<std::uint8_t>(i));
        if (i > 0) // the first read creates the transfer that the others reuse
        {
            allocations += ThreadAllocationCount() - allocationsBefore;
            transfers += gTransfersMade - transfersBefore;
        }
    }
    EXPECT_EQ(allocations, 0);
    EXPECT_EQ(transfers, 0);
}

// A read without an event has descriptor 0 in its place, which is standard input.
TEST_F(LibusbHostTest, AReportLeavesStandardInputAlone)
{
    Open();
    int ends[2] = {};
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    const int input = dup(0);
    dup2(ends[0], 0);
    EXPECT_EQ(write(ends[1], "x", 1), 1);
    Bytes report(64);
    std::uint32_t length = 64;
    bus->Push(REPORTS, Bytes(64, 7));
    EXPECT_TRUE(device->EndPoint(1).TransferData(report.data(), length));
    char byte = 0;
    EXPECT_EQ(recv(ends[1], &byte, 1, MSG_DONTWAIT), -1) << "The read has written to it.";
    EXPECT_EQ(recv(0, &byte, 1, MSG_DONTWAIT), 1) << "The read has read from it.";
    dup2(input, 0);
    for (const int descriptor : {ends[0], ends[1], input})
    {
        close(descriptor);
    }
}

TEST_F(LibusbHostTest, OtherProductsAndVendorsAreLeftAloneAndTheFirstHeadsetIsOpened)
{
    for (const auto& [vendor, product] :
         {std::pair(0x04B4, 0x6018), {0x04B4, 0x00F2}, {0x1D6B, 0x00F1}, {0x00F1, 0x04B4}})
    {
        bus->Plug(static_cast<std::uint16_t>(vendor), static_cast<std::uint16_t>(product));
    }
    EXPECT_EQ(host.CountDevices(), 0u);
    EXPECT_EQ(host.OpenFirst(), nullptr);
    EXPECT_EQ(host.Open(0), nullptr);
    EXPECT_EQ(host.Problem(), "");
    EXPECT_EQ(emulator.Touched(), std::set<std::string>());
    bus->Plug();
    bus->Plug();
    EXPECT_EQ(host.CountDevices(), 2u);
    device = host.OpenFirst();
    ASSERT_NE(device, nullptr) << host.Problem();
    EXPECT_EQ(device->ProductId(), 0x00F1);
    EXPECT_EQ(emulator.Touched(), std::set<std::string>{"001/006"});
}

TEST_F(LibusbHostTest, EveryErrorHasItsSentence)
{
    const std::pair<int, const char*> rows[] = {
        {LIBUSB_ERROR_ACCESS, "no permission to open the headset; install the udev rule "
                              "70-quelta-orbel-ixo.rules"},
        {LIBUSB_ERROR_BUSY, "another program has the headset open"},
        {LIBUSB_ERROR_NO_DEVICE,
         "the headset was unplugged just now, or its device file is missing"},
        {LIBUSB_ERROR_NO_MEM, "there is not enough memory to open the headset"},
        {LIBUSB_ERROR_IO, "the headset cannot be opened: LIBUSB_ERROR_IO"},
        {LIBUSB_ERROR_OTHER, "the headset cannot be opened: LIBUSB_ERROR_OTHER"},
        {LIBUSB_SUCCESS, ""},
    };
    bus->Plug();
    for (const auto& [error, sentence] : rows)
    {
        gClaimError = error;
        EXPECT_EQ(host.OpenFirst() == nullptr, error != LIBUSB_SUCCESS);
        EXPECT_EQ(host.Problem(), sentence);
    }
    gSearchError = LIBUSB_ERROR_NO_MEM;
    EXPECT_EQ(host.OpenFirst(), nullptr);
    EXPECT_EQ(host.Problem(), "libusb cannot look for the headset: LIBUSB_ERROR_NO_MEM");
    gSearchError = LIBUSB_SUCCESS;
}

TEST_F(LibusbHostTest, TheReasonForAFailedOpenIsGivenUntilTheHeadsetIsGone)
{
    bus->Plug();
    emulator.ClaimElsewhere();
    EXPECT_EQ(host.OpenFirst(), nullptr);
    EXPECT_EQ(host.Problem(), "another program has the headset open");
    emulator.ForbidOpening();
    EXPECT_EQ(host.CountDevices(), 1u);
    EXPECT_EQ(host.OpenFirst(), nullptr);
    EXPECT_EQ(host.Problem(), "no permission to open the headset; install the udev rule "
                              "70-quelta-orbel-ixo.rules");
    bus->Unplug();
    EXPECT_EQ(host.OpenFirst(), nullptr);
    EXPECT_EQ(host.Problem(), "");
}

TEST_F(LibusbHostTest, AFailedReadGivesTheBytesThatArrivedBefore)
{
    Open();
    Bytes report(64);
    std::uint32_t length = 64;
    bus->Push(REPORTS, Bytes(10, 7), false);
    EXPECT_FALSE(device->EndPoint(1).TransferData(report.data(), length));
    EXPECT_EQ(length, 10u);
    EXPECT_EQ(report[9], 7);
}

// The kernel's default is 16 MB.
TEST_F(LibusbHostTest, FramesWithoutKernelMemoryWaitForTheOthers)
{
    Open();
    emulator.LimitBytes(16 << 20);
    testing::internal::CaptureStderr();
    Begin();
    EXPECT_EQ(bus->Pending(FRAMES), 4u);
    frames.pop_back();
    PushAll();
    for (std::uint8_t i = 0; i < frames.size(); ++i)
    {
        EXPECT_EQ(frames[i].End(), std::to_string(i));
    }
    Begin();
    EndPoint().AbortTransfers();
    EXPECT_EQ(frames.back().End(), "failed");
    const std::string advice = testing::internal::GetCapturedStderr();
    const std::string command = "echo 64 | sudo tee /sys/module/usbcore/parameters/usbfs_memory_mb";
    EXPECT_NE(advice.find(command), std::string::npos);
    EXPECT_EQ(advice.find(command), advice.rfind(command));
    frames.clear();
    emulator.LimitBytes(FRAME_SIZE - 1); // nothing can free memory here
    EXPECT_EQ(Frame(EndPoint()).End(), "refused");
}
